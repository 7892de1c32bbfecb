#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

class AppReturnTest : public CheckoutTest {};

TEST_F(AppReturnTest, AReturnUrlIsReadAloudFromItsPartsToItsOutcome) {
    openScreen();
    EXPECT_EQ(decide("shopreturn://back/p?a=1&b&a=2&b=%C3%A9+&b&status=x"), Policy::cancel);
    EXPECT_TRUE(leadsTo("", R"(
[URL INTERCEPT] 🔍 Intercepted URL: shopreturn://back/p?a=1&b&a=2&b=%C3%A9+&b&status=x | 📋 URL type: String | 📊 URL length: 50
call isUPIAppReturnURL(shopreturn://back/p?a=1&b&a=2&b=%C3%A9+&b&status=x)
[UPI RETURN] 🔍 isUPIAppReturnURL called for URL: shopreturn://back/p?a=1&b&a=2&b=%C3%A9+&b&status=x | 📊 isUPIAppReturnURL result: true
call isUPIAppReturnURL(shopreturn://back/p?a=1&b&a=2&b=%C3%A9+&b&status=x)
[UPI SCHEME] 🔍 Checking URL scheme: shopreturn://back/p?a=1&b&a=2&b=%C3%A9+&b&status=x | 📊 Is UPI return by scheme: true
[UPI RETURN] 🔍 isUPIAppReturnByScheme called for URL: shopreturn://back/p?a=1&b&a=2&b=%C3%A9+&b&status=x
  | 📊 isUPIAppReturnByScheme result: true | 🎯 Detected UPI app return URL!
  | 🔗 UPI return URL: shopreturn://back/p?a=1&b&a=2&b=%C3%A9+&b&status=x | 🚀 User returned from UPI app!
  | 🔗 Return URL: shopreturn://back/p?a=1&b&a=2&b=%C3%A9+&b&status=x | 📱 Return detected at: 2027-01-15 08:00:00 +0000
  | ✅ URL components parsed successfully | 🔍 URL scheme: shopreturn | 🔍 URL host: back | 🔍 URL path: /p | 📋 Query param: a = 1
  | 📋 Query param: b = nil | 📋 Query param: a = 2 | 📋 Query param: b = é+ | 📋 Query param: b = nil
  | 📋 Query param: status = x | 📊 Transaction data: ["a": "2", "status": "x"] | 📋 Query items count: 6 | 📊 Status found: x
  | ❓ Unknown status: x
[UPI UNKNOWN] 🚀 Handling UPI unknown status callback! | 📊 Unknown data: ["a": "2", "status": "x"] | ❓ Unknown payment status
(turn 1) [UPI UNKNOWN] 📞 Calling delegate failure method
(turn 2) failure ["error": "Unknown payment status", "order_id": "order-7", "subMerchantId": "sub-3", "token": "TOKEN", "transaction_id": "", "zorvik_order_id": "order-7", "zorvik_transaction_id": ""]
(background) event PAYMENT_STATUS ["error_reason": "Unknown payment status", "status": "unknown", "transactionId": "", "upi_data": ["a": "2", "status": "x"]]
)"));
    decide("shopreturn");
    EXPECT_THAT(heard(), testing::IsSupersetOf(
                             {"[UPI RETURN] 🔍 URL scheme: nil", "[UPI RETURN] 🔍 URL host: nil"}));
    decide("shopreturn://?status=success&x=%zz");
    EXPECT_EQ(last(), "[UPI RETURN] ❌ Failed to parse URL components");
}

TEST_F(AppReturnTest, AReturnUrlIsReadAloudByTheWayItsStatusTakes) {
    const std::string none = "❌ No status found in URL\n[UPI UNKNOWN";
    const std::pair<std::string, std::string> cases[] = {
        {"?status=successful", "❓ Unknown status: successful\n[UPI UNKNOWN"},
        {"?status=success&status", none},
        {"?status=failure&status&tr=T1",
         "✅ Assuming success based on transaction ID: T1\n[UPI SUCCESS"},
        {"", none},
    };
    openScreen();
    for (const auto& [query, routing] : cases) {
        EXPECT_EQ(decide("shopreturn://back/p" + query), Policy::cancel);
        EXPECT_THAT(take(), HasSubstr("| " + routing + "] 🚀 Handling"));
        scheduler.settle();
    }
}

TEST_F(AppReturnTest, EachOutcomeOfAUPIAppGoesItsOwnWayToTheHost) {
    const std::pair<std::string, const char*> cases[] = {
        // a query, the transcript from its data on
        {"status=SUCCESS&tr=T1&transactionId=T2", R"(
[UPI RETURN] 📊 Transaction data: ["status": "SUCCESS", "tr": "T1", "transactionId": "T2"] | 📋 Query items count: 3
  | 📊 Status found: SUCCESS | ✅ Payment successful
[UPI SUCCESS] 🚀 Handling UPI success callback! | 📊 Success data: ["status": "SUCCESS", "tr": "T1", "transactionId": "T2"]
  | ✅ Order token available | 🔍 Making transaction enquiry for: T1
  | 📊 All transaction data: ["status": "SUCCESS", "tr": "T1", "transactionId": "T2"]
call getTransactionEnquiry(TOKEN, order-7, order-7, T1)
(background) [UPI SUCCESS] ✅ Transaction enquiry successful | 📊 Response: ["tr": "T1"]
(turn 1) [UPI SUCCESS] 📞 Calling delegate success method
success ["tr": "T1"]
)"},
        {"status=Failure&tr=T1&reason=R&message=M", R"(
[UPI RETURN] 📊 Transaction data: ["message": "M", "reason": "R", "status": "Failure", "tr": "T1"] | 📋 Query items count: 4
  | 📊 Status found: Failure | ❌ Payment failed
[UPI FAILURE] 🚀 Handling UPI failure callback! | 📊 Failure data: ["message": "M", "reason": "R", "status": "Failure", "tr": "T1"]
  | ❌ Payment failed: R
(turn 1) [UPI FAILURE] 📞 Calling delegate failure method
(turn 2) failure ["error": "R", "order_id": "order-7", "subMerchantId": "sub-3", "token": "TOKEN", "transaction_id": "T1", "zorvik_order_id": "order-7", "zorvik_transaction_id": "T1"]
(background) event PAYMENT_STATUS ["error_reason": "R", "status": "failed", "transactionId": "T1", "upi_data": ["message": "M", "reason": "R", "status": "Failure", "tr": "T1"]]
)"},
        {"status=Cancelled&txnId=T2&reason=R", R"(
[UPI RETURN] 📊 Transaction data: ["reason": "R", "status": "Cancelled", "txnId": "T2"] | 📋 Query items count: 3
  | 📊 Status found: Cancelled | ⏹️ Payment cancelled
[UPI CANCELLATION] 🚀 Handling UPI cancellation callback! | 📊 Cancellation data: ["reason": "R", "status": "Cancelled", "txnId": "T2"]
  | ⏹️ Payment cancelled by user
(turn 1) [UPI CANCELLATION] 📞 Calling delegate failure method
(turn 2) failure ["error": "Payment cancelled by user", "order_id": "order-7", "subMerchantId": "sub-3", "token": "TOKEN", "transaction_id": "T2", "zorvik_order_id": "order-7", "zorvik_transaction_id": "T2"]
(background) event PAYMENT_STATUS ["error_reason": "Payment cancelled by user", "status": "cancelled", "transactionId": "T2", "upi_data": ["reason": "R", "status": "Cancelled", "txnId": "T2"]]
)"},
        {"tr=T1", R"(
[UPI RETURN] 📊 Transaction data: ["tr": "T1"] | 📋 Query items count: 1 | ⚠️ No status parameter found in URL
  | ✅ Assuming success based on transaction ID: T1
[UPI SUCCESS] 🚀 Handling UPI success callback! | 📊 Success data: ["tr": "T1"] | ✅ Order token available
  | 🔍 Making transaction enquiry for: T1 | 📊 All transaction data: ["tr": "T1"]
call getTransactionEnquiry(TOKEN, order-7, order-7, T1)
(background) [UPI SUCCESS] ❌ Transaction enquiry failed: no line
(turn 1) [UPI SUCCESS] 📞 Calling delegate failure method
(turn 2) failure ["error": "Transaction enquiry failed", "order_id": "order-7", "subMerchantId": "sub-3", "token": "TOKEN", "zorvik_order_id": "order-7"]
)"},
    };
    core.enquiryAnswer = TransactionEnquiryResponse{Order{"FAILED"}, {{"tr", "T1"}}};
    openScreen();
    for (const auto& [query, transcript] : cases) {
        if (query == "tr=T1") core.enquiryAnswer = someError("no line");
        decide("shopreturn://back?" + query);
        EXPECT_TRUE(leadsTo("[UPI RETURN] 📊 Transaction data", transcript));
    }
    screen()->setOptions({});
    decide("shopreturn://back?status=success&tr=T3");
    EXPECT_EQ(last(), "[UPI SUCCESS] ❌ No order token available");
}

TEST_F(AppReturnTest, AnActivationIsReadAloudAndTakesTheWayOfItsKind) {
    core.enquiryAnswer = TransactionEnquiryResponse{Order{"PENDING \"'\\"}, {}};
    openScreen();
    comeBackAfter(0);
    EXPECT_TRUE(leadsTo("", R"(
(turn 1) [APP STATE] 🚀 App became active - user returned from UPI app!
  | 📊 Current WebView URL: https://pay.example/checkout?token=TOKEN | 📱 App state change detected at: 2027-01-15 08:00:00 +0000
  | 📱 Stored transaction ID: nil | 📱 Stored package name: nil | 📱 Stored start time: nil
  | ⚠️ No stored transaction details found | 📊 This might be a normal app activation or first launch
)"));
    storeRecord();
    comeBackAfter(4.5);
    EXPECT_TRUE(leadsTo("[APP STATE] 📱 App state", R"(
[APP STATE] 📱 App state change detected at: 2027-01-15 08:00:04 +0000 | 📱 Stored transaction ID: T1
  | 📱 Stored package name: app.one | 📱 Stored start time: 2027-01-15 08:00:00 +0000
  | 🎯 UPI app was launched - checking return status... | 📱 UPI App Package: app.one | 🔢 Transaction ID: T1
  | ⏱️ Time since UPI app launch: 4.5 seconds | ⚠️ User returned quickly - likely cancelled or went back
  | 📊 Quick return detected (< 5 seconds) | 📱 This could be a UPI app return or user back navigation
  | ✅ Webview is still visible - treating as UPI app return
[UPI BACK] 🚀 User went back from UPI app - Android-style handling! | 📱 Using Android-style UPI intent back handling
[BACK HANDLER] 🚀 insertJSToWebview called | 📊 isDeviceBackPressed: false
(turn 2) [BACK HANDLER] 📱 Handling UPI intent back
[UPI BACK] 🚀 UPI intent back - Android-style handling | 📊 Order ID: order-7 | 📊 Transaction ID: T1
call getTransactionEnquiry(TOKEN, order-7, order-7, T1)
(background) [UPI BACK] ✅ Transaction enquiry successful
  | 📜 Executing JavaScript: window.postMessage('{\"transaction_enquiry_api_response\":\"PENDING \\"'\\\",\"upi_intent_back_response\":\"close\"}', '*');
(turn 4) script window.postMessage('{\"transaction_enquiry_api_response\":\"PENDING \\"'\\\",\"upi_intent_back_response\":\"close\"}', '*');
(turn 5) [UPI BACK] ✅ JavaScript executed successfully
)"));
    comeBackAfter(5);
    EXPECT_TRUE(leadsTo("[APP STATE] ⏱️", R"(
[APP STATE] ⏱️ Time since UPI app launch: 5.0 seconds | ✅ User returned after some time - likely completed payment
  | 📊 Extended return detected (≥ 5 seconds) | 📱 This is most likely a completed UPI payment
)"));
    for (const double seconds : {-60.0, 4.99}) {
        comeBackAfter(seconds);
        run();
        EXPECT_THAT(seen("script"), SizeIs(1)) << "as quick as any";
        forget();
    }
    screen()->setShownByStage(false);
    comeBackAfter(1);
    run();
    EXPECT_EQ(last(), "[APP STATE] ⚠️ Webview is not visible - might be user back navigation");
    EXPECT_THAT(port.defaults().entries(), SizeIs(3)) << "the record stays";
}

TEST_F(AppReturnTest, APartialRecordOrAStartTimeOfAnotherTypeIsNone) {
    const std::pair<const char*, DefaultsValue> cases[] = {
        {"current_transaction_id", Date{now}}, {"current_package_name", Date{now}},
        {"transaction_start_time", Date{now}}, {"a number", now},
        {"a text", description(Date{now})},
    };
    openScreen(optionsOf(std::nullopt));  // which loads nothing
    for (const auto& [missing, startTime] : cases) {
        storeRecord(startTime);
        port.defaults().remove({missing});
        comeBackAfter(1);
        run();
        EXPECT_THAT(heard(), Contains("[APP STATE] 📊 Current WebView URL: nil"));
        EXPECT_THAT(heard(), Contains("[APP STATE] ⚠️ No stored transaction details found"))
            << missing;
        forget();
    }
}

TEST_F(AppReturnTest, AProcessingPagesResponseIsLookedForOnEveryPath) {
    const std::pair<std::string, std::string> cases[] = {
        {"Processing?response=1", "\n"},
        {"processing?response=%zz", R"(
[APP STATE] 🎯 Processing URL detected! | 📋 URL contains 'processing' - checking for payment response...
)"},
        {"a?x=processing&Response=1", R"(
[APP STATE] 🎯 Processing URL detected! | 📋 URL contains 'processing' - checking for payment response...
  | 📊 Query parameters: [x=processing, Response=1] | ⚠️ No response parameter found in processing URL
  | 📋 This might be a processing page that will redirect to response URL | 🔄 Waiting for processing page to complete...
)"},
        {"processing?response&response=7", R"(
[APP STATE] 🎯 Processing URL detected! | 📋 URL contains 'processing' - checking for payment response...
  | 📊 Query parameters: [response, response=7] | 🎯 Found response parameter! | 📝 Response value: nil
[REDIRECT] 🚀 handleWebViewRespCheckUrl called! | 🔗 Processing URL: https://pay.example/processing?response&response=7
  | 📊 Available query items: [response, response=7] | ❌ No response parameter found
)"},
    };
    openScreen();
    for (const auto& [url, transcript] : cases) {
        page().replaceUrl("https://pay.example/" + url);
        for (const double seconds : {-1, 10, 2}) {  // without a record, extended, quick
            SCOPED_TRACE(url);
            if (seconds > 0) storeRecord();
            comeBackAfter(seconds);
            runTurn();
            EXPECT_TRUE(hasTranscript("[APP STATE] 🎯 Processing", transcript));
            run();
            EXPECT_EQ(seen("failure").size(), transcript.find("[REDIRECT]") < transcript.size());
            forget();
        }
        port.defaults().remove({"current_transaction_id"});
    }
}

}  // namespace
}  // namespace zorvik
