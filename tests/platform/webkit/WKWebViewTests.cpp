#include "platform/webkit/WKWebView.h"

#include <gtest/gtest.h>

#include "platform/headless/HeadlessPlatform.h"
#include "platform/runtime/Environment.h"

namespace zorvik::platform {

// A port without manners: it loses every evaluation and goes on reporting after the page is gone.
struct CarelessEngine : WebEngine {
    struct Page : WebPage {
        void load(const URLRequest&) override {}
        void stopLoading() override {}
        void evaluate(const std::string&, Completion) override {}
        std::optional<URL> currentUrl() const override { return std::nullopt; }
        void addMessageHandler(const std::string&) override {}
        void removeMessageHandler(const std::string&) override {}
        void removeAllUserScripts() override {}
        void removeAllContentRules() override {}
    };

    std::shared_ptr<WebPageDelegate> delegate;
    std::unique_ptr<WebPage> makePage(const WebPageConfiguration&,
                                      std::weak_ptr<WebPageDelegate> events) override {
        delegate = events.lock();
        return std::make_unique<Page>();
    }
};

// Drops its view in the middle of a report.
struct Leaver : WKScriptMessageHandler {
    int heard = 0;
    std::shared_ptr<WKWebView> view;
    void userContentControllerDidReceive(WKUserContentController&,
                                         const WKScriptMessage&) override {
        ++heard;
        view.reset();
    }
};

TEST(WKWebViewTest, OnACarelessPortEverythingIsAnsweredOnceThoughTheViewGoes) {
    headless::HeadlessScheduler scheduler;
    headless::HeadlessApplication application{scheduler};
    headless::HeadlessDefaults defaults;
    headless::HeadlessStage stage{scheduler};
    CarelessEngine engine;
    Environment::install({scheduler, engine, application, defaults, stage});
    auto leaver = std::make_shared<Leaver>();
    const std::weak_ptr<WKScriptMessageHandler> weak = leaver;
    const WKWebViewConfiguration configuration;
    configuration.userContentController->add(weak, "name");
    leaver->view = makeOnMainThread<WKWebView>(Rect{}, configuration);
    int failures = 0;
    const auto countFailure = [&](const auto& result) { failures += !result.isSuccess(); };
    leaver->view->evaluateJavaScript("lost", countFailure);
    scheduler.runUntilIdle();
    EXPECT_EQ(failures, 1);
    leaver->view->evaluateJavaScript("the view goes", countFailure);
    for (int count = 0; count < 2; ++count)
        engine.delegate->pagePosted("name", {});
    EXPECT_EQ(leaver->view, nullptr);
    scheduler.runUntilIdle();
    EXPECT_EQ(leaver->heard, 1);
    EXPECT_EQ(failures, 2);
    leaver.reset();
    EXPECT_TRUE(weak.expired()) << "handlers are held weakly";
    Environment::uninstall();
}

}  // namespace zorvik::platform
