#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

class UPILaunchTest : public CheckoutTest {
  protected:
    UPILaunchTest() {
        port.application().install("upi");
        port.application().install("stubborn", false);
    }
    void requestIntent(const std::string& url, const std::string& more = R"(,"tr":"T2")") {
        postIntent(stringBody(R"({"url":")" + url + R"(","package_name":"app.two")" + more + "}"));
    }
    const auto& record() { return port.defaults().entries(); }
};

TEST_F(UPILaunchTest, TheRecordIsWrittenOnceTheHandOffIsConfirmed) {
    using testing::Pair;
    openScreen();
    requestIntent("upi://pay?pa=shop@bank&am=1");
    runTurn();
    EXPECT_THAT(port.application().openedUrls(), ElementsAre("upi://pay?pa=shop@bank&am=1"));
    EXPECT_THAT(record(), IsEmpty());
    scheduler.setNow(now + 2);
    EXPECT_TRUE(leadsTo("", R"(
(turn 1) event UPI_INTENT_STARTED ["parameters": "{\"url\":\"upi://pay?pa=shop@bank&am=1\",\"package_name\":\"app.two\",\"tr\":\"T2\"}", "transactionId": "T2"]
[UPI LAUNCH] ✅ URL created successfully | 🔍 URL scheme: upi | 🔍 URL host: pay | 📱 Can open URL: true
  | ✅ UPI app is installed, launching...
(turn 2) [UPI LAUNCH] ✅ UPI app launched successfully! | 📱 App will go to background
[TRANSACTION STORE] 🚀 Storing transaction details for UPI app return tracking! | 📱 Package name: app.two | 🔢 Transaction ID: T2
  | 📱 Stored at: 2027-01-15 08:00:02 +0000 | ✅ Transaction details stored successfully | 📊 Ready to detect UPI app return
)"));
    EXPECT_THAT(record(),
                ElementsAre(Pair("current_package_name", DefaultsValue("app.two")),
                            Pair("current_transaction_id", DefaultsValue("T2")),
                            Pair("transaction_start_time", DefaultsValue(Date{now + 2}))));
    requestIntent("upi://pay?tr=9", "");  // no transaction id of its own
    run();
    EXPECT_EQ(record().at("current_transaction_id"), DefaultsValue(""));
}

TEST_F(UPILaunchTest, AnAppThatDoesNotOpenIsToldToThePageAndKeepsAnEarlierRecord) {
    openScreen();
    storeRecord();
    const auto earlier = record();
    requestIntent("pay");
    EXPECT_TRUE(leadsTo("[UPI LAUNCH]", R"(
[UPI LAUNCH] ✅ URL created successfully | 🔍 URL scheme: nil | 🔍 URL host: nil | 📱 Can open URL: false | ❌ UPI app not installed
[UPI RESPONSE] 🚀 sendUPIResponse method called! | 📊 Status: unregistered | 📝 Message: UPI app not installed
  | 📋 JSON String: {"sdk_transaction_enquiry_response":"UPI app not installed","sdk_upi_intent_response":"unregistered"}
  | 🔧 Escaped JSON: {\"sdk_transaction_enquiry_response\":\"UPI app not installed\",\"sdk_upi_intent_response\":\"unregistered\"}
  | 📜 JavaScript to execute: window.postMessage('{\"sdk_transaction_enquiry_response\":\"UPI app not installed\",\"sdk_upi_intent_response\":\"unregistered\"}', '*');
(turn 2) script window.postMessage('{\"sdk_transaction_enquiry_response\":\"UPI app not installed\",\"sdk_upi_intent_response\":\"unregistered\"}', '*');
(turn 3) [UPI RESPONSE] ✅ Response sent successfully: unregistered | ✅ JavaScript executed without errors
)"));
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"stubborn:pay", "[UPI LAUNCH] ❌ Failed to launch UPI app", "Failed to launch UPI app"},
        {"", R"(event EXCEPTION_THROWN ["error": "Invalid UPI URL"])", "Invalid UPI URL"},
        {"upi://pay?pn=two words", "event EXCEPTION", "Invalid UPI URL"},
        {"upi://pay?x=%zz", "event EXCEPTION", "Invalid UPI URL"},
    };
    for (const auto& [url, before, message] : cases) {
        requestIntent(url);
        run();
        EXPECT_THAT(
            seen("script"),
            ElementsAre(R"(window.postMessage('{\"sdk_transaction_enquiry_response\":\")" +
                        message + R"(\",\"sdk_upi_intent_response\":\"unavailable\"}', '*');)"));
        EXPECT_TRUE(take(before).starts_with('\n' + before));
    }
    EXPECT_EQ(record(), earlier);
    evaluation = someError("boom");
    requestIntent("pay");
    run();
    EXPECT_EQ(last(), "[UPI RESPONSE] ❌ Error sending response: boom");
    EXPECT_THAT(seen("script"), SizeIs(1)) << "not repeated";
}

}  // namespace
}  // namespace zorvik
