#include "platform/webkit/WKWebView.h"

#include <gtest/gtest.h>

#include "platform/headless/HeadlessPlatform.h"

namespace zorvik::platform {

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

TEST(WKWebViewTest, AViewThatGoesInsideItsOwnReportHearsNoMoreAndFailsItsEvaluations) {
    headless::HeadlessPlatform port;
    port.web().onEvaluate([](const std::string&) { return ScriptValue{}; });
    auto leaver = std::make_shared<Leaver>();
    const std::weak_ptr<WKScriptMessageHandler> weak = leaver;
    const WKWebViewConfiguration configuration;
    configuration.userContentController->add(weak, "name");
    leaver->view = makeOnMainThread<WKWebView>(Rect{}, configuration);
    for (int count = 0; count < 2; ++count)
        port.web().page().post("name", {});
    int failures = 0;
    leaver->view->evaluateJavaScript("1",
                                     [&](const auto& result) { failures += !result.isSuccess(); });
    port.scheduler().runUntilIdle();
    EXPECT_EQ(leaver->view, nullptr);
    EXPECT_EQ(leaver->heard, 1);
    EXPECT_EQ(failures, 1);
    leaver.reset();
    EXPECT_TRUE(weak.expired()) << "handlers are held weakly";
}

TEST(WKWebViewTest, AViewThatNobodyDecidesForLoadsWhatItIsGiven) {
    headless::HeadlessPlatform port;
    port.web().onLoad([](const std::string&) { return headless::ScriptedLoad(); });
    const auto view = makeOnMainThread<WKWebView>(Rect{}, WKWebViewConfiguration());
    view->load({*URL::parse("https://pay.example/")});
    port.scheduler().settle();
    port.web().page().navigate("https://pay.example/next");
    port.scheduler().settle();
    EXPECT_EQ(view->url(), URL::parse("https://pay.example/next"));
}

}  // namespace zorvik::platform
