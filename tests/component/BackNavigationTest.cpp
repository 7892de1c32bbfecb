#include "platform/foundation/URLComponents.h"
#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

class BackNavigationTest : public CheckoutTest {
  protected:
    std::string lastRequest() { return page().requests().back().url.absoluteString(); }

    void goBack() {
        screen()->handleDeviceBackButtonPress();
        runAll();
    }
    void comeBackQuickly() {
        storeRecord();
        comeBackAfter(1);
    }
};

TEST_F(BackNavigationTest, ADeviceBackOnTheSiteIsPostedATurnLaterAndLogged) {
    openScreen(optionsOf("abc"));
    screen()->handleDeviceBackButtonPress();
    EXPECT_THAT(scripts(), IsEmpty());
    EXPECT_TRUE(scheduler.runOneTurn());
    EXPECT_EQ(lastPostedMessage(),
              (Dictionary{{"sdk_action", "device_back_initiated"}, {"source", "ios"}}));
    EXPECT_THAT(core.events(), IsEmpty());
    EXPECT_TRUE(scheduler.runOneBackgroundTask());
    EXPECT_THAT(core.events(), ElementsAre(R"(BACK_BUTTON_PRESSED "" "abc" "" ["current_url": )"
                                           R"("https://pay.example/checkout?token=abc"])"));
    runAll();
    EXPECT_EQ(lines.back(), "[BACK HANDLER] ✅ JavaScript executed successfully");
}

TEST_F(BackNavigationTest, TheSiteIsATextualPrefixOfSchemeAndHost) {
    const std::pair<std::string, bool> cases[] = {
        {"https://pay.example:8443/a/b?c#d", true}, {"https://pay.example.evil.test/", true},
        {"https://bank.example/otp", false},        {"http://pay.example/checkout", false},
        {"https://PAY.example/checkout", false},    {"about:blank", false},
        {"https://pay.example/%zz", true},          {"https://bank.example/100%", false},
    };
    std::size_t posts = 0;
    openScreen();
    for (const auto& [url, isWithin] : cases) {
        SCOPED_TRACE(url);
        page().replaceUrl(url);
        const auto requests = page().requests().size();
        screen()->handleDeviceBackButtonPress();
        scheduler.runOneTurn();
        EXPECT_EQ(page().requests().size() - requests, isWithin ? 0u : 1u);
        EXPECT_EQ(scripts().size(), ++posts);
        runAll();
        EXPECT_THAT(core.takeEvents(),
                    Contains(R"(BACK_BUTTON_PRESSED ["current_url": ")" + url + "\"]"));
    }
}

TEST_F(BackNavigationTest, AnotherHostIsLeftForTheBrowserBackAddress) {
    core.webViewViewUrl = "https://pay.example/checkout?old=1?token=%@";
    openScreen(optionsOf("a&b"));
    page().replaceUrl("https://bank.example/otp?x=1&y=%20");
    screen()->handleDeviceBackButtonPress();
    scheduler.runOneTurn();
    EXPECT_EQ(lines.at(lines.size() - 2), "[BACK HANDLER] 📋 Browser back URL: " + lastRequest());
    EXPECT_EQ(lines.back(), "[BACK HANDLER] 📜 Executing JavaScript: " + scripts().back());
    const std::string expected = "https://pay.example/checkout?token=a%26b";
    EXPECT_THAT(
        *platform::URLComponents::parse(lastRequest())->queryItems(),
        ElementsAre(platform::URLQueryItem{"token", "a&b"},
                    platform::URLQueryItem{"browser_back", "true"},
                    platform::URLQueryItem{"current_url", "https://bank.example/otp?x=1&y=%20"},
                    platform::URLQueryItem{"expected_url", expected}));
}

TEST_F(BackNavigationTest, BarAndSwipeLogTheirOwnEventBeforeTheFlows) {
    openScreen();
    const auto ownEvent = [](const std::string& source) {
        return R"(BACK_BUTTON_PRESSED ["platform": "ios", "source": ")" + source + "\"]";
    };
    const auto flowEvent = StartsWith("BACK_BUTTON_PRESSED [\"current_url\"");
    screen()->backButtonTapped();
    runAll();
    EXPECT_THAT(core.takeEvents(), ElementsAre(ownEvent("navigation_bar_back_button"), flowEvent));
    screen()->swipeBackDetected();
    runAll();
    EXPECT_THAT(core.takeEvents(), ElementsAre(ownEvent("swipe_gesture"), flowEvent));
}

TEST_F(BackNavigationTest, ACheckoutAddressThatDoesNotParseEndsTheFlowAndAnAbsentPageDoesNot) {
    core.webViewViewUrl = "https://pay.example/a b";
    openScreen();
    page().replaceUrl("https://pay.example/");
    goBack();
    EXPECT_EQ(lines.back(), "[BACK HANDLER] ❌ Failed to parse URLs");
    EXPECT_THAT(scripts(), IsEmpty());
    EXPECT_THAT(core.events(), IsEmpty());

    dismissScreen();
    openScreen(optionsOf(std::nullopt));  // which loads nothing
    goBack();
    EXPECT_EQ(lines.back(), "[BACK HANDLER] ✅ JavaScript executed successfully");
    EXPECT_THAT(core.events(), ElementsAre(R"(BACK_BUTTON_PRESSED "" nil "" ["current_url": ""])"));
}

TEST_F(BackNavigationTest, AUPIIntentBackPostsTheEnquirysStatusInATurnAfterItsAnswer) {
    core.holdsAnswers = true;
    core.enquiryAnswer = TransactionEnquiryResponse{Order{"PENDING \"'\\"}, {}};
    openScreen();
    comeBackQuickly();
    EXPECT_TRUE(scheduler.runOneTurn());
    EXPECT_THAT(core.takeCalls(),
                ElementsAre("getTransactionEnquiry(TOKEN, order-7, order-7, T1)"));
    core.answerNext();
    EXPECT_THAT(scripts(), IsEmpty());
    EXPECT_TRUE(scheduler.runOneTurn());
    // Only double quotes are escaped: the JSON's own backslashes reach the script as they are.
    EXPECT_THAT(scripts().at(0),
                HasSubstr(R"(\"transaction_enquiry_api_response\":\"PENDING \\"'\\\")"));
    EXPECT_THAT(scripts().at(0), HasSubstr(R"(\"upi_intent_back_response\":\"close\")"));
    evaluation = someError("boom");
    runAll();
    EXPECT_EQ(lines.back(), "[UPI BACK] ❌ JavaScript error: boom");
    EXPECT_THAT(core.events(), IsEmpty());
}

TEST_F(BackNavigationTest, AnEnquiryWithoutAStatusIsPostedAsAnEmptyOneAndNoTextNotAtAll) {
    using Answer = platform::Result<TransactionEnquiryResponse>;
    openScreen();
    for (const Answer& answer : {Answer(someError("no line")), Answer(TransactionEnquiryResponse{}),
                                 Answer(TransactionEnquiryResponse{Order{}, {}})}) {
        core.enquiryAnswer = answer;
        comeBackQuickly();
        runAll();
        EXPECT_EQ(lastPostedMessage(), (Dictionary{{"upi_intent_back_response", "close"},
                                                   {"transaction_enquiry_api_response", ""}}));
    }
    core.enquiryAnswer = TransactionEnquiryResponse{Order{"\xff"}, {}};
    comeBackQuickly();
    runAll();
    EXPECT_THAT(lines.back(), StartsWith("[UPI BACK] ❌ JSON serialization error: "));
}

TEST_F(BackNavigationTest, BackActionsUnderWayHoldTheScreenWeakly) {
    core.holdsAnswers = true;
    openScreen();
    comeBackQuickly();
    scheduler.runOneTurn();  // the enquiry is under way
    screen()->swipeBackDetected();
    dismissScreen();
    forget();
    core.answerNext();
    runAll();
    EXPECT_THAT(lines, IsEmpty());
    EXPECT_THAT(core.events(), IsEmpty());
}

}  // namespace
}  // namespace zorvik
