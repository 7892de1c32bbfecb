#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

using platform::Date;
using platform::DefaultsValue;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr double launch = 1'800'000'000;  // 2027-01-15 08:00 UTC

class AppReturnTest : public CheckoutTest {
  protected:
    AppReturnTest() { scheduler.setNow(launch); }

    void storeRecord(const DefaultsValue& startTime = Date{launch}) {
        port.defaults().write("current_transaction_id", std::string("T1"));
        port.defaults().write("current_package_name", std::string("app.one"));
        port.defaults().write("transaction_start_time", startTime);
    }
    void forgetRecord() {
        for (const auto& [key, value] : std::map(port.defaults().entries())) {
            port.defaults().remove(key);
        }
    }
    void comeBackAfter(double seconds) {
        scheduler.setNow(launch + seconds);
        becomeActive();
    }
    bool printed(const std::string& line) const {
        return std::find(lines.begin(), lines.end(), line) != lines.end();
    }
};

struct StatusCase {
    std::string query;
    std::string routing;  // the last line before the handler's own
    std::string handler;  // whose first line follows
};

TEST_F(AppReturnTest, AReturnUrlIsRoutedByItsStatusWord) {
    const std::string success = "[UPI SUCCESS] 🚀 Handling UPI success callback!";
    const std::string failure = "[UPI FAILURE] 🚀 Handling UPI failure callback!";
    const std::string cancellation = "[UPI CANCELLATION] 🚀 Handling UPI cancellation callback!";
    const std::string unknown = "[UPI UNKNOWN] 🚀 Handling UPI unknown status callback!";
    const std::string assumed = "[UPI RETURN] ✅ Assuming success based on transaction ID: ";
    const std::string none = "[UPI RETURN] ❌ No status found in URL";
    const StatusCase cases[] = {
        {"?status=success", "[UPI RETURN] ✅ Payment successful", success},
        {"?status=SUCCESS", "[UPI RETURN] ✅ Payment successful", success},
        {"?status=Failure", "[UPI RETURN] ❌ Payment failed", failure},
        {"?status=Cancelled", "[UPI RETURN] ⏹️ Payment cancelled", cancellation},
        {"?status=Failed", "[UPI RETURN] ❓ Unknown status: Failed", unknown},
        {"?status=canceled", "[UPI RETURN] ❓ Unknown status: canceled", unknown},
        {"?status=successful", "[UPI RETURN] ❓ Unknown status: successful", unknown},
        {"?status=", "[UPI RETURN] ❓ Unknown status: ", unknown},
        {"?status=failure&status=success", "[UPI RETURN] ✅ Payment successful", success},
        {"?status=success&status", none, unknown},
        {"?status=success&status&tr=T1", assumed + "T1", success},
        {"?status&status=failure", "[UPI RETURN] ❌ Payment failed", failure},
        {"?tr=T1", assumed + "T1", success},
        {"?tr=T1&tr=T2", assumed + "T2", success},
        {"?tr=T1&tr", none, unknown},
        {"?tr=", none, unknown},
        {"?tr", none, unknown},
        {"?", none, unknown},
        {"", none, unknown},
        {"?Status=success&transactionId=T1", none, unknown},
        {"?status=%73uccess#status=failure", "[UPI RETURN] ✅ Payment successful", success},
    };
    openScreen();
    for (const auto& row : cases) {
        SCOPED_TRACE(row.query);
        takeLines();
        EXPECT_EQ(decide("shopreturn://back/p" + row.query), Policy::cancel);
        const auto handler = std::find(lines.begin(), lines.end(), row.handler);
        ASSERT_NE(handler, lines.end());
        EXPECT_EQ(*(handler - 1), row.routing);
        scheduler.settle();
    }
}

TEST_F(AppReturnTest, AReturnUrlsItemsArePrintedAsTheyAreAppliedAndCountedAsItems) {
    openScreen();
    scheduler.setNow(launch);
    decide("shopreturn://back/p%20q?a=1&b&a=2&b=%C3%A9+&c=3&c&status=x");
    const auto first =
        std::find(lines.begin(), lines.end(), "[UPI RETURN] 🚀 User returned from UPI app!");
    const Lines printedLines(first, first + 17);
    EXPECT_THAT(
        printedLines,
        ElementsAre(
            "[UPI RETURN] 🚀 User returned from UPI app!",
            "[UPI RETURN] 🔗 Return URL: shopreturn://back/p%20q?a=1&b&a=2&b=%C3%A9+&c=3&c&status=x",
            "[UPI RETURN] 📱 Return detected at: " + description(Date{launch}),
            "[UPI RETURN] ✅ URL components parsed successfully",
            "[UPI RETURN] 🔍 URL scheme: shopreturn", "[UPI RETURN] 🔍 URL host: back",
            HasSubstr("[UPI RETURN] 🔍 URL path: /p"), "[UPI RETURN] 📋 Query param: a = 1",
            "[UPI RETURN] 📋 Query param: b = nil", "[UPI RETURN] 📋 Query param: a = 2",
            "[UPI RETURN] 📋 Query param: b = é+", "[UPI RETURN] 📋 Query param: c = 3",
            "[UPI RETURN] 📋 Query param: c = nil", "[UPI RETURN] 📋 Query param: status = x",
            R"([UPI RETURN] 📊 Transaction data: ["a": "2", "b": "é+", "status": "x"])",
            "[UPI RETURN] 📋 Query items count: 7", "[UPI RETURN] 📊 Status found: x"));
}

TEST_F(AppReturnTest, AReturnUrlThatDoesNotParseEndsThereWithoutAReport) {
    core.returnPrefix = "shopreturn:";
    openScreen();
    EXPECT_EQ(decide("shopreturn://back?status=success&x=%zz"), Policy::cancel);
    EXPECT_EQ(lines.back(), "[UPI RETURN] ❌ Failed to parse URL components");
    runAll();
    EXPECT_EQ(outcome->count(), 0u);
    EXPECT_THAT(core.takeCalls(), IsEmpty());
    decide("shopreturn:opaque");
    EXPECT_TRUE(printed("[UPI RETURN] 🔍 URL host: nil"));
    EXPECT_TRUE(printed("[UPI RETURN] ⚠️ No status parameter found in URL"));
}

TEST_F(AppReturnTest, AQuickReturnOnScreenBecomesAUPIIntentBack) {
    openScreen(optionsOf("abc"));
    storeRecord();
    comeBackAfter(4.75);
    EXPECT_THAT(
        lines,
        ElementsAre(
            "[APP STATE] 🚀 App became active - user returned from UPI app!",
            "[APP STATE] 📊 Current WebView URL: "
            "https://pay.example/checkout?token=abc",
            "[APP STATE] 📱 App state change detected at: " + description(Date{launch + 4.75}),
            "[APP STATE] 📱 Stored transaction ID: T1", "[APP STATE] 📱 Stored package name: app.one",
            "[APP STATE] 📱 Stored start time: " + description(Date{launch}),
            "[APP STATE] 🎯 UPI app was launched - checking return status...",
            "[APP STATE] 📱 UPI App Package: app.one", "[APP STATE] 🔢 Transaction ID: T1",
            "[APP STATE] ⏱️ Time since UPI app launch: 4.75 seconds",
            "[APP STATE] ⚠️ User returned quickly - likely cancelled or went back",
            "[APP STATE] 📊 Quick return detected (< 5 seconds)",
            "[APP STATE] 📱 This could be a UPI app return or user back navigation",
            "[APP STATE] ✅ Webview is still visible - treating as UPI app return",
            "[UPI BACK] 🚀 User went back from UPI app - Android-style handling!",
            "[UPI BACK] 📱 Using Android-style UPI intent back handling",
            "[BACK HANDLER] 🚀 insertJSToWebview called",
            "[BACK HANDLER] 📊 isDeviceBackPressed: false"));
    runAll();
    EXPECT_THAT(core.takeCalls(), ElementsAre("getTransactionEnquiry(abc, , , T1)"));
    EXPECT_EQ(lastPostedMessage().at("upi_intent_back_response"), Value("close"));
    EXPECT_EQ(port.defaults().entries().size(), 3u) << "the record stays";
}

struct ElapsedCase {
    double seconds;
    bool isQuick;
};

TEST_F(AppReturnTest, ExactlyFiveSecondsAreAnExtendedReturn) {
    const ElapsedCase cases[] = {{0, true},      {4.999, true},   {5, false},
                                 {5.001, false}, {86'400, false}, {-60, true}};
    openScreen(optionsOf("abc"));
    storeRecord();
    for (const auto& [seconds, isQuick] : cases) {
        SCOPED_TRACE(seconds);
        forget();
        comeBackAfter(seconds);
        EXPECT_EQ(printed("[APP STATE] 📊 Quick return detected (< 5 seconds)"), isQuick);
        EXPECT_EQ(printed("[UPI BACK] 📱 Using Android-style UPI intent back handling"), isQuick);
        if (!isQuick) {
            EXPECT_THAT(Lines(lines.end() - 3, lines.end()),
                        ElementsAre("[APP STATE] ✅ User returned after some time - likely "
                                    "completed payment",
                                    "[APP STATE] 📊 Extended return detected (≥ 5 seconds)",
                                    "[APP STATE] 📱 This is most likely a completed UPI payment"));
        }
        scheduler.settle();
        EXPECT_EQ(core.takeCalls().size(), isQuick ? 1u : 0u);
    }
}

TEST_F(AppReturnTest, AQuickReturnToAScreenThatIsNotShownStartsNothing) {
    const auto alone = loadUnshownScreen();
    page().replaceUrl("https://pay.example/processing");
    storeRecord();
    comeBackAfter(1);
    const auto line =
        std::find(lines.begin(), lines.end(),
                  "[APP STATE] ⚠️ Webview is not visible - might be user back navigation");
    ASSERT_NE(line, lines.end());
    EXPECT_EQ(*(line + 1), "[APP STATE] 🎯 Processing URL detected!");
    runAll();
    EXPECT_THAT(core.takeCalls(), IsEmpty());
    EXPECT_THAT(lines, Not(Contains(HasSubstr("[UPI BACK]"))));
}

TEST_F(AppReturnTest, APartialRecordOrAStartTimeOfAnotherTypeIsNone) {
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"none", [] {}},
        {"no id", [this] { storeRecord(), port.defaults().remove("current_transaction_id"); }},
        {"no package", [this] { storeRecord(), port.defaults().remove("current_package_name"); }},
        {"no time", [this] { storeRecord(), port.defaults().remove("transaction_start_time"); }},
        {"time a number", [this] { storeRecord(launch); }},
        {"time a string", [this] { storeRecord(description(Date{launch})); }},
    };
    openScreen(optionsOf("abc"));
    for (const auto& [name, store] : cases) {
        SCOPED_TRACE(name);
        forgetRecord();
        store();
        forget();
        comeBackAfter(1);
        ASSERT_EQ(lines.size(), 8u);
        EXPECT_EQ(lines[6], "[APP STATE] ⚠️ No stored transaction details found");
        EXPECT_EQ(lines[7], "[APP STATE] 📊 This might be a normal app activation or first launch");
        scheduler.settle();
        EXPECT_THAT(core.takeCalls(), IsEmpty());
    }
}

TEST_F(AppReturnTest, WhatIsAbsentIsPrintedAsNilAStartTimeOfAnotherTypeIncluded) {
    openScreen();
    storeRecord(description(Date{launch}));
    port.defaults().remove("current_package_name");
    becomeActive();
    EXPECT_EQ(lines.at(3), "[APP STATE] 📱 Stored transaction ID: T1");
    EXPECT_EQ(lines.at(4), "[APP STATE] 📱 Stored package name: nil");
    EXPECT_EQ(lines.at(5), "[APP STATE] 📱 Stored start time: nil");
}

TEST_F(AppReturnTest, BeforeAnyLoadTheCurrentAddressIsNil) {
    presentScreen(optionsOf(std::nullopt));
    runAll();
    forget();
    becomeActive();
    EXPECT_EQ(lines.at(1), "[APP STATE] 📊 Current WebView URL: nil");
    EXPECT_EQ(lines.size(), 8u);
}

struct ProcessingCase {
    const char* name;
    std::string url;
    std::string items;  // as printed; "": no processing page
    std::string value;  // of the response; "": none is found
    std::string report;
};

TEST_F(AppReturnTest, AProcessingPagesResponseIsLookedForOnEveryPath) {
    const ProcessingCase cases[] = {
        {"elsewhere", "done?response=1", "", "", ""},
        {"capital P", "Processing?response=1", "", "", ""},
        {"no query", "processing", "[]", "", ""},
        {"no response", "a?x=processing&Response=1", "[x=processing, Response=1]", "", ""},
        {"response", "processing?response=7", "[response=7]", "7", "success"},
        {"response without a value", "processing?response&response=7", "[response, response=7]",
         "nil", "failure"},
    };
    openScreen();
    for (const auto& row : cases) {
        page().replaceUrl("https://pay.example/" + row.url);
        // Without a record, an extended return, a quick one: each prints so many lines before.
        for (const auto& [seconds, before] :
             {std::pair(-1, 8), std::pair(10, 13), std::pair(2, 18)}) {
            SCOPED_TRACE(row.name);
            if (seconds > 0) storeRecord();
            takeLines();
            comeBackAfter(seconds);
            Lines expected;
            if (!row.items.empty()) {
                expected = {"[APP STATE] 🎯 Processing URL detected!",
                            "[APP STATE] 📋 URL contains 'processing' - checking for payment "
                            "response...",
                            "[APP STATE] 📊 Query parameters: " + row.items};
                const Lines found{"[APP STATE] 🎯 Found response parameter!",
                                  "[APP STATE] 📝 Response value: " + row.value,
                                  "[REDIRECT] 🚀 handleWebViewRespCheckUrl called!"};
                const Lines waiting{
                    "[APP STATE] ⚠️ No response parameter found in processing URL",
                    "[APP STATE] 📋 This might be a processing page that will redirect to "
                    "response URL",
                    "[APP STATE] 🔄 Waiting for processing page to complete..."};
                const Lines& more = row.value.empty() ? waiting : found;
                expected.insert(expected.end(), more.begin(), more.end());
            }
            lines.erase(lines.begin(), lines.begin() + before);
            if (!row.value.empty()) lines.resize(expected.size());  // the rest is the redirect's
            EXPECT_EQ(lines, expected);
            scheduler.runUntilIdle();
            EXPECT_EQ(outcome->successes.size(), row.report == "success" ? 1u : 0u);
            EXPECT_EQ(outcome->failures.size(), row.report == "failure" ? 1u : 0u);
            outcome->successes.clear();
            outcome->failures.clear();
        }
        forgetRecord();
    }
    page().replaceUrl("https://pay.example/processing?response=%zz");
    becomeActive();
    EXPECT_THAT(lines.back(), HasSubstr("checking for payment response...")) << "and then nothing";
}

}  // namespace
}  // namespace zorvik
