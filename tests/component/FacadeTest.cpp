#include "platform/runtime/Environment.h"
#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

class FacadeTest : public CheckoutTest {};

TEST_F(FacadeTest, WhatBelongsToNoCheckoutIsToldByEventsAloneAndAnAppCodeStaysUntilAnother) {
    ZorvikCheckoutSDK::reset();
    ZorvikCheckoutSDK::shared().checkout(presenter, {});
    sdk.handleDeviceBackButtonPress();
    EXPECT_THAT(heard(), IsEmpty()) << "not in the background";
    EXPECT_TRUE(leadsTo("", R"(
(background) event SDK_INITIALIZED none ["platform": "ios", "sdk_version": "2.0.15-alpha.4"]
(background) event CHECKOUT_INITIATED "" nil "" ["app_code": "not_set", "delegate_present": false, "proxy_delegate_present": false]
(background) event EXCEPTION_THROWN none ["error": "No orderToken provided"]
(background) event BACK_BUTTON_PRESSED none ["platform": "ios", "source": "device_back_button"]
)"));
    sdk.setDelegate(host);
    using MaybeText = std::optional<std::string>;
    for (const MaybeText& text : {MaybeText("SHOP"), MaybeText(""), MaybeText()}) {
        sdk.initialize(text);
        sdk.setEnvironmentUrl(text);
        EXPECT_EQ(sdk.environmentUrl(), text);
    }
    sdk.checkout(presenter, {});
    EXPECT_TRUE(leadsTo("", R"(
call setAppCode(SHOP)
call setZorvikTechUrl(SHOP)
(background) event SDK_INITIALIZED none ["app_code_provided": true, "platform": "ios", "sdk_version": "2.0.15-alpha.4"]
(background) event SDK_INITIALIZED none ["app_code_provided": false, "platform": "ios", "sdk_version": "2.0.15-alpha.4"]
(background) event SDK_INITIALIZED none ["app_code_provided": false, "platform": "ios", "sdk_version": "2.0.15-alpha.4"]
(background) event CHECKOUT_INITIATED "" nil "" ["app_code": "SHOP", "delegate_present": true, "proxy_delegate_present": true]
(background) event EXCEPTION_THROWN none ["error": "No orderToken provided"]
)"));
}

TEST_F(FacadeTest, ACheckoutGoesFromTheCallToTheHostInThisOrder) {
    core.appsAnswer = Apps{{"N", "Nilgiri Pay", "app.nilgiri", std::nullopt},
                           {"Q", std::nullopt, "app.quiet", std::nullopt}};
    sdk.initialize("SHOP");
    run();
    forget();
    checkout();
    EXPECT_TRUE(hasTranscript("", R"(
call updateOrderDetails(TOKEN, order-7, callback_mobile, ios, 2.0.15-alpha.4)
(background) event CHECKOUT_INITIATED ["app_code": "SHOP", "delegate_present": true, "proxy_delegate_present": true]
(turn 1) event UPDATE_ORDER_PAYLOAD ["callback_mode": "callback_mobile", "platform_type": "ios"]
call getUPIAppsList(TOKEN)
(turn 2) event UPI_APPS_LISTED ["upi_apps": ["Nilgiri Pay", "Unknown"], "upi_apps_count": 2]
event WEBVIEW_LAUNCH ["url": "checkout_url"]
(turn 3) [URL INTERCEPT] 🔍 Intercepted URL: https://pay.example/checkout?token=TOKEN | 📋 URL type: String | 📊 URL length: 120
call isUPIAppReturnURL(https://pay.example/checkout?token=TOKEN)
[UPI RETURN] 🔍 isUPIAppReturnURL called for URL: https://pay.example/checkout?token=TOKEN | 📊 isUPIAppReturnURL result: false
call isUPIAppReturnURL(https://pay.example/checkout?token=TOKEN)
[UPI SCHEME] 🔍 Checking URL scheme: https://pay.example/checkout?token=TOKEN | 📊 Is UPI return by scheme: false
[UPI RETURN] 🔍 isUPIAppReturnByScheme called for URL: https://pay.example/checkout?token=TOKEN
  | 📊 isUPIAppReturnByScheme result: false
[URL INTERCEPT] ✅ Allowing URL to load: https://pay.example/checkout?token=TOKEN
(turn 4) load https://pay.example/checkout?token=TOKEN
(turn 5) event URL_INTERCEPTED ["url": "https://pay.example/checkout?token=TOKEN"]
(turn 6) event WEBVIEW_LOADED ["url": "https://pay.example/checkout?token=TOKEN"]
(turn 8) script console.log('🔍 Injecting UPI apps...');
console.log('🔍 Window object available:', typeof window !== 'undefined');
console.log('🔍 zorvik_web available:', typeof window.zorvik_web !== 'undefined');

// Wait a bit for message handlers to be available
setTimeout(function() {
    try {
        if (window.zorvik_web && window.zorvik_web.UPIIntentAvailable) {
            console.log('✅ zorvik_web.UPIIntentAvailable found, calling...');
            window.zorvik_web.UPIIntentAvailable('{\"UPIApps\":[{\"appiconbase64\":null,\"package_name\":\"app.nilgiri\",\"upi_app_code\":\"N\",\"upi_app_name\":\"Nilgiri Pay\"},{\"appiconbase64\":null,\"package_name\":\"app.quiet\",\"upi_app_code\":\"Q\",\"upi_app_name\":null}]}');
            console.log('✅ UPI Apps injected successfully');
            console.log('📊 Injected data:', JSON.parse('{\"UPIApps\":[{\"appiconbase64\":null,\"package_name\":\"app.nilgiri\",\"upi_app_code\":\"N\",\"upi_app_name\":\"Nilgiri Pay\"},{\"appiconbase64\":null,\"package_name\":\"app.quiet\",\"upi_app_code\":\"Q\",\"upi_app_name\":null}]}'));
        } else {
            console.log('❌ zorvik_web.UPIIntentAvailable not available');
            console.log('🔍 Available window properties:', Object.keys(window));
            if (window.zorvik_web) {
                console.log('🔍 zorvik_web properties:', Object.keys(window.zorvik_web));
            } else {
                console.log('🔍 zorvik_web object not found');
            }
        }
    } catch (error) {
        console.error('❌ Error injecting UPI apps:', error);
        console.error('📊 JSON data:', '{\"UPIApps\":[{\"appiconbase64\":null,\"package_name\":\"app.nilgiri\",\"upi_app_code\":\"N\",\"upi_app_name\":\"Nilgiri Pay\"},{\"appiconbase64\":null,\"package_name\":\"app.quiet\",\"upi_app_code\":\"Q\",\"upi_app_name\":null}]}');
    }
}, 100);
)"));
    page().navigate("https://pay.example/check?response=%7B%22payload%22:%7B%22n%22:1%7D%7D");
    runAll();
    EXPECT_TRUE(hasTranscript("", R"(
(turn 1) [URL INTERCEPT] 🔍 Intercepted URL: https://pay.example/check?response=%7B%22payload%22:%7B%22n%22:1%7D%7D
  | 📋 URL type: String | 📊 URL length: 70 | 🎯 Found redirect URL
[REDIRECT] 🚀 handleWebViewRespCheckUrl called!
  | 🔗 Processing URL: https://pay.example/check?response=%7B%22payload%22:%7B%22n%22:1%7D%7D
  | 📊 Available query items: [response={"payload":{"n":1}}] | ✅ Response parameter found: {"payload":{"n":1}}
  | 🚀 handleParsedResponse called with data: ["payload": ["n": 1]]
(turn 2) host ["n": 1]
[VIEW LIFECYCLE] 🚀 viewWillDisappear called | 📊 Is being dismissed: true | 🧹 Performing cleanup due to dismissal
(background) event PAYMENT_STATUS ["payload": "[\"n\": 1]", "status": "success", "transactionId": "unknown"]
(later) [VIEW LIFECYCLE] 🚀 viewDidDisappear called | 📊 Is being dismissed: true | 🧹 Performing cleanup due to dismissal
)"));
    EXPECT_FALSE(screen());
}

TEST_F(FacadeTest, AFailureBeforeTheScreenGoesToTheDelegateOfThatMoment) {
    const std::string rest = R"( no line", "order_id": "order-7", "subMerchantId": "sub-3", )"
                             R"("token": "TOKEN", "zorvik_order_id": "order-7"])";
    const auto failWith = [&](const std::shared_ptr<Receiver>& later, const Lines& responses) {
        sdk.setDelegate(host);
        sdk.checkout(presenter, optionsOf(plainToken()));
        EXPECT_GT(presenter.use_count(), 1) << "held until the screen is shown";
        sdk.setDelegate(later);
        host->name = "early";
        run();
        EXPECT_THAT(heard(), Contains(R"(event EXCEPTION_THROWN ["error": "no line"])"));
        EXPECT_EQ(seen("host"), responses);
        EXPECT_THAT(port.stage().shown(), IsEmpty());
        forget();
    };
    core.orderAnswer = someError("no line");
    failWith(std::make_shared<Receiver>(),
             {R"(["error": "Failed to update order details:)" + rest});
    core.orderAnswer = OrderResponse{};
    core.appsAnswer = someError("no line");
    failWith(std::make_shared<Receiver>(), {R"(["error": "Failed to get UPI apps:)" + rest});
    failWith(nullptr, {});
}

TEST_F(FacadeTest, TheTwoFlagsOfACheckoutsStartAreReadWhenTheirTaskRuns) {
    sdk.initialize("SHOP");
    sdk.setDelegate({});
    sdk.checkout(presenter, {});
    sdk.setDelegate(host);  // too late for the bridge, in time for the flag
    run();
    sdk.checkout(presenter, {});
    sdk.checkout(presenter, {});  // the first bridge goes: its event's task does not keep it
    run();
    const std::string flags =
        R"(CHECKOUT_INITIATED "" nil "" ["app_code": "SHOP", "delegate_present": )";
    const std::string no = R"(, "proxy_delegate_present": false])";
    EXPECT_THAT(core.transcript.entries("event " + flags),
                ElementsAre("true" + no, "true" + no, R"(true, "proxy_delegate_present": true])"));
}

TEST_F(FacadeTest, ADeviceBackReachesTheOpenScreenBesideAnEventOfItsOwn) {
    checkout();
    forget();
    sdk.handleDeviceBackButtonPress();
    EXPECT_TRUE(heard().at(0).starts_with("[BACK HANDLER] 🚀 Device back button pressed"));
    run();
    EXPECT_THAT(seen("event"),
                ElementsAre(StartsWith("BACK_BUTTON_PRESSED none ["), HasSubstr("current_url")));
}

TEST_F(FacadeTest, ANullPresenterIsRefusedAtTheCall) {
    EXPECT_DEATH(sdk.checkout(nullptr, optionsOf(plainToken())),
                 "without a presenter; pass .* is on the screen");
}

TEST_F(FacadeTest, OrderCreationHandsArgumentsAndResultsThroughOnTheirThread) {
    core.holdsAnswers = true;
    core.orderAnswer = OrderResponse{"order-9", "t", "CREATED"};
    core.shopOrderAnswer = someError("no shop");
    sdk.createOrder(10.5, "INR", {{{"sku", "a"}}}, Dictionary{{"name", "n"}},
                    [&](const Result<OrderResponse>& result) {
                        EXPECT_FALSE(platform::Environment::isMainThread());
                        core.transcript.add("created " + result.value().orderId.value());
                    });
    sdk.createShopOrder(
        "INR", "10.50", "p1", true, "REDIRECT", "UPI", "INTENT", std::nullopt,
        [&](const Result<Dictionary>& result) { EXPECT_EQ(result.error(), someError("no shop")); });
    sdk.createOrder(1, "", {}, {}, {});  // with nobody to tell
    while (core.isAsked())
        core.answerNext();
    EXPECT_TRUE(hasTranscript("", R"(
call createOrder(10.5, INR, [["sku": "a"]], ["name": "n"])
call createShopOrder(INR, 10.50, p1, true, REDIRECT, UPI, INTENT, null)
call createOrder(1.0, , [], null)
created order-9
event EXCEPTION_THROWN none ["error": "no shop"]
)"));
}

}  // namespace
}  // namespace zorvik
