#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

class BackNavigationTest : public CheckoutTest {};

TEST_F(BackNavigationTest, ABackActionIsPostedATurnLaterAndLoggedBesideItsOwnEvent) {
    openScreen(optionsOf("abc"));
    screen()->backButtonTapped();
    EXPECT_TRUE(leadsTo("", R"(
[BACK HANDLER] 🚀 Navigation bar back button pressed - Android-style handling | 🚀 Device back button pressed - Android-style handling
  | 🚀 insertJSToWebview called | 📊 isDeviceBackPressed: true
(turn 1) [BACK HANDLER] 📱 Handling device back pressed | 🚀 Device back pressed - Android-style handling
  | 📊 Current URL: https://pay.example/checkout?token=abc | 📊 Expected URL: https://pay.example/checkout?token=abc
  | 📊 Current base: https://pay.example | 📊 Expected base: https://pay.example
  | 📜 Executing JavaScript: window.postMessage('{\"sdk_action\":\"device_back_initiated\",\"source\":\"ios\"}', '*');
(turn 2) script window.postMessage('{\"sdk_action\":\"device_back_initiated\",\"source\":\"ios\"}', '*');
(turn 3) [BACK HANDLER] ✅ JavaScript executed successfully
(background) event BACK_BUTTON_PRESSED "" "abc" "" ["platform": "ios", "source": "navigation_bar_back_button"]
(background) event BACK_BUTTON_PRESSED "" "abc" "" ["current_url": "https://pay.example/checkout?token=abc"]
)"));
    evaluation = someError("boom");
    screen()->swipeBackDetected();
    EXPECT_EQ(heard().front(),
              "[BACK HANDLER] 🚀 Swipe back gesture detected - Android-style handling");
    EXPECT_TRUE(leadsTo("[BACK HANDLER] ❌", R"(
[BACK HANDLER] ❌ JavaScript error: boom
(background) event BACK_BUTTON_PRESSED "" "abc" "" ["platform": "ios", "source": "swipe_gesture"]
(background) event BACK_BUTTON_PRESSED "" "abc" "" ["current_url": "https://pay.example/checkout?token=abc"]
)"));
}

TEST_F(BackNavigationTest, AnotherHostIsLeftForTheBrowserBackAddressBeforeThePost) {
    core.webViewViewUrl = "https://pay.example/checkout?old=1?token=%@";
    openScreen(optionsOf("a&b"));
    page().replaceUrl("https://bank.example/otp?x=1&y=%20");
    screen()->handleDeviceBackButtonPress();
    runTurn();
    EXPECT_TRUE(hasTranscript("[BACK HANDLER] 📊 Current base", R"(
[BACK HANDLER] 📊 Current base: https://bank.example | 📊 Expected base: https://pay.example | ⚠️ URL not within expected base
  | 🔄 Redirecting to browser back URL
  | 📋 Browser back URL: https://pay.example/checkout?token=a%26b&browser_back=true&current_url=https://bank.example/otp?x%3D1%26y%3D%2520&expected_url=https://pay.example/checkout?token%3Da%2526b
  | 📜 Executing JavaScript: window.postMessage('{\"sdk_action\":\"device_back_initiated\",\"source\":\"ios\"}', '*');
)"));
    EXPECT_EQ(page().requests().back().timeoutInterval, 60);
    run();
    EXPECT_THAT(seen("load"), ElementsAre(HasSubstr("&browser_back=true&")));
    // Without an address to go back by, or without a token, it is that of the checkout as built.
    for (const auto& options : {optionsOf("a&b"), optionsOf(std::nullopt)}) {
        forget();
        core.webViewViewUrl =
            options.orderToken ? "https://pay.example/a b" : "https://pay.example/";
        screen()->setOptions(options);
        page().replaceUrl("about:blank");
        screen()->handleDeviceBackButtonPress();
        EXPECT_THAT((run(), seen("load")), ElementsAre("https://pay.example/checkout?token=a%26b"));
        EXPECT_THAT(heard(), Contains("[BACK HANDLER] 📊 Current base: about://"));
    }
}

TEST_F(BackNavigationTest, TheSiteIsATextualPrefixOfSchemeAndHost) {
    const std::pair<std::string, bool> cases[] = {
        {"https://pay.example:8443/a/b?c#d", true}, {"https://pay.example.evil.test/", true},
        {"https://bank.example/otp", false},        {"http://pay.example/checkout", false},
        {"https://PAY.example/checkout", false},    {"about:blank", false},
        {"https://pay.example/%zz", true},          {"https://bank.example/100%", false},
    };
    openScreen();
    for (const auto& [url, isWithin] : cases) {
        page().replaceUrl(url);
        screen()->handleDeviceBackButtonPress();
        run();
        EXPECT_THAT(seen("load"), SizeIs(isWithin ? 0 : 1)) << url;
        EXPECT_EQ(seen("event").back(), R"(BACK_BUTTON_PRESSED ["current_url": ")" + url + "\"]");
        forget();
    }
}

TEST_F(BackNavigationTest, ACheckoutAddressThatDoesNotParseEndsTheFlow) {
    core.webViewViewUrl = "https://pay.example/a b";
    openScreen();
    page().replaceUrl("https://pay.example/");
    screen()->handleDeviceBackButtonPress();
    EXPECT_TRUE(leadsTo("[BACK HANDLER] 📊 Exp", R"(
[BACK HANDLER] 📊 Expected URL:  | ❌ Failed to parse URLs
)"));
}

TEST_F(BackNavigationTest, AnEnquiryWithoutAStatusIsPostedAsAnEmptyOneAndNoTextNotAtAll) {
    using Answer = platform::Result<TransactionEnquiryResponse>;
    openScreen();
    const auto comeBackTo = [this](const Answer& answer) {
        core.enquiryAnswer = answer;
        storeRecord();
        comeBackAfter(1);
        runTurn();  // the activation
        port.defaults().remove({"current_transaction_id"});
        forget();
    };
    evaluation = someError("boom");
    comeBackTo(someError("no line"));
    run();
    EXPECT_EQ(last(), "[UPI BACK] ❌ JavaScript error: boom");
    EXPECT_THAT(seen("script"), ElementsAre(HasSubstr(R"(api_response\":\"\")")));
    EXPECT_THAT(seen("call"), ElementsAre("getTransactionEnquiry(TOKEN, order-7, order-7, )"));
    EXPECT_THAT(heard(), Contains("[UPI BACK] ❌ Transaction enquiry failed: no line"));
    for (const auto& order : {std::optional<Order>(), std::optional<Order>(Order{})}) {
        comeBackTo(TransactionEnquiryResponse{order, {}});
        run();
        EXPECT_THAT(seen("script"), ElementsAre(HasSubstr(R"(api_response\":\"\")")));
    }
    comeBackTo(TransactionEnquiryResponse{Order{"\xff"}, {}});
    run();
    EXPECT_THAT(last(), StartsWith("[UPI BACK] ❌ JSON serialization error: "));
    screen()->setOptions({});
    comeBackTo(TransactionEnquiryResponse{});
    run();
    EXPECT_EQ(last(), "[UPI BACK] ❌ No order token available");
}

}  // namespace
}  // namespace zorvik
