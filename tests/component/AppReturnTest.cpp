#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

class AppReturnTest : public CheckoutTest {};

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
        {"?status=Failed", "❓ Unknown status: Failed", "UNKNOWN"},
        {"?status=successful", "❓ Unknown status: successful", "UNKNOWN"},
        {"?status=", "❓ Unknown status: ", "UNKNOWN"},
        {"?status=failure&status=success", "✅ Payment successful", "SUCCESS"},
        {"?status=success&status", none, "UNKNOWN"},
        {"?status=failure&status&tr=T1", "✅ Assuming success based on transaction ID: T1",
         "SUCCESS"},
        {"?tr=T1&tr=T2", "✅ Assuming success based on transaction ID: T2", "SUCCESS"},
        {"?tr=T1&tr", none, "UNKNOWN"},
        {"?tr=", none, "UNKNOWN"},
        {"", none, "UNKNOWN"},
        {"?Status=success&transactionId=T1", none, "UNKNOWN"},
        {"?status=%73uccess#status=failure", "✅ Payment successful", "SUCCESS"},
    };
    openScreen();
    for (const auto& row : cases) {
        SCOPED_TRACE(row.query);
        takeLines();
        EXPECT_EQ(decide("shopreturn://back/p" + row.query), Policy::cancel);
        const auto routed = std::find(lines.begin(), lines.end(), "[UPI RETURN] " + row.routing);
        ASSERT_LT(routed, lines.end() - 1);
        EXPECT_THAT(*(routed + 1), StartsWith("[UPI " + row.handler + "] 🚀 Handling"));
        scheduler.settle();
    }
}

TEST_F(AppReturnTest, AReturnUrlsItemsAreAppliedInOrderAndCountedAsItems) {
    openScreen();
    decide("shopreturn://back/p?a=1&b&a=2&b=%C3%A9+&c=3&c&status=x");
    EXPECT_THAT(lines, Contains("[UPI RETURN] 📋 Query param: c = nil"));
    EXPECT_THAT(
        lines,
        Contains(R"([UPI RETURN] 📊 Transaction data: ["a": "2", "b": "é+", "status": "x"])"));
    EXPECT_THAT(lines, Contains("[UPI RETURN] 📋 Query items count: 7"));
    decide("shopreturn://back?status=success&x=%zz");
    EXPECT_EQ(lines.back(), "[UPI RETURN] ❌ Failed to parse URL components");
    EXPECT_THAT(core.takeCalls(), IsEmpty());
}

TEST_F(AppReturnTest, FromFiveSecondsOnAReturnIsNoLongerAUPIIntentBack) {
    const std::pair<double, bool> cases[] = {
        {0, true}, {4.9, true}, {5, false}, {86'400, false}, {-60, true}};
    openScreen(optionsOf("abc"));
    storeRecord();
    for (const auto& [seconds, isQuick] : cases) {
        SCOPED_TRACE(seconds);
        forget();
        comeBackAfter(seconds);
        EXPECT_EQ(lines.back(), isQuick
                                    ? "[BACK HANDLER] 📊 isDeviceBackPressed: false"
                                    : "[APP STATE] 📱 This is most likely a completed UPI payment");
        scheduler.settle();
        const Lines enquiry{"getTransactionEnquiry(abc, , , T1)"};
        EXPECT_EQ(core.takeCalls(), isQuick ? enquiry : Lines());
    }
    EXPECT_EQ(port.defaults().entries().size(), 3u) << "the record stays";
}

TEST_F(AppReturnTest, AQuickReturnToAScreenThatIsNotShownStartsNothing) {
    const auto alone = loadUnshownScreen();
    storeRecord();
    comeBackAfter(1);
    EXPECT_EQ(lines.back(),
              "[APP STATE] ⚠️ Webview is not visible - might be user back navigation");
    runAll();
    EXPECT_THAT(core.takeCalls(), IsEmpty());
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
        port.defaults().remove({missing});
        forget();
        comeBackAfter(1);
        ASSERT_EQ(lines.size(), 8u);
        EXPECT_EQ(lines[6], "[APP STATE] ⚠️ No stored transaction details found");
        scheduler.settle();
        EXPECT_THAT(core.takeCalls(), IsEmpty());
    }
    EXPECT_EQ(lines[5], "[APP STATE] 📱 Stored start time: nil");
}

struct ProcessingCase {
    std::string url;
    std::string line;  // the last one before a redirect's own
    std::string report;
};

TEST_F(AppReturnTest, AProcessingPagesResponseIsLookedForOnEveryPath) {
    const std::string waiting = "🔄 Waiting for processing page to complete...";
    const ProcessingCase cases[] = {
        {"Processing?response=1", "", ""},
        {"processing", waiting, ""},
        {"a?x=processing&Response=1", waiting, ""},
        {"processing?response=%zz",
         "📋 URL contains 'processing' - checking for payment response...", ""},
        {"processing?response=7", "📝 Response value: 7", "success"},
        {"processing?response&response=7", "📝 Response value: nil", "failure"},
    };
    openScreen();
    for (const auto& row : cases) {
        page().replaceUrl("https://pay.example/" + row.url);
        for (const double seconds : {-1, 10, 2}) {  // without a record, extended, quick
            SCOPED_TRACE(row.url);
            if (seconds > 0) storeRecord();
            takeLines();
            comeBackAfter(seconds);
            Lines printed;
            for (const auto& line : lines) {
                if (line.starts_with("[APP STATE]")) printed.push_back(line);
            }
            const bool isDetected =
                std::count(lines.begin(), lines.end(), "[APP STATE] 🎯 Processing URL detected!");
            EXPECT_EQ(isDetected, !row.line.empty());
            EXPECT_TRUE(!isDetected || printed.back() == "[APP STATE] " + row.line);
            scheduler.runUntilIdle();
            EXPECT_EQ(outcome->successes.size(), row.report == "success" ? 1u : 0u);
            EXPECT_EQ(outcome->failures.size(), row.report == "failure" ? 1u : 0u);
            *outcome = {};
        }
        port.defaults().remove({"current_transaction_id"});
    }
}

}  // namespace
}  // namespace zorvik
