#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

class NavigationTest : public CheckoutTest {};

TEST_F(NavigationTest, WhatIsTakenOverIsDecidedByTheFirstRuleThatHolds) {
    const std::string redirected = "[REDIRECT] 🚀 handleWebViewRespCheckUrl called!";
    const std::string allowed = "[URL INTERCEPT] ✅ Allowing URL to load: ";
    const std::string marker = "https://pay.example/check?response=1";
    const std::tuple<const char*, std::string, std::string> cases[] = {
        {"redirect", marker, redirected},
        {"redirect inside a query", "https://a.example/?u=" + marker, redirected},
        {"redirect that is a return too", "shopreturn://" + marker, redirected},
        {"response in second place", "https://pay.example/check?a=1&response=1", allowed},
        {"other letter case", "https://pay.example/check?Response=1", allowed},
        {"return", "shopreturn://back?status=x", "[UPI RETURN] 🎯 Detected UPI app return URL!"},
        {"another scheme", "tel:12345", allowed},
    };
    openScreen();
    for (const auto& [name, url, line] : cases) {
        EXPECT_EQ(decide(url), line == allowed ? Policy::allow : Policy::cancel) << name;
        EXPECT_THAT(heard(), Contains(line == allowed ? line + url : line));
        EXPECT_THAT(seen("call"), SizeIs(line == redirected ? 0 : 2)) << "to the return test";
        forget();
    }
    EXPECT_EQ(decide(std::nullopt), Policy::allow);
    EXPECT_TRUE(hasTranscript("", "\n[URL INTERCEPT] ❌ No URL found in navigation action\n"));
}

TEST_F(NavigationTest, CommitsAndFinishesAreLoggedWithTheAddressOfTheirMoment) {
    load.redirects = {"https://bank.example/a", "https://pay.example/processing/1"};
    presentScreen();
    runAll();
    load.redirects = {};
    page().navigate("https://pay.example/Processing");
    runAll();
    const std::string data = R"( ["url": "https://pay.example/processing/1"])";
    EXPECT_THAT(seen("event"),
                ElementsAre(R"(WEBVIEW_LAUNCH ["url": "checkout_url"])", "URL_INTERCEPTED" + data,
                            "WEBVIEW_LOADED" + data, "REDIRECT_URL_HIT" + data,
                            R"(URL_INTERCEPTED ["url": "https://pay.example/Processing"])",
                            R"(WEBVIEW_LOADED ["url": "https://pay.example/Processing"])"));
    dismissScreen();
    openScreen(optionsOf(std::nullopt));  // which loads nothing
    screen()->webViewDidFinish(*find<WKWebView>());
    EXPECT_THAT(seen("event"), ElementsAre(R"(WEBVIEW_LOADED "" nil "" ["url": "nil"])"));
}

TEST_F(NavigationTest, AFailureShowsThePanelOnlyBeforeTheCommit) {
    load.error = someError("NetWork lost");
    load.ending = ScriptedLoad::Ending::failBeforeCommit;
    presentScreen();
    runAll();
    EXPECT_EQ(seen("event").back(), R"(WEBVIEW_FAILED ["error": "NetWork lost", "url": "nil"])");
    EXPECT_TRUE(isErrorShown());
    EXPECT_TRUE(find<ZorvikShimmerView>()->isHidden());
    EXPECT_FALSE(find<WKWebView>()->isHidden());

    dismissScreen();
    load.ending = ScriptedLoad::Ending::failAfterCommit;
    presentScreen();
    runAll();
    EXPECT_EQ(seen("event").back(),
              R"(WEBVIEW_FAILED ["error": "NetWork lost", "url": "https://pay.example/checkout)"
              R"(?token=TOKEN"])");
    EXPECT_FALSE(isErrorShown());
    EXPECT_TRUE(find<WKWebView>()->isHidden());
}

TEST_F(NavigationTest, ThePanelsTextFollowsTheFirstKeywordOfTheError) {
    const std::string network =
        "Network connection issue. Please check your internet connection and try again.";
    const std::pair<const char*, std::string> cases[] = {
        {"The NETWORK is gone", network},
        {"an Invalid name", "Invalid checkout URL. Please try again or contact support."},
        {"Timeout!", "Request timed out. Please try again."},
        {"The request timed out.", "Something went wrong. Please try again."},
        {"timeout of an invalid network", network},
    };
    openScreen();
    for (const auto& [message, text] : cases) {
        screen()->webViewDidFailProvisionalNavigation(*find<WKWebView>(), someError(message));
        EXPECT_EQ(find<platform::UILabel>()->text(), text) << message;
    }
}

TEST_F(NavigationTest, ScriptPanelsArePrintedAndAnsweredForTheCustomer) {
    using Kind = platform::ScriptPanel::Kind;
    openScreen();
    const auto answered = [this](const platform::ScriptPanelAnswer& answer) {
        core.transcript.add(std::string("answer ") + platform::description(answer.confirmed) + ' ' +
                            answer.text.value_or("none"));
    };
    screen()->webViewRunJavaScriptAlertPanelWithMessage(*find<WKWebView>(), "alert",
                                                        [&] { answered({}); });
    page().showPanel({Kind::confirm, "sure?", std::nullopt}, answered);
    page().showPanel({Kind::prompt, "name?", "Asha"}, answered);
    page().showPanel({Kind::prompt, "", std::nullopt}, answered);
    EXPECT_TRUE(leadsTo("", R"(
[WEBVIEW] Alert: alert
answer false none
(turn 1) [WEBVIEW] Confirm: sure?
answer true none
(turn 2) [WEBVIEW] Prompt: name?
answer true Asha
(turn 3) [WEBVIEW] Prompt: 
answer false none
)"));
}

}  // namespace
}  // namespace zorvik
