#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

using platform::Date;
using platform::DefaultsValue;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::StartsWith;

constexpr double now = 1'800'000'000;  // 2027-01-15 08:00 UTC

class UPILaunchTest : public CheckoutTest {
  protected:
    UPILaunchTest() {
        scheduler.setNow(now);
        port.application().install("upi");
        port.application().install("stubborn", false);
    }

    void requestIntent(const std::string& url, const std::string& more = R"(,"tr":"T1")") {
        postIntent(stringBody(R"({"url":")" + url + R"(","package_name":"app.one")" + more + "}"));
    }

    // What sendUPIResponse prints; its script must be the printed JSON, escaped, in an envelope.
    Lines responseLines(const std::string& status, const std::string& message) {
        const std::string script = page().evaluatedScripts().back();
        const std::string escaped = script.substr(20, script.size() - 20 - 8);
        EXPECT_EQ(lastPostedMessage(), (Dictionary{{"sdk_upi_intent_response", status},
                                                   {"sdk_transaction_enquiry_response", message}}));
        return {"[UPI RESPONSE] 🚀 sendUPIResponse method called!",
                "[UPI RESPONSE] 📊 Status: " + status,
                "[UPI RESPONSE] 📝 Message: " + message,
                "[UPI RESPONSE] 📋 JSON String: " + evaluatedLiteral(escaped),
                "[UPI RESPONSE] 🔧 Escaped JSON: " + escaped,
                "[UPI RESPONSE] 📜 JavaScript to execute: " + script,
                "[UPI RESPONSE] ✅ Response sent successfully: " + status,
                "[UPI RESPONSE] ✅ JavaScript executed without errors"};
    }

    const auto& record() { return port.defaults().entries(); }

    const Lines launchLines{"[UPI LAUNCH] ✅ URL created successfully",
                            "[UPI LAUNCH] 🔍 URL scheme: upi", "[UPI LAUNCH] 🔍 URL host: pay",
                            "[UPI LAUNCH] 📱 Can open URL: true",
                            "[UPI LAUNCH] ✅ UPI app is installed, launching..."};
};

Lines operator+(Lines lines, const Lines& more) {
    lines.insert(lines.end(), more.begin(), more.end());
    return lines;
}

TEST_F(UPILaunchTest, TheRecordIsWrittenOnceTheHandOffIsConfirmed) {
    openScreen();
    requestIntent("upi://pay?pa=shop@bank&am=1");
    EXPECT_EQ(takeLines(), launchLines);
    EXPECT_THAT(port.application().openedUrls(), ElementsAre("upi://pay?pa=shop@bank&am=1"));
    EXPECT_THAT(record(), IsEmpty());
    scheduler.setNow(now + 2);
    EXPECT_TRUE(scheduler.runOneTurn());
    EXPECT_THAT(record(),
                ElementsAre(Pair("current_package_name", DefaultsValue("app.one")),
                            Pair("current_transaction_id", DefaultsValue("T1")),
                            Pair("transaction_start_time", DefaultsValue(Date{now + 2}))));
    EXPECT_THAT(takeLines(),
                ElementsAre("[UPI LAUNCH] ✅ UPI app launched successfully!",
                            "[UPI LAUNCH] 📱 App will go to background",
                            "[TRANSACTION STORE] 🚀 Storing transaction details for UPI app return "
                            "tracking!",
                            "[TRANSACTION STORE] 📱 Package name: app.one",
                            "[TRANSACTION STORE] 🔢 Transaction ID: T1",
                            "[TRANSACTION STORE] 📱 Stored at: " + description(Date{now + 2}),
                            "[TRANSACTION STORE] ✅ Transaction details stored successfully",
                            "[TRANSACTION STORE] 📊 Ready to detect UPI app return"));
    EXPECT_THAT(core.events(), ElementsAre(StartsWith("UPI_INTENT_STARTED")));
    EXPECT_THAT(page().evaluatedScripts(), IsEmpty());

    requestIntent("upi://pay", "");  // no transaction id at all
    runAll();
    EXPECT_EQ(record().at("current_transaction_id"), DefaultsValue(""));
    EXPECT_EQ(record().size(), 3u);
}

TEST_F(UPILaunchTest, AnAppThatIsNotInstalledIsToldToThePage) {
    openScreen();
    requestIntent("nobody://pay");
    runAll();
    const Lines before{"[UPI LAUNCH] ✅ URL created successfully",
                       "[UPI LAUNCH] 🔍 URL scheme: nobody", "[UPI LAUNCH] 🔍 URL host: pay",
                       "[UPI LAUNCH] 📱 Can open URL: false",
                       "[UPI LAUNCH] ❌ UPI app not installed"};
    EXPECT_EQ(lines, before + responseLines("unregistered", "UPI app not installed"));
    EXPECT_THAT(port.application().openedUrls(), IsEmpty());
    EXPECT_THAT(core.events(), ElementsAre(StartsWith("UPI_INTENT_STARTED")));
}

TEST_F(UPILaunchTest, ARefusedLaunchIsToldToThePageAndKeepsAnEarlierRecord) {
    openScreen();
    requestIntent("upi://pay");
    runAll();
    const auto earlier = record();
    forget();
    requestIntent("stubborn:pay", R"(,"tr":"T2")");
    EXPECT_EQ(lines.at(1), "[UPI LAUNCH] 🔍 URL scheme: stubborn");
    EXPECT_EQ(lines.at(2), "[UPI LAUNCH] 🔍 URL host: nil");
    lines.clear();
    runAll();
    EXPECT_EQ(lines, Lines{"[UPI LAUNCH] ❌ Failed to launch UPI app"} +
                         responseLines("unavailable", "Failed to launch UPI app"));
    EXPECT_EQ(record(), earlier);
    EXPECT_THAT(core.events(), ElementsAre(StartsWith("UPI_INTENT_STARTED")));
}

TEST_F(UPILaunchTest, AnAddressThatIsNoneIsLoggedAndToldToThePage) {
    openScreen();
    for (const char* url : {"", "upi://pay?pn=two words", "upi://pay?pn=é", "upi://pay?x=%zz"}) {
        SCOPED_TRACE(url);
        forget();
        requestIntent(url);
        runAll();
        EXPECT_EQ(lines, responseLines("unavailable", "Invalid UPI URL"));
        EXPECT_EQ(core.events().back(), R"(EXCEPTION_THROWN ["error": "Invalid UPI URL"])");
    }
    EXPECT_THAT(port.application().openedUrls(), IsEmpty());
    EXPECT_THAT(record(), IsEmpty());
}

TEST_F(UPILaunchTest, AResponseThatThePageDoesNotTakeIsPrintedAndNotRepeated) {
    openScreen();
    evaluation = someError("boom");
    requestIntent("nobody://pay");
    runAll();
    EXPECT_EQ(lines.back(), "[UPI RESPONSE] ❌ Error sending response: boom");
    EXPECT_EQ(page().evaluatedScripts().size(), 1u);
}

TEST_F(UPILaunchTest, ASecondHandOffOverwritesTheWholeRecord) {
    openScreen();
    requestIntent("upi://pay");
    postIntent(stringBody(R"({"url":"upi://pay","package_name":"app.two","txnId":"T2"})"));
    runAll();
    EXPECT_EQ(record().at("current_transaction_id"), DefaultsValue("T2"));
    EXPECT_EQ(record().at("current_package_name"), DefaultsValue("app.two"));
}

TEST_F(UPILaunchTest, AConfirmationAfterTheScreenIsGoneIsPrintedAndLeavesNoRecord) {
    for (const auto& [scheme, line] :
         {std::pair("upi", "[UPI LAUNCH] 📱 App will go to background"),
          std::pair("stubborn", "[UPI LAUNCH] ❌ Failed to launch UPI app")}) {
        auto alone = loadUnshownScreen();
        requestIntent(std::string(scheme) + "://pay");
        alone.reset();
        lines.clear();
        scheduler.runUntilIdle();
        EXPECT_EQ(lines.back(), line);
        EXPECT_THAT(record(), IsEmpty());
    }
}

TEST_F(UPILaunchTest, ADismissalWhileTheHandOffIsPendingLeavesNoRecord) {
    openScreen();
    requestIntent("upi://pay");
    dismissScreen();
    EXPECT_THAT(record(), IsEmpty());
}

}  // namespace
}  // namespace zorvik
