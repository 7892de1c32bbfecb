#include <map>
#include <sstream>

#include "platform/foundation/Data.h"
#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

using platform::base64Encode;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class UPIStatusTest : public CheckoutTest {
  protected:
    void returnWith(const std::string& query) { decide("shopreturn://back?" + query); }
    Lines linesOf(const std::string& tag) {
        Lines found;
        for (const auto& line : takeLines()) {
            if (line.starts_with(tag)) found.push_back(line);
        }
        return found;
    }
    static TransactionEnquiryResponse enquiryOf(const std::string& status) {
        return {Order{status}, {{"order", Dictionary{{"status", status}}}, {"tr", "T1"}}};
    }
};

struct FailureCase {
    std::string query;
    std::string status;
    std::string error;
    std::string transactionId;
};

struct FailureLines {
    std::string tag;
    std::string start;
    std::string data;
    std::string outcome;
};

const std::map<std::string, FailureLines> failureLines{
    {"failed",
     {"[UPI FAILURE]", " 🚀 Handling UPI failure callback!",
      " 📊 Failure data: ", " ❌ Payment failed: "}},
    {"cancelled",
     {"[UPI CANCELLATION]", " 🚀 Handling UPI cancellation callback!",
      " 📊 Cancellation data: ", " ⏹️ Payment cancelled by user"}},
    {"unknown",
     {"[UPI UNKNOWN]", " 🚀 Handling UPI unknown status callback!",
      " 📊 Unknown data: ", " ❓ Unknown payment status"}},
};

Dictionary itemsOf(const std::string& query) {
    Dictionary items;
    std::istringstream stream(query);
    for (std::string item; std::getline(stream, item, '&');) {
        items[item.substr(0, item.find('='))] = item.substr(item.find('=') + 1);
    }
    return items;
}

TEST_F(UPIStatusTest, AFailureIsReportedTwoTurnsLaterWithSevenEntriesAndLoggedInTheBackground) {
    const FailureCase cases[] = {
        {"status=failure&tr=T1&reason=R&message=M", "failed", "R", "T1"},
        {"status=Failure&message=M", "failed", "M", ""},
        {"status=failure&reason=&message=M", "failed", "", ""},
        {"status=failure", "failed", "Payment failed", ""},
        {"status=cancelled&reason=R&txnId=T2", "cancelled", "Payment cancelled by user", "T2"},
        {"status=failed&message=M", "unknown", "Unknown payment status", ""},
    };
    openScreen();
    for (const auto& row : cases) {
        SCOPED_TRACE(row.query);
        const auto& [tag, start, dataLine, outcomeLine] = failureLines.at(row.status);
        const auto data = itemsOf(row.query);
        outcome->failures.clear();
        takeLines();
        returnWith(row.query);
        EXPECT_THAT(linesOf(tag),
                    ElementsAre(tag + start, tag + dataLine + description(data),
                                tag + outcomeLine + (row.status == "failed" ? row.error : "")));
        EXPECT_TRUE(scheduler.runOneTurn());
        EXPECT_THAT(takeLines(), ElementsAre(tag + " 📞 Calling delegate failure method"));
        EXPECT_EQ(outcome->count(), 0u);
        EXPECT_TRUE(scheduler.runOneTurn());
        auto payload = failurePayload(row.error);
        payload["transaction_id"] = row.transactionId;
        payload["zorvik_transaction_id"] = row.transactionId;
        EXPECT_THAT(outcome->failures, ElementsAre(payload));
        EXPECT_THAT(core.events(), IsEmpty()) << "the report does not wait for the event";
        EXPECT_TRUE(scheduler.runOneBackgroundTask());
        const Dictionary event{{"transactionId", row.transactionId},
                               {"error_reason", row.error},
                               {"upi_data", data},
                               {"status", row.status}};
        EXPECT_THAT(core.takeEvents(), ElementsAre("PAYMENT_STATUS " + description(event)));
    }
    EXPECT_THAT(core.takeCalls(), IsEmpty());
    EXPECT_EQ(outcome->successes.size(), 0u);
}

TEST_F(UPIStatusTest, ASuccessIsTheEnquirysWordOneTurnAfterItsAnswer) {
    core.holdsAnswers = true;
    core.enquiryAnswer = enquiryOf("FAILED");  // for the host to read
    openScreen();
    returnWith("status=success&tr=T1&transactionId=T2");
    EXPECT_THAT(core.takeCalls(),
                ElementsAre("getTransactionEnquiry(TOKEN, order-7, order-7, T1)"));
    const std::string data = R"(["status": "success", "tr": "T1", "transactionId": "T2"])";
    EXPECT_THAT(linesOf("[UPI SUCCESS]"),
                ElementsAre("[UPI SUCCESS] 🚀 Handling UPI success callback!",
                            "[UPI SUCCESS] 📊 Success data: " + data,
                            "[UPI SUCCESS] ✅ Order token available",
                            "[UPI SUCCESS] 🔍 Making transaction enquiry for: T1",
                            "[UPI SUCCESS] 📊 All transaction data: " + data));
    scheduler.runUntilIdle();
    EXPECT_TRUE(core.answerNextOnAThread());
    const auto answered = takeLines();
    ASSERT_EQ(answered.size(), 2u);
    EXPECT_EQ(answered[0], "[UPI SUCCESS] ✅ Transaction enquiry successful");
    EXPECT_TRUE(answered[1].starts_with("[UPI SUCCESS] 📊 Response: ")) << answered[1];
    EXPECT_EQ(turnsUntilReport(), 1);
    EXPECT_THAT(takeLines(), ElementsAre("[UPI SUCCESS] 📞 Calling delegate success method"));
    EXPECT_THAT(outcome->successes, ElementsAre(enquiryOf("FAILED").toDictionary()));
    EXPECT_THAT(core.events(), IsEmpty());
}

TEST_F(UPIStatusTest, AFailedEnquiryIsReportedTwoTurnsAfterItsAnswerWithFiveEntries) {
    core.holdsAnswers = true;
    core.enquiryAnswer = someError("no line");
    openScreen();
    returnWith("status=success&tr=T1");
    takeLines();
    EXPECT_TRUE(core.answerNextOnAThread());
    EXPECT_THAT(takeLines(), ElementsAre("[UPI SUCCESS] ❌ Transaction enquiry failed: no line"));
    EXPECT_EQ(turnsUntilReport(), 2);
    EXPECT_THAT(takeLines(), ElementsAre("[UPI SUCCESS] 📞 Calling delegate failure method"));
    EXPECT_THAT(outcome->failures, ElementsAre(failurePayload("Transaction enquiry failed")));
    EXPECT_THAT(core.events(), IsEmpty());
}

TEST_F(UPIStatusTest, ASuccessWithoutATokenIsDropped) {
    openScreen();
    screen()->setOptions(optionsOf(std::nullopt));
    returnWith("status=success&tr=T1");
    EXPECT_EQ(lines.back(), "[UPI SUCCESS] ❌ No order token available");
    runAll();
    EXPECT_THAT(core.takeCalls(), IsEmpty());
    EXPECT_EQ(outcome->count(), 0u);
}

struct LookupCase {
    std::string query;
    std::string transactionId;
};

TEST_F(UPIStatusTest, TheTransactionIdIsThatOfTheFirstKeyPresent) {
    // Each row holds the keys from its own on, in reverse, so that only the order decides.
    const std::vector<std::string> keys{"tr",
                                        "txnId",
                                        "transactionId",
                                        "txn_id",
                                        "transaction_id",
                                        "zorvikTransactionId",
                                        "pspTransactionId",
                                        "upiTransactionId",
                                        "merchantTransactionId"};
    std::vector<LookupCase> cases{{"", ""}, {"TR=1&txnid=2", ""}, {"tr=&txnId=2", ""}};
    std::string query;
    for (auto key = keys.rbegin(); key != keys.rend(); ++key) {
        query += *key + "=id-" + *key + "&";
        cases.push_back({query, "id-" + *key});
    }
    openScreen();
    for (const auto& row : cases) {
        returnWith("status=success&" + row.query);
        EXPECT_THAT(core.takeCalls(),
                    ElementsAre("getTransactionEnquiry(TOKEN, order-7, order-7, " +
                                row.transactionId + ")"));
    }
}

struct EnquiryTokenCase {
    const char* name;
    std::string token;
    std::string enquiryOrderId;
    std::string payloadOrderId;
};

TEST_F(UPIStatusTest, TheEnquirysOrderIdIsReadByTheScreensOwnRule) {
    const std::string padded = base64Encode(R"({"order_id":"o1"})");
    const std::string exact = base64Encode(R"({"order_id":"o"}  )");
    const std::string plus = R"({"order_id":">>>"}   )";  // a "+" in its base64
    const std::string slash = R"({"order_id":"???"}   )";
    const EnquiryTokenCase cases[] = {
        {"no padding needed", "h." + exact + ".s", "o", "o"},
        {"padding there", "h." + padded + ".s", "o1", "o1"},
        {"padding missing", tokenOf(R"({"order_id":"o1"})"), "", "o1"},
        {"two segments", "h." + exact, "o", ""},
        {"four segments", "h." + exact + ".s.t", "o", ""},
        {"an empty segment first", ".h." + exact + ".s", "", "o"},
        {"an empty header", "." + exact + ".s", "o", ""},
        {"two dots in a row", "h.." + exact + ".s", "", "o"},
        {"standard alphabet", "h." + base64Encode(plus) + ".s", ">>>", ">>>"},
        {"URL-safe for +", "h." + urlSafeBase64(plus) + ".s", "", ""},
        {"URL-safe for /", "h." + urlSafeBase64(slash) + ".s", "", ""},
        {"one segment", exact, "", ""},
        {"empty", "", "", ""},
        {"a number", "h." + base64Encode(R"({"order_id":12})") + ".s", "", ""},
        {"a fragment", "h." + base64Encode(R"("order_id" )") + ".s", "", ""},
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
    lines.clear();
    alone.reset();
    EXPECT_TRUE(screen()) << "the first task holds it";
    EXPECT_TRUE(scheduler.runOneTurn());
    EXPECT_FALSE(screen());
    EXPECT_THAT(lines, ElementsAre("[UPI CANCELLATION] 📞 Calling delegate failure method"));
    runAll();
    EXPECT_EQ(outcome->count(), 0u);
    EXPECT_THAT(core.events(), IsEmpty()) << "the event task holds it weakly";
}

TEST_F(UPIStatusTest, AnEnquiryUnderWayHoldsTheScreenUntilItsAnswerAndNoLonger) {
    core.holdsAnswers = true;
    openScreen();
    returnWith("status=success");
    presenter->dismiss(true);
    runAll();
    EXPECT_TRUE(screen());
    EXPECT_TRUE(core.answerNextOnAThread());
    EXPECT_FALSE(screen());
    scheduler.runUntilIdle();
    EXPECT_EQ(outcome->count(), 0u);
    EXPECT_THAT(port.web().pages(), IsEmpty());
}

TEST_F(UPIStatusTest, WithoutADelegateTheLinesArePrintedAndNothingIsReported) {
    openScreen();
    screen()->setDelegate({});
    for (const char* status : {"success", "failure"}) {
        returnWith(std::string("status=") + status);
        runAll();
        EXPECT_THAT(takeLines(), Contains(testing::HasSubstr("📞 Calling delegate ")));
    }
    EXPECT_EQ(outcome->count(), 0u);
}

}  // namespace
}  // namespace zorvik
