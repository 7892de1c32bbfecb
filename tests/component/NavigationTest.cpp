#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

class NavigationTest : public CheckoutTest {};

TEST_F(NavigationTest, AnOrdinaryAddressPrintsItsLinesInOneOrder) {
    openScreen();
    const std::string url = "https://pay.example/next?x=1";
    EXPECT_EQ(decide(url), Policy::allow);
    EXPECT_THAT(
        lines, ElementsAre("[URL INTERCEPT] 🔍 Intercepted URL: " + url,
                           "[URL INTERCEPT] 📋 URL type: String", "[URL INTERCEPT] 📊 URL length: 28",
                           "[UPI RETURN] 🔍 isUPIAppReturnURL called for URL: " + url,
                           "[UPI RETURN] 📊 isUPIAppReturnURL result: false",
                           "[UPI SCHEME] 🔍 Checking URL scheme: " + url,
                           "[UPI SCHEME] 📊 Is UPI return by scheme: false",
                           "[UPI RETURN] 🔍 isUPIAppReturnByScheme called for URL: " + url,
                           "[UPI RETURN] 📊 isUPIAppReturnByScheme result: false",
                           "[URL INTERCEPT] ✅ Allowing URL to load: " + url));
    takeLines();
    EXPECT_EQ(decide(std::nullopt), Policy::allow);
    EXPECT_THAT(lines, ElementsAre("[URL INTERCEPT] ❌ No URL found in navigation action"));
}

struct PolicyCase {
    const char* name;
    std::string url;
    std::string handOff;  // the first line of who takes over; "": nobody
    int questions;        // to the return test
};

TEST_F(NavigationTest, WhatIsTakenOverIsDecidedByTheFirstRuleThatHolds) {
    const std::string redirected = "[REDIRECT] 🚀 handleWebViewRespCheckUrl called!";
    const PolicyCase cases[] = {
        {"redirect", "https://pay.example/check?response=1", redirected, 0},
        {"redirect inside a query", "https://a.example/?u=https://pay.example/check?response=1",
         redirected, 0},
        {"redirect that is a return too", "shopreturn://https://pay.example/check?response=1",
         redirected, 0},
        {"response in second place", "https://pay.example/check?a=1&response=1", "", 2},
        {"other letter case", "https://pay.example/check?Response=1", "", 2},
        {"return", "shopreturn://back?status=unheard", "[UPI RETURN] 🚀 User returned from UPI app!",
         2},
        {"another scheme", "tel:12345", "", 2},
    };
    openScreen();
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        core.returnQuestions = 0;
        takeLines();
        EXPECT_EQ(decide(row.url), row.handOff.empty() ? Policy::allow : Policy::cancel);
        EXPECT_EQ(core.returnQuestions, row.questions);
        EXPECT_THAT(lines, Contains(row.handOff.empty()
                                        ? "[URL INTERCEPT] ✅ Allowing URL to load: " + row.url
                                        : row.handOff));
    }
    EXPECT_THAT(core.events(), IsEmpty()) << "the policy itself logs none";
}

// The report at once closes the screen in the middle of the page's own question.
TEST_F(NavigationTest, AScreenClosedInsideItsOwnDecisionStillAnswersIt) {
    checkout();
    forget();
    page().navigate(core.webViewRespCheckUrl + "?response=!");
    scheduler.runOneTurn();
    EXPECT_THAT(host->responses, ElementsAre(failurePayload("Invalid response format")));
    EXPECT_TRUE(screen()->isBeingDismissed());
    EXPECT_THAT(page().messageHandlers(), IsEmpty());
    runAll();
    EXPECT_FALSE(screen());
    EXPECT_THAT(core.events(), ElementsAre(StartsWith("PAYMENT_STATUS"))) << "and no load's";
}

TEST_F(NavigationTest, CommitsAndFinishesAreLoggedWithTheAddressOfTheirMoment) {
    load.redirects = {"https://bank.example/a", "https://pay.example/processing/1"};
    presentScreen();
    core.takeEvents();
    runAll();
    const std::string data = R"( ["url": "https://pay.example/processing/1"])";
    EXPECT_THAT(core.takeEvents(), ElementsAre("URL_INTERCEPTED" + data, "WEBVIEW_LOADED" + data,
                                               "REDIRECT_URL_HIT" + data));
    load.redirects = {};
    page().navigate("https://pay.example/Processing");
    runAll();
    EXPECT_THAT(core.takeEvents(),
                ElementsAre(StartsWith("URL_INTERCEPTED"), StartsWith("WEBVIEW_LOADED")));
    dismissScreen();
    openScreen(optionsOf(std::nullopt));  // which loads nothing
    screen()->webViewDidFinish(*find<WKWebView>());
    EXPECT_THAT(core.events(), ElementsAre(R"(WEBVIEW_LOADED "" nil "" ["url": "nil"])"));
}

TEST_F(NavigationTest, AFailureShowsThePanelOnlyBeforeTheCommit) {
    load.error = someError("NetWork lost");
    load.ending = ScriptedLoad::Ending::failBeforeCommit;
    presentScreen();
    core.takeEvents();
    runAll();
    EXPECT_THAT(core.takeEvents(),
                ElementsAre(R"(WEBVIEW_FAILED ["error": "NetWork lost", "url": "nil"])"));
    EXPECT_TRUE(isErrorShown());
    EXPECT_TRUE(find<ZorvikShimmerView>()->isHidden());
    EXPECT_FALSE(find<WKWebView>()->isHidden());

    dismissScreen();
    load.ending = ScriptedLoad::Ending::failAfterCommit;
    presentScreen();
    runAll();
    EXPECT_EQ(core.events().back(),
              R"(WEBVIEW_FAILED ["error": "NetWork lost", "url": "https://pay.example/checkout)"
              "?token=" +
                  plainToken() + "\"]");
    EXPECT_FALSE(isErrorShown());
    EXPECT_TRUE(find<WKWebView>()->isHidden());
}

TEST_F(NavigationTest, ThePanelsTextFollowsTheFirstKeywordOfTheError) {
    const std::string network =
        "Network connection issue. Please check your internet connection and try again.";
    const std::string other = "Something went wrong. Please try again.";
    const std::pair<const char*, std::string> cases[] = {
        {"The NETWORK is gone", network},
        {"an Invalid name", "Invalid checkout URL. Please try again or contact support."},
        {"Timeout!", "Request timed out. Please try again."},
        {"The request timed out.", other},
        {"timeout of an invalid network", network},
        {"", other},
    };
    openScreen();
    for (const auto& [message, text] : cases) {
        screen()->webViewDidFailProvisionalNavigation(*find<WKWebView>(), someError(message));
        EXPECT_EQ(errorText(), text) << message;
    }
}

}  // namespace
}  // namespace zorvik
