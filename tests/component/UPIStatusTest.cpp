#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

class UPIStatusTest : public CheckoutTest {
  protected:
    void returnWith(const std::string& query) { decide("shopreturn://back?" + query); }
};

TEST_F(UPIStatusTest, EachOutcomeOfAUPIAppGoesItsOwnWayToTheHost) {
    const std::pair<std::string, const char*> cases[] = {
        // a query, the transcript from its data on
        {"status=success&tr=T1&transactionId=T2", R"(
[UPI RETURN] 📊 Transaction data: ["status": "success", "tr": "T1", "transactionId": "T2"] | 📋 Query items count: 3
  | 📊 Status found: success | ✅ Payment successful
[UPI SUCCESS] 🚀 Handling UPI success callback! | 📊 Success data: ["status": "success", "tr": "T1", "transactionId": "T2"]
  | ✅ Order token available | 🔍 Making transaction enquiry for: T1
  | 📊 All transaction data: ["status": "success", "tr": "T1", "transactionId": "T2"]
call getTransactionEnquiry(TOKEN, order-7, order-7, T1)
(background) [UPI SUCCESS] ✅ Transaction enquiry successful | 📊 Response: ["tr": "T1"]
(turn 1) [UPI SUCCESS] 📞 Calling delegate success method
success ["tr": "T1"]
)"},
        {"status=failure&tr=T1&reason=R&message=M", R"(
[UPI RETURN] 📊 Transaction data: ["message": "M", "reason": "R", "status": "failure", "tr": "T1"] | 📋 Query items count: 4
  | 📊 Status found: failure | ❌ Payment failed
[UPI FAILURE] 🚀 Handling UPI failure callback! | 📊 Failure data: ["message": "M", "reason": "R", "status": "failure", "tr": "T1"]
  | ❌ Payment failed: R
(turn 1) [UPI FAILURE] 📞 Calling delegate failure method
(turn 2) failure ["error": "R", "order_id": "order-7", "subMerchantId": "sub-3", "token": "TOKEN", "transaction_id": "T1", "zorvik_order_id": "order-7", "zorvik_transaction_id": "T1"]
(background) event PAYMENT_STATUS ["error_reason": "R", "status": "failed", "transactionId": "T1", "upi_data": ["message": "M", "reason": "R", "status": "failure", "tr": "T1"]]
)"},
        {"status=cancelled&txnId=T2&reason=R", R"(
[UPI RETURN] 📊 Transaction data: ["reason": "R", "status": "cancelled", "txnId": "T2"] | 📋 Query items count: 3
  | 📊 Status found: cancelled | ⏹️ Payment cancelled
[UPI CANCELLATION] 🚀 Handling UPI cancellation callback! | 📊 Cancellation data: ["reason": "R", "status": "cancelled", "txnId": "T2"]
  | ⏹️ Payment cancelled by user
(turn 1) [UPI CANCELLATION] 📞 Calling delegate failure method
(turn 2) failure ["error": "Payment cancelled by user", "order_id": "order-7", "subMerchantId": "sub-3", "token": "TOKEN", "transaction_id": "T2", "zorvik_order_id": "order-7", "zorvik_transaction_id": "T2"]
(background) event PAYMENT_STATUS ["error_reason": "Payment cancelled by user", "status": "cancelled", "transactionId": "T2", "upi_data": ["reason": "R", "status": "cancelled", "txnId": "T2"]]
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
        returnWith(query);
        EXPECT_TRUE(leadsTo("[UPI RETURN] 📊 Transaction data", transcript));
    }
    screen()->setOptions({});
    returnWith("status=success&tr=T3");
    EXPECT_EQ(last(), "[UPI SUCCESS] ❌ No order token available");
}

}  // namespace
}  // namespace zorvik
