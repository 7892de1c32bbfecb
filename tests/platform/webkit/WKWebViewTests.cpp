#include "platform/webkit/WKWebView.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "platform/headless/HeadlessPlatform.h"
#include "platform/services/Environment.h"

namespace zorvik::platform {

using testing::ElementsAre;

class Handler : public WKScriptMessageHandler {
  public:
    std::vector<std::string> texts;
    void userContentControllerDidReceive(WKUserContentController&,
                                         const WKScriptMessage& message) override {
        texts.push_back(message.body.text);
    }
};

class WKWebViewTest : public testing::Test {
  protected:
    headless::HeadlessPlatform platform;
    WKWebViewConfiguration configuration;
};

TEST_F(WKWebViewTest, ThePageIsMadeAsConfigured) {
    for (const bool allowed : {true, false}) {
        configuration.defaultWebpagePreferences.allowsContentJavaScript = allowed;
        configuration.preferences.javaScriptCanOpenWindowsAutomatically = !allowed;
        const auto view = makeOnMainThread<WKWebView>(Rect{}, configuration);
        const auto& page = platform.web().page().configuration();
        EXPECT_EQ(page.allowsContentJavaScript, allowed);
        EXPECT_EQ(page.javaScriptCanOpenWindowsAutomatically, !allowed);
    }
}

TEST_F(WKWebViewTest, ViewsOfOneConfigurationShareItsHandlersAndOneMayGo) {
    const auto handler = std::make_shared<Handler>();
    configuration.userContentController->add(std::weak_ptr<WKScriptMessageHandler>(handler),
                                             "early");
    auto first = makeOnMainThread<WKWebView>(Rect{}, configuration);
    const auto second = makeOnMainThread<WKWebView>(Rect{}, configuration);
    configuration.userContentController->add(std::weak_ptr<WKScriptMessageHandler>(handler),
                                             "late");
    for (auto* page : platform.web().pages()) {
        EXPECT_TRUE(page->post("early", {}));
        EXPECT_TRUE(page->post("late", {}));
    }
    first.reset();
    configuration.userContentController->removeScriptMessageHandler("early");
    EXPECT_FALSE(platform.web().page().post("early", {}));
    platform.scheduler().runUntilIdle();
    EXPECT_THAT(handler->texts, ElementsAre("null")) << "the late one of the second page";
}

// A port without manners: it loses every evaluation, forwards each answer it gets and goes on
// reporting after the page is gone.
class CarelessEngine : public WebEngine {
  public:
    class Page : public WebPage {
      public:
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

// Answers every question twice.
class Insistent : public WKNavigationDelegate {
  public:
    int calls = 0;
    void webViewDecidePolicyFor(WKWebView&, const WKNavigationAction&,
                                const DecisionHandler& decide) override {
        decide(WKNavigationActionPolicy::cancel);
        decide(WKNavigationActionPolicy::allow);
    }
    void webViewDidStartProvisionalNavigation(WKWebView&) override { ++calls; }
    void webViewDidCommit(WKWebView&) override { ++calls; }
    void webViewDidFinish(WKWebView&) override { ++calls; }
    void webViewDidFail(WKWebView&, const Error&) override { ++calls; }
    void webViewDidFailProvisionalNavigation(WKWebView&, const Error&) override { ++calls; }
};

class WKWebViewOnACarelessPort : public testing::Test {
  protected:
    WKWebViewOnACarelessPort() {
        Environment::install({scheduler, engine, application, defaults, stage});
        view = makeOnMainThread<WKWebView>(Rect{}, WKWebViewConfiguration{});
    }
    ~WKWebViewOnACarelessPort() override {
        view.reset();
        Environment::uninstall();
    }

    headless::HeadlessScheduler scheduler;
    headless::HeadlessApplication application{scheduler};
    headless::HeadlessDefaults defaults;
    headless::HeadlessStage stage{scheduler};
    CarelessEngine engine;
    std::shared_ptr<WKWebView> view;
};

TEST_F(WKWebViewOnACarelessPort, ALostEvaluationStillCompletesInATurnOfItsOwn) {
    int failures = 0;
    view->evaluateJavaScript("1", [&](const auto& result) {
        if (!result.isSuccess()) ++failures;
    });
    EXPECT_EQ(failures, 0);
    scheduler.runUntilIdle();
    EXPECT_EQ(failures, 1);
}

TEST_F(WKWebViewOnACarelessPort, ThePageHearsTheFirstAnswerOnly) {
    const auto delegate = std::make_shared<Insistent>();
    view->setNavigationDelegate(delegate);
    std::vector<NavigationDecision> decisions;
    engine.delegate->pageAsksToNavigate(
        std::nullopt, [&](NavigationDecision decision) { decisions.push_back(decision); });
    EXPECT_THAT(decisions, ElementsAre(NavigationDecision::cancel));
}

TEST_F(WKWebViewOnACarelessPort, ReportsForAViewThatIsGoneReachNobody) {
    const auto delegate = std::make_shared<Insistent>();
    view->setNavigationDelegate(delegate);
    engine.delegate->pageStarted();
    EXPECT_EQ(delegate->calls, 1);
    view.reset();
    engine.delegate->pageStarted();
    engine.delegate->pagePosted("message", {});
    EXPECT_EQ(delegate->calls, 1);
}

}  // namespace zorvik::platform
