#include "platform/foundation/URLComponents.h"
#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

class BackNavigationTest : public CheckoutTest {};

TEST_F(BackNavigationTest, ABackActionIsPostedATurnLaterAndLoggedBesideItsOwnEvent) {
    openScreen(optionsOf("abc"));
    screen()->backButtonTapped();
    run();
    EXPECT_TRUE(hasTranscript(R"(
[BACK HANDLER] 🚀 Navigation bar back button pressed - Android-style handling
[BACK HANDLER] 🚀 Device back button pressed - Android-style handling
[BACK HANDLER] 🚀 insertJSToWebview called
[BACK HANDLER] 📊 isDeviceBackPressed: true
-- turn 1
[BACK HANDLER] 📱 Handling device back pressed
[BACK HANDLER] 🚀 Device back pressed - Android-style handling
[BACK HANDLER] 📊 Current URL: https://pay.example/checkout?token=abc
[BACK HANDLER] 📊 Expected URL: https://pay.example/checkout?token=abc
[BACK HANDLER] 📊 Current base: https://pay.example
[BACK HANDLER] 📊 Expected base: https://pay.example
[BACK HANDLER] 📜 Executing JavaScript: window.postMessage('{\"sdk_action\":\"device_back_initiated\",\"source\":\"ios\"}', '*');
-- turn 2
script window.postMessage('{\"sdk_action\":\"device_back_initiated\",\"source\":\"ios\"}', '*');
-- turn 3
[BACK HANDLER] ✅ JavaScript executed successfully
-- background
event BACK_BUTTON_PRESSED "" "abc" "" ["platform": "ios", "source": "navigation_bar_back_button"]
-- background
event BACK_BUTTON_PRESSED "" "abc" "" ["current_url": "https://pay.example/checkout?token=abc"]
)"));
    evaluation = someError("boom");
    screen()->swipeBackDetected();
    run();
    EXPECT_TRUE(hasTranscript(R"(
[BACK HANDLER] 🚀 Swipe back gesture detected - Android-style handling
[BACK HANDLER] 🚀 Device back button pressed - Android-style handling
[BACK HANDLER] 🚀 insertJSToWebview called
[BACK HANDLER] 📊 isDeviceBackPressed: true
-- turn 1
[BACK HANDLER] 📱 Handling device back pressed
[BACK HANDLER] 🚀 Device back pressed - Android-style handling
[BACK HANDLER] 📊 Current URL: https://pay.example/checkout?token=abc
[BACK HANDLER] 📊 Expected URL: https://pay.example/checkout?token=abc
[BACK HANDLER] 📊 Current base: https://pay.example
[BACK HANDLER] 📊 Expected base: https://pay.example
[BACK HANDLER] 📜 Executing JavaScript: window.postMessage('{\"sdk_action\":\"device_back_initiated\",\"source\":\"ios\"}', '*');
-- turn 2
script window.postMessage('{\"sdk_action\":\"device_back_initiated\",\"source\":\"ios\"}', '*');
-- turn 3
[BACK HANDLER] ❌ JavaScript error: boom
-- background
event BACK_BUTTON_PRESSED "" "abc" "" ["platform": "ios", "source": "swipe_gesture"]
-- background
event BACK_BUTTON_PRESSED "" "abc" "" ["current_url": "https://pay.example/checkout?token=abc"]
)"));
}

TEST_F(BackNavigationTest, AnotherHostIsLeftForTheBrowserBackAddressBeforeThePost) {
    core.webViewViewUrl = "https://pay.example/checkout?old=1?token=%@";
    openScreen(optionsOf("a&b"));
    page().replaceUrl("https://bank.example/otp?x=1&y=%20");
    screen()->handleDeviceBackButtonPress();
    runTurn();
    EXPECT_TRUE(hasTranscript(R"(
[BACK HANDLER] 🚀 Device back button pressed - Android-style handling
[BACK HANDLER] 🚀 insertJSToWebview called
[BACK HANDLER] 📊 isDeviceBackPressed: true
-- turn 1
[BACK HANDLER] 📱 Handling device back pressed
[BACK HANDLER] 🚀 Device back pressed - Android-style handling
[BACK HANDLER] 📊 Current URL: https://bank.example/otp?x=1&y=%20
[BACK HANDLER] 📊 Expected URL: https://pay.example/checkout?token=a%26b
[BACK HANDLER] 📊 Current base: https://bank.example
[BACK HANDLER] 📊 Expected base: https://pay.example
[BACK HANDLER] ⚠️ URL not within expected base
[BACK HANDLER] 🔄 Redirecting to browser back URL
[BACK HANDLER] 📋 Browser back URL: https://pay.example/checkout?token=a%26b&browser_back=true&current_url=https://bank.example/otp?x%3D1%26y%3D%2520&expected_url=https://pay.example/checkout?token%3Da%2526b
[BACK HANDLER] 📜 Executing JavaScript: window.postMessage('{\"sdk_action\":\"device_back_initiated\",\"source\":\"ios\"}', '*');
)"));
    const auto& request = page().requests().back();
    EXPECT_EQ(request.timeoutInterval, 60);
    EXPECT_THAT(
        *platform::URLComponents::parse(request.url.absoluteString())->queryItems(),
        ElementsAre(
            platform::URLQueryItem{"token", "a&b"}, platform::URLQueryItem{"browser_back", "true"},
            platform::URLQueryItem{"current_url", "https://bank.example/otp?x=1&y=%20"},
            platform::URLQueryItem{"expected_url", "https://pay.example/checkout?token=a%26b"}));
    run();
    screen()->setOptions({});
    page().replaceUrl("https://bank.example/");
    screen()->handleDeviceBackButtonPress();
    runTurn();
    EXPECT_EQ(page().requests().back().url.absoluteString(),
              "https://pay.example/checkout?token=a%26b")
        << "without a token it is the address as it was built";
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
        SCOPED_TRACE(url);
        page().replaceUrl(url);
        screen()->handleDeviceBackButtonPress();
        run();
        EXPECT_THAT(seen("load"), SizeIs(isWithin ? 0 : 1));
        EXPECT_THAT(seen("script"), SizeIs(1));
        EXPECT_THAT(seen("event"),
                    Contains(R"(BACK_BUTTON_PRESSED ["current_url": ")" + url + "\"]"));
        forget();
    }
}

TEST_F(BackNavigationTest, ACheckoutAddressThatDoesNotParseEndsTheFlowAndAnAbsentPageDoesNot) {
    core.webViewViewUrl = "https://pay.example/a b";
    openScreen();
    page().replaceUrl("https://pay.example/");
    screen()->handleDeviceBackButtonPress();
    run();
    EXPECT_TRUE(hasTranscript(R"(
[BACK HANDLER] 🚀 Device back button pressed - Android-style handling
[BACK HANDLER] 🚀 insertJSToWebview called
[BACK HANDLER] 📊 isDeviceBackPressed: true
-- turn 1
[BACK HANDLER] 📱 Handling device back pressed
[BACK HANDLER] 🚀 Device back pressed - Android-style handling
[BACK HANDLER] 📊 Current URL: https://pay.example/
[BACK HANDLER] 📊 Expected URL: 
[BACK HANDLER] ❌ Failed to parse URLs
)"));

    dismissScreen();
    openScreen(optionsOf(std::nullopt));  // which loads nothing
    screen()->handleDeviceBackButtonPress();
    run();
    EXPECT_TRUE(hasTranscript(R"(
[BACK HANDLER] 🚀 Device back button pressed - Android-style handling
[BACK HANDLER] 🚀 insertJSToWebview called
[BACK HANDLER] 📊 isDeviceBackPressed: true
-- turn 1
[BACK HANDLER] 📱 Handling device back pressed
[BACK HANDLER] 🚀 Device back pressed - Android-style handling
[BACK HANDLER] 📊 Current URL: 
[BACK HANDLER] 📊 Expected URL: 
[BACK HANDLER] 📜 Executing JavaScript: window.postMessage('{\"sdk_action\":\"device_back_initiated\",\"source\":\"ios\"}', '*');
-- turn 2
script window.postMessage('{\"sdk_action\":\"device_back_initiated\",\"source\":\"ios\"}', '*');
-- turn 3
[BACK HANDLER] ✅ JavaScript executed successfully
-- background
event BACK_BUTTON_PRESSED "" nil "" ["current_url": ""]
)"));
}

TEST_F(BackNavigationTest, AnEnquiryWithoutAStatusIsPostedAsAnEmptyOneAndNoTextNotAtAll) {
    using Answer = platform::Result<TransactionEnquiryResponse>;
    const std::string empty = R"(\"transaction_enquiry_api_response\":\"\")";
    openScreen();
    storeRecord();
    evaluation = someError("boom");
    const auto comeBackTo = [this](const Answer& answer) {
        core.enquiryAnswer = answer;
        comeBackAfter(1);
        runTurn();  // the activation
        forget();
        run();
    };
    comeBackTo(someError("no line"));
    EXPECT_TRUE(hasTranscript(R"(
-- turn 1
[BACK HANDLER] 📱 Handling UPI intent back
[UPI BACK] 🚀 UPI intent back - Android-style handling
[UPI BACK] 📊 Order ID: order-7
[UPI BACK] 📊 Transaction ID: T1
call getTransactionEnquiry(TOKEN, order-7, order-7, T1)
-- background
[UPI BACK] ❌ Transaction enquiry failed: no line
[UPI BACK] 📜 Executing JavaScript: window.postMessage('{\"transaction_enquiry_api_response\":\"\",\"upi_intent_back_response\":\"close\"}', '*');
-- turn 3
script window.postMessage('{\"transaction_enquiry_api_response\":\"\",\"upi_intent_back_response\":\"close\"}', '*');
-- turn 4
[UPI BACK] ❌ JavaScript error: boom
)"));
    for (const auto& answer :
         {TransactionEnquiryResponse{}, TransactionEnquiryResponse{Order{}, {}}}) {
        comeBackTo(answer);
        EXPECT_THAT(seen("script"), ElementsAre(HasSubstr(empty)));
    }
    comeBackTo(TransactionEnquiryResponse{Order{"\xff"}, {}});
    EXPECT_TRUE(hasTranscript(R"(
-- turn 1
[BACK HANDLER] 📱 Handling UPI intent back
[UPI BACK] 🚀 UPI intent back - Android-style handling
[UPI BACK] 📊 Order ID: order-7
[UPI BACK] 📊 Transaction ID: T1
call getTransactionEnquiry(TOKEN, order-7, order-7, T1)
-- background
[UPI BACK] ✅ Transaction enquiry successful
[UPI BACK] ❌ JSON serialization error: The value has no JSON text: a string is not UTF-8
)"));
    comeBackAfter(1);
    runTurn();
    port.defaults().remove("current_transaction_id");
    runTurn();
    EXPECT_EQ(seen("call").back(), "getTransactionEnquiry(TOKEN, order-7, order-7, )");
    run();
    screen()->setOptions({});
    storeRecord();
    comeBackTo(TransactionEnquiryResponse{});
    EXPECT_TRUE(hasTranscript(R"(
-- turn 1
[BACK HANDLER] 📱 Handling UPI intent back
[UPI BACK] 🚀 UPI intent back - Android-style handling
[UPI BACK] ❌ No order token available
)"));
}

}  // namespace
}  // namespace zorvik
