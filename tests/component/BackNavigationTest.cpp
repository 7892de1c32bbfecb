#include "platform/dispatch/Clock.h"
#include "platform/foundation/URLComponents.h"
#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class BackNavigationTest : public CheckoutTest {
  protected:
    static std::string backEvent(const std::string& currentUrl) {
        return R"(BACK_BUTTON_PRESSED ["current_url": ")" + currentUrl + "\"]";
    }
    std::string lastRequest() { return page().requests().back().url.absoluteString(); }

    // A quick return from a UPI app, which asks the enquiry.
    void comeBackQuickly() {
        port.defaults().write("current_transaction_id", std::string("T1"));
        port.defaults().write("current_package_name", std::string("app.one"));
        port.defaults().write("transaction_start_time", platform::currentDate());
        becomeActive();
    }
};

TEST_F(BackNavigationTest, ADeviceBackOnTheSiteIsPostedToThePageAndLogged) {
    openScreen(optionsOf("abc"));
    screen()->handleDeviceBackButtonPress();
    EXPECT_THAT(takeLines(),
                ElementsAre("[BACK HANDLER] 🚀 Device back button pressed - Android-style handling",
                            "[BACK HANDLER] 🚀 insertJSToWebview called",
                            "[BACK HANDLER] 📊 isDeviceBackPressed: true"));
    EXPECT_THAT(page().evaluatedScripts(), IsEmpty());
    EXPECT_TRUE(scheduler.runOneTurn());
    const std::string url = "https://pay.example/checkout?token=abc";
    const std::string posted = page().evaluatedScripts().at(0);
    EXPECT_THAT(
        takeLines(),
        ElementsAre("[BACK HANDLER] 📱 Handling device back pressed",
                    "[BACK HANDLER] 🚀 Device back pressed - Android-style handling",
                    "[BACK HANDLER] 📊 Current URL: " + url, "[BACK HANDLER] 📊 Expected URL: " + url,
                    "[BACK HANDLER] 📊 Current base: https://pay.example",
                    "[BACK HANDLER] 📊 Expected base: https://pay.example",
                    "[BACK HANDLER] 📜 Executing JavaScript: " + posted));
    EXPECT_EQ(lastPostedMessage(),
              (Dictionary{{"sdk_action", "device_back_initiated"}, {"source", "ios"}}));
    EXPECT_THAT(core.events(), IsEmpty());
    EXPECT_TRUE(scheduler.runOneBackgroundTask());
    EXPECT_THAT(core.events(),
                ElementsAre(R"(BACK_BUTTON_PRESSED "" "abc" "" ["current_url": ")" + url + "\"]"));
    runAll();
    EXPECT_THAT(lines, ElementsAre("[BACK HANDLER] ✅ JavaScript executed successfully"));
    EXPECT_EQ(page().requests().size(), 1u);
}

struct BaseCase {
    const char* name;
    std::string current;
    bool isWithin;
};

TEST_F(BackNavigationTest, TheSiteIsATextualPrefixOfSchemeAndHost) {
    const BaseCase cases[] = {
        {"another path, port and query", "https://pay.example:8443/a/b?c#d", true},
        {"a host that extends it as text", "https://pay.example.evil.test/", true},
        {"another host", "https://bank.example/otp", false},
        {"another scheme", "http://pay.example/checkout", false},
        {"another letter case", "https://PAY.example/checkout", false},
        {"a shorter host", "https://pay.exampl/", false},
        {"no host", "about:blank", false},
    };
    openScreen();
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        page().replaceUrl(row.current);
        const auto requests = page().requests().size();
        const auto scripts = page().evaluatedScripts().size();
        forget();
        screen()->handleDeviceBackButtonPress();
        scheduler.runOneTurn();
        EXPECT_EQ(page().requests().size() - requests, row.isWithin ? 0u : 1u);
        EXPECT_EQ(page().evaluatedScripts().size() - scripts, 1u);
        runAll();
        EXPECT_THAT(core.events(), Contains(backEvent(row.current)));
    }
}

TEST_F(BackNavigationTest, AnotherHostIsLeftForTheBrowserBackAddressBeforeTheMessageIsPosted) {
    core.webViewViewUrl = "https://pay.example/checkout?old=1?token=%@";
    openScreen(optionsOf("a&b"));
    const std::string expected = "https://pay.example/checkout?token=a%26b";
    page().replaceUrl("https://bank.example/otp?x=1&y=%20");
    screen()->backButtonTapped();
    scheduler.runOneTurn();
    const auto redirecting =
        std::find(lines.begin(), lines.end(), "[BACK HANDLER] ⚠️ URL not within expected base");
    ASSERT_NE(redirecting, lines.end());
    EXPECT_EQ(*(redirecting + 1), "[BACK HANDLER] 🔄 Redirecting to browser back URL");
    EXPECT_EQ(*(redirecting + 2), "[BACK HANDLER] 📋 Browser back URL: " + lastRequest());
    EXPECT_EQ(*(redirecting + 3),
              "[BACK HANDLER] 📜 Executing JavaScript: " + page().evaluatedScripts().back());
    EXPECT_EQ(page().requests().back().timeoutInterval, 60);
    const auto components = platform::URLComponents::parse(lastRequest());
    ASSERT_TRUE(components);
    EXPECT_THAT(
        *components->queryItems(),
        ElementsAre(platform::URLQueryItem{"token", "a&b"},
                    platform::URLQueryItem{"browser_back", "true"},
                    platform::URLQueryItem{"current_url", "https://bank.example/otp?x=1&y=%20"},
                    platform::URLQueryItem{"expected_url", expected}));
}

TEST_F(BackNavigationTest, BarAndSwipeLogTheirOwnEventBeforeTheFlows) {
    openScreen();
    const std::string url = page().currentUrl()->absoluteString();
    const auto ownEvent = [](const char* source) {
        return R"(BACK_BUTTON_PRESSED ["platform": "ios", "source": ")" + std::string(source) +
               "\"]";
    };
    screen()->backButtonTapped();
    EXPECT_EQ(lines.at(0),
              "[BACK HANDLER] 🚀 Navigation bar back button pressed - Android-style handling");
    EXPECT_EQ(lines.at(1), "[BACK HANDLER] 🚀 Device back button pressed - Android-style handling");
    runAll();
    EXPECT_THAT(core.takeEvents(),
                ElementsAre(ownEvent("navigation_bar_back_button"), backEvent(url)));
    lines.clear();
    screen()->swipeBackDetected();
    EXPECT_EQ(lines.at(0), "[BACK HANDLER] 🚀 Swipe back gesture detected - Android-style handling");
    runAll();
    EXPECT_THAT(core.takeEvents(), ElementsAre(ownEvent("swipe_gesture"), backEvent(url)));
}

TEST_F(BackNavigationTest, BeforeAnyLoadTheMessageAndTheEventStillFollow) {
    presentScreen(optionsOf(std::nullopt));
    runAll();
    forget();
    screen()->handleDeviceBackButtonPress();
    runAll();
    EXPECT_THAT(lines, Contains("[BACK HANDLER] 📊 Current URL: "));
    EXPECT_THAT(lines, Contains("[BACK HANDLER] ✅ JavaScript executed successfully"));
    EXPECT_THAT(core.events(), ElementsAre(R"(BACK_BUTTON_PRESSED "" nil "" ["current_url": ""])"));
}

TEST_F(BackNavigationTest, AddressesThatDoNotParseEndTheFlowWithoutMessageOrEvent) {
    openScreen();
    page().replaceUrl("https://pay.example/%zz");
    screen()->handleDeviceBackButtonPress();
    runAll();
    EXPECT_EQ(lines.back(), "[BACK HANDLER] ❌ Failed to parse URLs");

    // The options lost their token, and a failed load dropped the address built from it.
    dismissScreen();
    openScreen(optionsOf(std::nullopt));
    page().replaceUrl("https://pay.example/checkout");
    screen()->handleDeviceBackButtonPress();
    runAll();
    EXPECT_EQ(lines.back(), "[BACK HANDLER] ❌ Failed to parse URLs");
    EXPECT_THAT(page().evaluatedScripts(), IsEmpty());
    EXPECT_THAT(core.events(), IsEmpty());
}

TEST_F(BackNavigationTest, WithoutATokenTheRedirectGoesToTheAddressBuiltBefore) {
    openScreen(optionsOf("abc"));
    screen()->setOptions(optionsOf(std::nullopt));
    page().replaceUrl("https://bank.example/");
    screen()->handleDeviceBackButtonPress();
    runAll();
    EXPECT_EQ(lastRequest(), "https://pay.example/checkout?token=abc");
}

TEST_F(BackNavigationTest, AScriptErrorIsPrintedAndNothingElse) {
    evaluation = someError("boom");
    openScreen();
    screen()->handleDeviceBackButtonPress();
    runAll();
    EXPECT_EQ(lines.back(), "[BACK HANDLER] ❌ JavaScript error: boom");
    EXPECT_EQ(core.events().size(), 1u);
    forget();
    comeBackQuickly();
    runAll();
    EXPECT_EQ(lines.back(), "[UPI BACK] ❌ JavaScript error: boom");
}

TEST_F(BackNavigationTest, AUPIIntentBackPostsTheEnquirysStatusInATurnAfterItsAnswer) {
    core.holdsAnswers = true;
    core.enquiryAnswer = TransactionEnquiryResponse{Order{"PENDING \"'\\"}, {}};
    openScreen();
    comeBackQuickly();
    lines.clear();
    EXPECT_TRUE(scheduler.runOneTurn());
    EXPECT_THAT(takeLines(),
                ElementsAre("[BACK HANDLER] 📱 Handling UPI intent back",
                            "[UPI BACK] 🚀 UPI intent back - Android-style handling",
                            "[UPI BACK] 📊 Order ID: order-7", "[UPI BACK] 📊 Transaction ID: T1"));
    EXPECT_THAT(core.takeCalls(),
                ElementsAre("getTransactionEnquiry(TOKEN, order-7, order-7, T1)"));
    EXPECT_TRUE(core.answerNextOnAThread());
    EXPECT_THAT(page().evaluatedScripts(), IsEmpty());
    EXPECT_TRUE(scheduler.runOneTurn());
    // Double quotes alone are escaped here: the JSON's own backslashes reach the script as they
    // are.
    const std::string posted = page().evaluatedScripts().at(0);
    EXPECT_NE(posted.find(R"(\"transaction_enquiry_api_response\":\"PENDING \\"'\\\")"),
              std::string::npos)
        << posted;
    EXPECT_NE(posted.find(R"(\"upi_intent_back_response\":\"close\")"), std::string::npos);
    runAll();
    EXPECT_THAT(lines, ElementsAre("[UPI BACK] ✅ Transaction enquiry successful",
                                   "[UPI BACK] 📜 Executing JavaScript: " + posted,
                                   "[UPI BACK] ✅ JavaScript executed successfully"));
    EXPECT_THAT(core.events(), IsEmpty());
}

TEST_F(BackNavigationTest, AnEnquiryWithoutAStatusIsPostedAsAnEmptyOne) {
    using Answer = platform::Result<TransactionEnquiryResponse>;
    const std::pair<Answer, std::string> cases[] = {
        {someError("no line"), "[UPI BACK] ❌ Transaction enquiry failed: no line"},
        {TransactionEnquiryResponse{}, "[UPI BACK] ✅ Transaction enquiry successful"},
        {TransactionEnquiryResponse{Order{}, {}}, "[UPI BACK] ✅ Transaction enquiry successful"},
    };
    openScreen();
    for (const auto& [answer, line] : cases) {
        core.enquiryAnswer = answer;
        comeBackQuickly();
        runAll();
        EXPECT_THAT(takeLines(), Contains(line));
        EXPECT_EQ(lastPostedMessage(), (Dictionary{{"upi_intent_back_response", "close"},
                                                   {"transaction_enquiry_api_response", ""}}));
    }
}

TEST_F(BackNavigationTest, AStatusThatIsNoTextIsPrintedAndNotPosted) {
    core.enquiryAnswer = TransactionEnquiryResponse{Order{"\xff"}, {}};
    openScreen();
    comeBackQuickly();
    runAll();
    EXPECT_TRUE(lines.back().starts_with("[UPI BACK] ❌ JSON serialization error: "));
    EXPECT_THAT(page().evaluatedScripts(), IsEmpty());
}

TEST_F(BackNavigationTest, AUPIIntentBackWithoutATokenAsksNothing) {
    openScreen();
    screen()->setOptions(optionsOf(std::nullopt));
    comeBackQuickly();
    runAll();
    EXPECT_EQ(lines.back(), "[UPI BACK] ❌ No order token available");
    EXPECT_THAT(core.takeCalls(), IsEmpty());
}

TEST_F(BackNavigationTest, BackActionsUnderWayHoldTheScreenWeakly) {
    core.holdsAnswers = true;
    openScreen();
    comeBackQuickly();
    scheduler.runOneTurn();  // the enquiry is under way
    screen()->swipeBackDetected();
    dismissScreen();
    forget();
    EXPECT_TRUE(core.answerNext());
    runAll();
    EXPECT_THAT(lines, IsEmpty());
    EXPECT_THAT(core.events(), IsEmpty());
}

}  // namespace
}  // namespace zorvik
