#include "platform/foundation/Data.h"
#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

using platform::base64Encode;

class UPIStatusTest : public CheckoutTest {
  protected:
    void returnWith(const std::string& query) { decide("shopreturn://back?" + query); }
};

struct OutcomeCase {
    std::string query;
    const char* transcript;  // from the data on
};

TEST_F(UPIStatusTest, EachOutcomeOfAUPIAppGoesItsOwnWayToTheHost) {
    const OutcomeCase cases[] = {
        {"status=success&tr=T1&transactionId=T2", R"(
[UPI RETURN] 📊 Transaction data: ["status": "success", "tr": "T1", "transactionId": "T2"]
[UPI RETURN] 📋 Query items count: 3
[UPI RETURN] 📊 Status found: success
[UPI RETURN] ✅ Payment successful
[UPI SUCCESS] 🚀 Handling UPI success callback!
[UPI SUCCESS] 📊 Success data: ["status": "success", "tr": "T1", "transactionId": "T2"]
[UPI SUCCESS] ✅ Order token available
[UPI SUCCESS] 🔍 Making transaction enquiry for: T1
[UPI SUCCESS] 📊 All transaction data: ["status": "success", "tr": "T1", "transactionId": "T2"]
call getTransactionEnquiry(TOKEN, order-7, order-7, T1)
-- background
[UPI SUCCESS] ✅ Transaction enquiry successful
[UPI SUCCESS] 📊 Response: ["tr": "T1"]
-- turn 1
[UPI SUCCESS] 📞 Calling delegate success method
success ["tr": "T1"]
)"},
        {"status=failure&tr=T1&reason=R&message=M", R"(
[UPI RETURN] 📊 Transaction data: ["message": "M", "reason": "R", "status": "failure", "tr": "T1"]
[UPI RETURN] 📋 Query items count: 4
[UPI RETURN] 📊 Status found: failure
[UPI RETURN] ❌ Payment failed
[UPI FAILURE] 🚀 Handling UPI failure callback!
[UPI FAILURE] 📊 Failure data: ["message": "M", "reason": "R", "status": "failure", "tr": "T1"]
[UPI FAILURE] ❌ Payment failed: R
-- turn 1
[UPI FAILURE] 📞 Calling delegate failure method
-- turn 2
failure ["error": "R", "order_id": "order-7", "subMerchantId": "sub-3", "token": "TOKEN", "transaction_id": "T1", "zorvik_order_id": "order-7", "zorvik_transaction_id": "T1"]
-- background
event PAYMENT_STATUS ["error_reason": "R", "status": "failed", "transactionId": "T1", "upi_data": ["message": "M", "reason": "R", "status": "failure", "tr": "T1"]]
)"},
        {"status=cancelled&txnId=T2&reason=R", R"(
[UPI RETURN] 📊 Transaction data: ["reason": "R", "status": "cancelled", "txnId": "T2"]
[UPI RETURN] 📋 Query items count: 3
[UPI RETURN] 📊 Status found: cancelled
[UPI RETURN] ⏹️ Payment cancelled
[UPI CANCELLATION] 🚀 Handling UPI cancellation callback!
[UPI CANCELLATION] 📊 Cancellation data: ["reason": "R", "status": "cancelled", "txnId": "T2"]
[UPI CANCELLATION] ⏹️ Payment cancelled by user
-- turn 1
[UPI CANCELLATION] 📞 Calling delegate failure method
-- turn 2
failure ["error": "Payment cancelled by user", "order_id": "order-7", "subMerchantId": "sub-3", "token": "TOKEN", "transaction_id": "T2", "zorvik_order_id": "order-7", "zorvik_transaction_id": "T2"]
-- background
event PAYMENT_STATUS ["error_reason": "Payment cancelled by user", "status": "cancelled", "transactionId": "T2", "upi_data": ["reason": "R", "status": "cancelled", "txnId": "T2"]]
)"},
        {"status=failed&message=M", R"(
[UPI RETURN] 📊 Transaction data: ["message": "M", "status": "failed"]
[UPI RETURN] 📋 Query items count: 2
[UPI RETURN] 📊 Status found: failed
[UPI RETURN] ❓ Unknown status: failed
[UPI UNKNOWN] 🚀 Handling UPI unknown status callback!
[UPI UNKNOWN] 📊 Unknown data: ["message": "M", "status": "failed"]
[UPI UNKNOWN] ❓ Unknown payment status
-- turn 1
[UPI UNKNOWN] 📞 Calling delegate failure method
-- turn 2
failure ["error": "Unknown payment status", "order_id": "order-7", "subMerchantId": "sub-3", "token": "TOKEN", "transaction_id": "", "zorvik_order_id": "order-7", "zorvik_transaction_id": ""]
-- background
event PAYMENT_STATUS ["error_reason": "Unknown payment status", "status": "unknown", "transactionId": "", "upi_data": ["message": "M", "status": "failed"]]
)"},
        {"tr=T1", R"(
[UPI RETURN] 📊 Transaction data: ["tr": "T1"]
[UPI RETURN] 📋 Query items count: 1
[UPI RETURN] ⚠️ No status parameter found in URL
[UPI RETURN] ✅ Assuming success based on transaction ID: T1
[UPI SUCCESS] 🚀 Handling UPI success callback!
[UPI SUCCESS] 📊 Success data: ["tr": "T1"]
[UPI SUCCESS] ✅ Order token available
[UPI SUCCESS] 🔍 Making transaction enquiry for: T1
[UPI SUCCESS] 📊 All transaction data: ["tr": "T1"]
call getTransactionEnquiry(TOKEN, order-7, order-7, T1)
-- background
[UPI SUCCESS] ❌ Transaction enquiry failed: no line
-- turn 1
[UPI SUCCESS] 📞 Calling delegate failure method
-- turn 2
failure ["error": "Transaction enquiry failed", "order_id": "order-7", "subMerchantId": "sub-3", "token": "TOKEN", "zorvik_order_id": "order-7"]
)"},
        {"tr=", R"(
[UPI RETURN] 📊 Transaction data: ["tr": ""]
[UPI RETURN] 📋 Query items count: 1
[UPI RETURN] ⚠️ No status parameter found in URL
[UPI RETURN] ❌ No status found in URL
[UPI UNKNOWN] 🚀 Handling UPI unknown status callback!
[UPI UNKNOWN] 📊 Unknown data: ["tr": ""]
[UPI UNKNOWN] ❓ Unknown payment status
-- turn 1
[UPI UNKNOWN] 📞 Calling delegate failure method
-- turn 2
failure ["error": "Unknown payment status", "order_id": "order-7", "subMerchantId": "sub-3", "token": "TOKEN", "transaction_id": "", "zorvik_order_id": "order-7", "zorvik_transaction_id": ""]
-- background
event PAYMENT_STATUS ["error_reason": "Unknown payment status", "status": "unknown", "transactionId": "", "upi_data": ["tr": ""]]
)"},
        {"", R"(
[UPI RETURN] 📊 Transaction data: [:]
[UPI RETURN] 📋 Query items count: 0
[UPI RETURN] ⚠️ No status parameter found in URL
[UPI RETURN] ❌ No status found in URL
[UPI UNKNOWN] 🚀 Handling UPI unknown status callback!
[UPI UNKNOWN] 📊 Unknown data: [:]
[UPI UNKNOWN] ❓ Unknown payment status
-- turn 1
[UPI UNKNOWN] 📞 Calling delegate failure method
-- turn 2
failure ["error": "Unknown payment status", "order_id": "order-7", "subMerchantId": "sub-3", "token": "TOKEN", "transaction_id": "", "zorvik_order_id": "order-7", "zorvik_transaction_id": ""]
-- background
event PAYMENT_STATUS ["error_reason": "Unknown payment status", "status": "unknown", "transactionId": "", "upi_data": [:]]
)"},
    };
    core.enquiryAnswer = TransactionEnquiryResponse{Order{"FAILED"}, {{"tr", "T1"}}};
    openScreen();
    for (const auto& [query, transcript] : cases) {
        SCOPED_TRACE(query);
        if (query == "tr=T1") core.enquiryAnswer = someError("no line");
        returnWith(query);
        run();
        EXPECT_TRUE(hasTranscript(transcript, "[UPI RETURN] 📊 Transaction data"));
    }
    screen()->setOptions({});
    returnWith("status=success&tr=T3");
    EXPECT_EQ(core.transcript.entries("").back(), "[UPI SUCCESS] ❌ No order token available");
    EXPECT_EQ(scheduler.pendingCount() + scheduler.backgroundCount(), 0u);
}

TEST_F(UPIStatusTest, TheReasonOfAFailureIsTheAppsOwnIfItGivesOne) {
    openScreen();
    for (const auto& [more, reason] :
         {std::pair("reason=R&message=M", "R"), std::pair("message=M", "M"),
          std::pair("reason=&message=M", ""), std::pair("Reason=R", "Payment failed")}) {
        returnWith(std::string("status=Failure&") + more);
        run();
        EXPECT_THAT(seen("failure").back(),
                    StartsWith(R"(["error": ")" + std::string(reason) + '"'));
    }
}

TEST_F(UPIStatusTest, TheTransactionIdIsThatOfTheFirstKeyPresent) {
    openScreen();
    const auto expectId = [this](const std::string& query, const std::string& id) {
        returnWith("status=success&" + query);
        EXPECT_EQ(seen("call").back(),
                  "getTransactionEnquiry(TOKEN, order-7, order-7, " + id + ")");
    };
    expectId("TR=1&txnid=2", "");
    expectId("tr=&txnId=2", "");
    // From the last key to the first, each before the ones it must win over.
    std::string query;
    for (const std::string key :
         {"merchantTransactionId", "upiTransactionId", "pspTransactionId", "zorvikTransactionId",
          "transaction_id", "txn_id", "transactionId", "txnId", "tr"}) {
        query += key + "=id-" + key + "&";
        expectId(query, "id-" + key);
    }
}

struct EnquiryTokenCase {
    const char* name;
    std::string token;
    std::string enquiryOrderId;
    std::string payloadOrderId;
};

TEST_F(UPIStatusTest, TheEnquirysOrderIdIsReadByTheScreensOwnRule) {
    const std::string exact = base64Encode(R"({"order_id":"o"}  )");
    const std::string slash = R"({"order_id":"???"}   )";  // a "/" in its base64
    const EnquiryTokenCase cases[] = {
        {"no padding needed", "h." + exact + ".s", "o", "o"},
        {"padding there", "h." + base64Encode(R"({"order_id":"o1"})") + ".s", "o1", "o1"},
        {"padding missing", tokenOf(R"({"order_id":"o1"})"), "", "o1"},
        {"two segments", "h." + exact, "o", ""},
        {"four segments", "h." + exact + ".s.t", "o", ""},
        {"an empty segment first", ".h." + exact + ".s", "", "o"},
        {"an empty header", "." + exact + ".s", "o", ""},
        {"standard alphabet", "h." + base64Encode(slash) + ".s", "???", "???"},
        {"URL-safe alphabet", "h." + urlSafeBase64(slash) + ".s", "", ""},
        {"one segment", exact, "", ""},
        {"a number", "h." + base64Encode(R"({"order_id":12})") + ".s", "", ""},
    };
    core.enquiryAnswer = someError("no line");
    openScreen();
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        screen()->setOptions(optionsOf(row.token));
        returnWith("status=success");
        EXPECT_EQ(seen("call").back(), "getTransactionEnquiry(" + row.token + ", " +
                                           row.enquiryOrderId + ", " + row.enquiryOrderId + ", )");
        run();
        EXPECT_THAT(seen("failure").back(),
                    HasSubstr(R"("order_id": ")" + row.payloadOrderId + '"'));
    }
}

}  // namespace
}  // namespace zorvik
