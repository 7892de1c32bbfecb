#include "platform/foundation/Data.h"
#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

using platform::base64Encode;

class UPIStatusTest : public CheckoutTest {
  protected:
    void returnWith(const std::string& query) { decide("shopreturn://back?" + query); }
};

struct FailureCase {
    std::string status;
    Dictionary more;
    std::string reported;
    std::string error;
    std::string transactionId;
};

TEST_F(UPIStatusTest, AFailureIsReportedTwoTurnsLaterWithSevenEntriesAndLoggedInTheBackground) {
    const FailureCase cases[] = {
        {"failure", {{"tr", "T1"}, {"reason", "R"}, {"message", "M"}}, "failed", "R", "T1"},
        {"Failure", {{"message", "M"}}, "failed", "M", ""},
        {"failure", {{"reason", ""}, {"message", "M"}}, "failed", "", ""},
        {"failure", {}, "failed", "Payment failed", ""},
        {"cancelled", {{"txnId", "T2"}}, "cancelled", "Payment cancelled by user", "T2"},
        {"failed", {{"message", "M"}}, "unknown", "Unknown payment status", ""},
    };
    openScreen();
    for (const auto& row : cases) {
        SCOPED_TRACE(row.error);
        outcome->failures.clear();
        std::string query = "status=" + row.status;
        for (const auto& [key, value] : row.more)
            query += '&' + key + '=' + *value.string();
        returnWith(query);
        EXPECT_EQ(turnsUntilReport(), 2);
        auto payload = failurePayload(row.error);
        payload["transaction_id"] = row.transactionId;
        payload["zorvik_transaction_id"] = row.transactionId;
        EXPECT_THAT(outcome->failures, ElementsAre(payload));
        EXPECT_THAT(core.events(), IsEmpty()) << "the report does not wait for the event";
        EXPECT_TRUE(scheduler.runOneBackgroundTask());
        auto data = row.more;
        data["status"] = row.status;
        const Dictionary event{{"transactionId", row.transactionId},
                               {"error_reason", row.error},
                               {"upi_data", data},
                               {"status", row.reported}};
        EXPECT_THAT(core.takeEvents(), ElementsAre("PAYMENT_STATUS " + description(event)));
    }
    EXPECT_THAT(core.takeCalls(), IsEmpty());
}

TEST_F(UPIStatusTest, ASuccessIsTheEnquirysWordOneTurnAfterItsAnswerAndItsFailureTwo) {
    core.holdsAnswers = true;
    const TransactionEnquiryResponse answer{Order{"FAILED"}, {{"tr", "T1"}}};  // for the host
    openScreen();
    for (const bool fails : {false, true}) {
        core.enquiryAnswer = answer;
        if (fails) core.enquiryAnswer = someError("no line");
        *outcome = {};
        returnWith("status=success&tr=T1&transactionId=T2");
        EXPECT_THAT(core.takeCalls(),
                    ElementsAre("getTransactionEnquiry(TOKEN, order-7, order-7, T1)"));
        scheduler.runUntilIdle();
        core.answerNext();
        EXPECT_EQ(turnsUntilReport(), fails ? 2 : 1);
        EXPECT_EQ(fails ? outcome->failures.at(0) : outcome->successes.at(0),
                  fails ? failurePayload("Transaction enquiry failed") : answer.toDictionary());
    }
    EXPECT_THAT(core.events(), IsEmpty());
    screen()->setOptions(optionsOf(std::nullopt));
    returnWith("status=success&tr=T1");
    EXPECT_EQ(lines.back(), "[UPI SUCCESS] ❌ No order token available");
    EXPECT_THAT(core.takeCalls(), IsEmpty());
}

TEST_F(UPIStatusTest, TheTransactionIdIsThatOfTheFirstKeyPresent) {
    openScreen();
    const auto expectId = [this](const std::string& query, const std::string& id) {
        returnWith("status=success&" + query);
        EXPECT_THAT(core.takeCalls(),
                    ElementsAre("getTransactionEnquiry(TOKEN, order-7, order-7, " + id + ")"));
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
        EXPECT_THAT(core.takeCalls(),
                    ElementsAre("getTransactionEnquiry(" + row.token + ", " + row.enquiryOrderId +
                                ", " + row.enquiryOrderId + ", )"));
        runAll();
        EXPECT_EQ(outcome->failures.back().at("order_id"), Value(row.payloadOrderId));
    }
}

TEST_F(UPIStatusTest, AScreenReleasedBeforeTheSecondTurnReportsNothing) {
    auto alone = loadUnshownScreen();
    returnWith("status=cancelled");
    alone.reset();
    EXPECT_TRUE(screen()) << "the first task holds it";
    EXPECT_TRUE(scheduler.runOneTurn());
    EXPECT_FALSE(screen());
    EXPECT_EQ(lines.back(), "[UPI CANCELLATION] 📞 Calling delegate failure method");
    runAll();
    EXPECT_EQ(outcome->count(), 0u);
    EXPECT_THAT(core.events(), IsEmpty()) << "the event task holds it weakly";
}

TEST_F(UPIStatusTest, AnEnquiryUnderWayHoldsTheScreenUntilItsAnswerAndNoLonger) {
    core.holdsAnswers = true;
    auto alone = loadUnshownScreen();
    returnWith("status=success");
    alone.reset();
    runAll();
    EXPECT_TRUE(screen());
    core.answerNext();
    EXPECT_FALSE(screen());
    scheduler.runUntilIdle();
    EXPECT_EQ(outcome->count(), 0u);
    EXPECT_THAT(port.web().pages(), IsEmpty());
}

}  // namespace
}  // namespace zorvik
