#include "platform/webkit/WKWebView.h"

#include <gtest/gtest.h>

#include "platform/headless/HeadlessPlatform.h"

namespace zorvik::platform {

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
