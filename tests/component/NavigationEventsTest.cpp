#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

using platform::ScriptPanel;
using platform::ScriptPanelAnswer;
using platform::WKWebView;
using platform::headless::ScriptedLoad;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

class NavigationEventsTest : public CheckoutTest {};

TEST_F(NavigationEventsTest, CommitsAndFinishesAreLoggedWithTheAddressOfTheirMoment) {
    load.redirects = {"https://bank.example/a", "https://pay.example/processing/1"};
    presentScreen(optionsOf(plainToken()));
    core.takeEvents();
    runAll();
    const std::string data = R"( ["url": "https://pay.example/processing/1"])";
    EXPECT_THAT(core.takeEvents(), ElementsAre("URL_INTERCEPTED" + data, "WEBVIEW_LOADED" + data,
                                               "REDIRECT_URL_HIT" + data));
    load.redirects = {};
    page().navigate("https://pay.example/Processing");
    runAll();
    EXPECT_THAT(core.events(),
                ElementsAre(StartsWith("URL_INTERCEPTED"), StartsWith("WEBVIEW_LOADED")));
}

TEST_F(NavigationEventsTest, AFinishWithoutAnAddressIsLoggedAsNil) {
    presentScreen(optionsOf(std::nullopt), std::vector<UPIAppsVO>{});
    core.takeEvents();
    screen()->webViewDidFinish(*find<WKWebView>());
    screen()->webViewDidCommit(*find<WKWebView>());
    EXPECT_THAT(core.events(), ElementsAre(R"(WEBVIEW_LOADED "" nil "" ["url": "nil"])",
                                           R"(URL_INTERCEPTED "" nil "" ["url": "nil"])"));
    EXPECT_EQ(page().evaluatedScripts().size(), 1u) << "the apps are injected all the same";
}

TEST_F(NavigationEventsTest, EveryFinishFadesThePageInAnew) {
    openScreen();
    page().navigate("https://pay.example/second");
    scheduler.runUntilIdle();
    EXPECT_EQ(find<WKWebView>()->presentationAlpha(), 1);
    scheduler.advanceBy(0.31);
    EXPECT_LT(find<WKWebView>()->presentationAlpha(), 0.1);
    EXPECT_TRUE(find<ZorvikShimmerView>()->isHidden());
    scheduler.advanceBy(0.3);
    EXPECT_EQ(find<WKWebView>()->presentationAlpha(), 1);
}

TEST_F(NavigationEventsTest, AFailureBeforeTheCommitShowsThePanelOverThePage) {
    load.ending = ScriptedLoad::Ending::failBeforeCommit;
    load.error = someError("NetWork lost");
    presentScreen();
    core.takeEvents();
    runAll();
    EXPECT_THAT(core.events(),
                ElementsAre(R"(WEBVIEW_FAILED ["error": "NetWork lost", "url": "nil"])"));
    EXPECT_TRUE(isErrorShown());
    EXPECT_TRUE(find<ZorvikShimmerView>()->isHidden());
    EXPECT_FALSE(find<WKWebView>()->isHidden());
}

TEST_F(NavigationEventsTest, AFailureAfterTheCommitIsOnlyLogged) {
    load.ending = ScriptedLoad::Ending::failAfterCommit;
    presentScreen();
    core.takeEvents();
    runAll();
    EXPECT_THAT(core.events(),
                ElementsAre(StartsWith("URL_INTERCEPTED"),
                            R"(WEBVIEW_FAILED ["error": "Could not connect to the server.", )"
                            R"("url": "https://pay.example/checkout?token=)" +
                                plainToken() + "\"]"));
    EXPECT_FALSE(isErrorShown());
    EXPECT_FALSE(find<ZorvikShimmerView>()->isHidden());
    EXPECT_TRUE(find<WKWebView>()->isHidden());
}

TEST_F(NavigationEventsTest, ThePanelsTextFollowsTheFirstKeywordOfTheError) {
    const std::string network =
        "Network connection issue. Please check your internet connection and try again.";
    const std::string invalid = "Invalid checkout URL. Please try again or contact support.";
    const std::string timeout = "Request timed out. Please try again.";
    const std::string other = "Something went wrong. Please try again.";
    const std::pair<const char*, std::string> cases[] = {
        {"The NETWORK is gone", network},
        {"an Invalid name", invalid},
        {"Timeout!", timeout},
        {"The request timed out.", other},
        {"invalid network timeout", network},
        {"timeout, then invalid", invalid},
        {"networking in subnetworks", network},
        {"", other},
    };
    openScreen();
    for (const auto& [message, text] : cases) {
        screen()->webViewDidFailProvisionalNavigation(*find<WKWebView>(), someError(message));
        EXPECT_EQ(errorText(), text) << message;
    }
}

TEST_F(NavigationEventsTest, ScriptPanelsAreAnsweredAtOnceAndNeverShown) {
    openScreen();
    std::vector<ScriptPanelAnswer> answers;
    const auto show = [&](const ScriptPanel& panel) {
        page().showPanel(panel,
                         [&](const ScriptPanelAnswer& answer) { answers.push_back(answer); });
        scheduler.runOneTurn();
    };
    show({ScriptPanel::Kind::alert, "A 😀", std::nullopt});
    show({ScriptPanel::Kind::confirm, "B", std::nullopt});
    show({ScriptPanel::Kind::prompt, "C", "offered"});
    show({ScriptPanel::Kind::prompt, "D", std::nullopt});
    ASSERT_EQ(answers.size(), 4u);
    EXPECT_TRUE(answers[1].confirmed);
    EXPECT_EQ(answers[2].text, "offered");
    EXPECT_EQ(answers[3].text, std::nullopt);
    EXPECT_THAT(lines, ElementsAre("[WEBVIEW] Alert: A 😀", "[WEBVIEW] Confirm: B",
                                   "[WEBVIEW] Prompt: C", "[WEBVIEW] Prompt: D"));
    EXPECT_THAT(port.stage().shown(), ElementsAre(screen()));
    EXPECT_THAT(core.events(), IsEmpty());
}

}  // namespace
}  // namespace zorvik
