#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

class AppReturnTest : public CheckoutTest {};

TEST_F(AppReturnTest, AReturnUrlIsReadAloudFromItsPartsToItsOutcome) {
    openScreen();
    EXPECT_EQ(decide("shopreturn://back/p?a=1&b&a=2&b=%C3%A9+&c=3&c&status=x"), Policy::cancel);
    EXPECT_TRUE(hasTranscript(R"(
[URL INTERCEPT] 🔍 Intercepted URL: shopreturn://back/p?a=1&b&a=2&b=%C3%A9+&c=3&c&status=x
[URL INTERCEPT] 📋 URL type: String
[URL INTERCEPT] 📊 URL length: 54
call isUPIAppReturnURL(shopreturn://back/p?a=1&b&a=2&b=%C3%A9+&c=3&c&status=x)
[UPI RETURN] 🔍 isUPIAppReturnURL called for URL: shopreturn://back/p?a=1&b&a=2&b=%C3%A9+&c=3&c&status=x
[UPI RETURN] 📊 isUPIAppReturnURL result: true
call isUPIAppReturnURL(shopreturn://back/p?a=1&b&a=2&b=%C3%A9+&c=3&c&status=x)
[UPI SCHEME] 🔍 Checking URL scheme: shopreturn://back/p?a=1&b&a=2&b=%C3%A9+&c=3&c&status=x
[UPI SCHEME] 📊 Is UPI return by scheme: true
[UPI RETURN] 🔍 isUPIAppReturnByScheme called for URL: shopreturn://back/p?a=1&b&a=2&b=%C3%A9+&c=3&c&status=x
[UPI RETURN] 📊 isUPIAppReturnByScheme result: true
[UPI RETURN] 🎯 Detected UPI app return URL!
[UPI RETURN] 🔗 UPI return URL: shopreturn://back/p?a=1&b&a=2&b=%C3%A9+&c=3&c&status=x
[UPI RETURN] 🚀 User returned from UPI app!
[UPI RETURN] 🔗 Return URL: shopreturn://back/p?a=1&b&a=2&b=%C3%A9+&c=3&c&status=x
[UPI RETURN] 📱 Return detected at: 2027-01-15 08:00:00 +0000
[UPI RETURN] ✅ URL components parsed successfully
[UPI RETURN] 🔍 URL scheme: shopreturn
[UPI RETURN] 🔍 URL host: back
[UPI RETURN] 🔍 URL path: /p
[UPI RETURN] 📋 Query param: a = 1
[UPI RETURN] 📋 Query param: b = nil
[UPI RETURN] 📋 Query param: a = 2
[UPI RETURN] 📋 Query param: b = é+
[UPI RETURN] 📋 Query param: c = 3
[UPI RETURN] 📋 Query param: c = nil
[UPI RETURN] 📋 Query param: status = x
[UPI RETURN] 📊 Transaction data: ["a": "2", "b": "é+", "status": "x"]
[UPI RETURN] 📋 Query items count: 7
[UPI RETURN] 📊 Status found: x
[UPI RETURN] ❓ Unknown status: x
[UPI UNKNOWN] 🚀 Handling UPI unknown status callback!
[UPI UNKNOWN] 📊 Unknown data: ["a": "2", "b": "é+", "status": "x"]
[UPI UNKNOWN] ❓ Unknown payment status
)"));
    decide("shopreturn://?status=success&x=%zz");
    EXPECT_EQ(core.transcript.entries("").back(), "[UPI RETURN] ❌ Failed to parse URL components");
}

struct StatusCase {
    std::string query;
    std::string routing;  // the last line before the handler's own
    std::string handler;
};

TEST_F(AppReturnTest, AReturnUrlIsRoutedByTheLastStatusWordThatHasAValue) {
    const std::string none = "❌ No status found in URL";
    const StatusCase cases[] = {
        {"?status=SUCCESS", "✅ Payment successful", "SUCCESS"},
        {"?status=Failure", "❌ Payment failed", "FAILURE"},
        {"?status=Cancelled", "⏹️ Payment cancelled", "CANCELLATION"},
        {"?status=successful", "❓ Unknown status: successful", "UNKNOWN"},
        {"?status=", "❓ Unknown status: ", "UNKNOWN"},
        {"?status=failure&status=success", "✅ Payment successful", "SUCCESS"},
        {"?status=success&status", none, "UNKNOWN"},
        {"?status=failure&status&tr=T1", "✅ Assuming success based on transaction ID: T1",
         "SUCCESS"},
        {"?tr=T1&tr=T2", "✅ Assuming success based on transaction ID: T2", "SUCCESS"},
        {"?tr=T1&tr", none, "UNKNOWN"},
        {"?", none, "UNKNOWN"},
        {"?Status=success&transactionId=T1", none, "UNKNOWN"},
        {"?status=%73uccess#status=failure", "✅ Payment successful", "SUCCESS"},
    };
    openScreen();
    for (const auto& row : cases) {
        SCOPED_TRACE(row.query);
        EXPECT_EQ(decide("shopreturn://back/p" + row.query), Policy::cancel);
        EXPECT_THAT(take(), HasSubstr("[UPI RETURN] " + row.routing + "\n[UPI " + row.handler +
                                      "] 🚀 Handling"));
        scheduler.settle();
    }
}

struct ActivationCase {
    const char* name;
    double seconds;  // since the hand-off; 0: no record
    const char* transcript;
};

TEST_F(AppReturnTest, AnActivationIsReadAloudAndTakesTheWayOfItsKind) {
    const ActivationCase cases[] = {
        {"without a record", 0, R"(
-- turn 1
[APP STATE] 🚀 App became active - user returned from UPI app!
[APP STATE] 📊 Current WebView URL: https://pay.example/checkout?token=TOKEN
[APP STATE] 📱 App state change detected at: 2027-01-15 08:00:00 +0000
[APP STATE] 📱 Stored transaction ID: nil
[APP STATE] 📱 Stored package name: nil
[APP STATE] 📱 Stored start time: nil
[APP STATE] ⚠️ No stored transaction details found
[APP STATE] 📊 This might be a normal app activation or first launch
)"},
        {"quick", 4.5, R"(
-- turn 1
[APP STATE] 🚀 App became active - user returned from UPI app!
[APP STATE] 📊 Current WebView URL: https://pay.example/checkout?token=TOKEN
[APP STATE] 📱 App state change detected at: 2027-01-15 08:00:04 +0000
[APP STATE] 📱 Stored transaction ID: T1
[APP STATE] 📱 Stored package name: app.one
[APP STATE] 📱 Stored start time: 2027-01-15 08:00:00 +0000
[APP STATE] 🎯 UPI app was launched - checking return status...
[APP STATE] 📱 UPI App Package: app.one
[APP STATE] 🔢 Transaction ID: T1
[APP STATE] ⏱️ Time since UPI app launch: 4.5 seconds
[APP STATE] ⚠️ User returned quickly - likely cancelled or went back
[APP STATE] 📊 Quick return detected (< 5 seconds)
[APP STATE] 📱 This could be a UPI app return or user back navigation
[APP STATE] ✅ Webview is still visible - treating as UPI app return
[UPI BACK] 🚀 User went back from UPI app - Android-style handling!
[UPI BACK] 📱 Using Android-style UPI intent back handling
[BACK HANDLER] 🚀 insertJSToWebview called
[BACK HANDLER] 📊 isDeviceBackPressed: false
-- turn 2
[BACK HANDLER] 📱 Handling UPI intent back
[UPI BACK] 🚀 UPI intent back - Android-style handling
[UPI BACK] 📊 Order ID: order-7
[UPI BACK] 📊 Transaction ID: T1
call getTransactionEnquiry(TOKEN, order-7, order-7, T1)
-- background
[UPI BACK] ✅ Transaction enquiry successful
[UPI BACK] 📜 Executing JavaScript: window.postMessage('{\"transaction_enquiry_api_response\":\"PENDING \\"'\\\",\"upi_intent_back_response\":\"close\"}', '*');
-- turn 4
script window.postMessage('{\"transaction_enquiry_api_response\":\"PENDING \\"'\\\",\"upi_intent_back_response\":\"close\"}', '*');
-- turn 5
[UPI BACK] ✅ JavaScript executed successfully
)"},
        {"extended", 5, R"(
-- turn 1
[APP STATE] 🚀 App became active - user returned from UPI app!
[APP STATE] 📊 Current WebView URL: https://pay.example/checkout?token=TOKEN
[APP STATE] 📱 App state change detected at: 2027-01-15 08:00:05 +0000
[APP STATE] 📱 Stored transaction ID: T1
[APP STATE] 📱 Stored package name: app.one
[APP STATE] 📱 Stored start time: 2027-01-15 08:00:00 +0000
[APP STATE] 🎯 UPI app was launched - checking return status...
[APP STATE] 📱 UPI App Package: app.one
[APP STATE] 🔢 Transaction ID: T1
[APP STATE] ⏱️ Time since UPI app launch: 5.0 seconds
[APP STATE] ✅ User returned after some time - likely completed payment
[APP STATE] 📊 Extended return detected (≥ 5 seconds)
[APP STATE] 📱 This is most likely a completed UPI payment
)"},
    };
    core.enquiryAnswer = TransactionEnquiryResponse{Order{"PENDING \"'\\"}, {}};
    openScreen();
    for (const auto& [name, seconds, transcript] : cases) {
        SCOPED_TRACE(name);
        if (seconds > 0) storeRecord();
        comeBackAfter(seconds);
        run();
        EXPECT_TRUE(hasTranscript(transcript));
    }
    EXPECT_THAT(port.defaults().entries(), SizeIs(3)) << "the record stays";
}

TEST_F(AppReturnTest, FromFiveSecondsOnAReturnIsNoLongerAUPIIntentBack) {
    openScreen(optionsOf("abc"));
    storeRecord();
    for (const auto& [seconds, isQuick] :
         {std::pair(0.0, true), {4.99, true}, {86'400, false}, {-60, true}}) {
        comeBackAfter(seconds);
        run();
        EXPECT_THAT(seen("call"), SizeIs(isQuick ? 1 : 0)) << seconds;
        forget();
    }
    screen()->setShownByStage(false);
    comeBackAfter(1);
    run();
    EXPECT_EQ(core.transcript.entries("").back(),
              "[APP STATE] ⚠️ Webview is not visible - might be user back navigation");
}

TEST_F(AppReturnTest, APartialRecordOrAStartTimeOfAnotherTypeIsNone) {
    const std::pair<const char*, DefaultsValue> cases[] = {
        {"current_transaction_id", Date{now}}, {"current_package_name", Date{now}},
        {"transaction_start_time", Date{now}}, {"a number", now},
        {"a text", description(Date{now})},
    };
    openScreen();
    for (const auto& [missing, startTime] : cases) {
        SCOPED_TRACE(missing);
        storeRecord(startTime);
        port.defaults().remove(missing);
        comeBackAfter(1);
        run();
        EXPECT_THAT(take(),
                    HasSubstr("\n[APP STATE] ⚠️ No stored transaction details found\n"));
    }
}

struct ProcessingCase {
    std::string url;
    const char* transcript;  // of the look at the page; "": it is none of a payment's
    const char* report = "";
};

TEST_F(AppReturnTest, AProcessingPagesResponseIsLookedForOnEveryPath) {
    const ProcessingCase cases[] = {
        {"Processing?response=1", ""},
        {"processing?response=%zz", R"(
[APP STATE] 🎯 Processing URL detected!
[APP STATE] 📋 URL contains 'processing' - checking for payment response...
)"},
        {"a?x=processing&Response=1", R"(
[APP STATE] 🎯 Processing URL detected!
[APP STATE] 📋 URL contains 'processing' - checking for payment response...
[APP STATE] 📊 Query parameters: [x=processing, Response=1]
[APP STATE] ⚠️ No response parameter found in processing URL
[APP STATE] 📋 This might be a processing page that will redirect to response URL
[APP STATE] 🔄 Waiting for processing page to complete...
)"},
        {"processing?response=7", R"(
[APP STATE] 🎯 Processing URL detected!
[APP STATE] 📋 URL contains 'processing' - checking for payment response...
[APP STATE] 📊 Query parameters: [response=7]
[APP STATE] 🎯 Found response parameter!
[APP STATE] 📝 Response value: 7
[REDIRECT] 🚀 handleWebViewRespCheckUrl called!
[REDIRECT] 🔗 Processing URL: https://pay.example/processing?response=7
[REDIRECT] 📊 Available query items: [response=7]
[REDIRECT] ✅ Response parameter found: 7
[REDIRECT] 🚀 handleParsedResponse called with data: [:]
)", "success"},
        {"processing?response&response=7", R"(
[APP STATE] 🎯 Processing URL detected!
[APP STATE] 📋 URL contains 'processing' - checking for payment response...
[APP STATE] 📊 Query parameters: [response, response=7]
[APP STATE] 🎯 Found response parameter!
[APP STATE] 📝 Response value: nil
[REDIRECT] 🚀 handleWebViewRespCheckUrl called!
[REDIRECT] 🔗 Processing URL: https://pay.example/processing?response&response=7
[REDIRECT] 📊 Available query items: [response, response=7]
[REDIRECT] ❌ No response parameter found
)", "failure"},
    };
    openScreen();
    for (const auto& [url, transcript, report] : cases) {
        page().replaceUrl("https://pay.example/" + url);
        for (const double seconds : {-1, 10, 2}) {  // without a record, extended, quick
            SCOPED_TRACE(url);
            if (seconds > 0) storeRecord();
            comeBackAfter(seconds);
            runTurn();
            EXPECT_TRUE(hasTranscript(transcript, "[APP STATE] 🎯 Processing"));
            run();
            EXPECT_THAT(seen("success"), SizeIs(report == std::string("success") ? 1 : 0));
            EXPECT_THAT(seen("failure"), SizeIs(report == std::string("failure") ? 1 : 0));
            forget();
        }
        port.defaults().remove("current_transaction_id");
    }
}

}  // namespace
}  // namespace zorvik
