#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

class UPILaunchTest : public CheckoutTest {
  protected:
    UPILaunchTest() {
        port.application().install("upi");
        port.application().install("stubborn", false);
    }
    void requestIntent(const std::string& url, const std::string& more = R"(,"tr":"T1")") {
        postIntent(stringBody(R"({"url":")" + url + R"(","package_name":"app.one")" + more + "}"));
    }
    const auto& record() { return port.defaults().entries(); }
};

TEST_F(UPILaunchTest, TheRecordIsWrittenOnceTheHandOffIsConfirmed) {
    using testing::Pair;
    openScreen();
    requestIntent("upi://pay?pa=shop@bank&am=1");
    EXPECT_THAT(port.application().openedUrls(), ElementsAre("upi://pay?pa=shop@bank&am=1"));
    EXPECT_THAT(record(), IsEmpty());
    scheduler.setNow(now + 2);
    EXPECT_TRUE(scheduler.runOneTurn());
    EXPECT_THAT(record(),
                ElementsAre(Pair("current_package_name", DefaultsValue("app.one")),
                            Pair("current_transaction_id", DefaultsValue("T1")),
                            Pair("transaction_start_time", DefaultsValue(Date{now + 2}))));
    EXPECT_EQ(lines.back(), "[TRANSACTION STORE] 📊 Ready to detect UPI app return");
    EXPECT_THAT(scripts(), IsEmpty());
    requestIntent("upi://pay", "");  // no transaction id at all
    runAll();
    EXPECT_EQ(record().at("current_transaction_id"), DefaultsValue(""));
}

struct RefusalCase {
    std::string url;
    std::string status;
    std::string message;
};

TEST_F(UPILaunchTest, AnAppThatDoesNotOpenIsToldToThePageAndKeepsAnEarlierRecord) {
    const RefusalCase cases[] = {
        {"nobody://pay", "unregistered", "UPI app not installed"},
        {"stubborn:pay", "unavailable", "Failed to launch UPI app"},
        {"", "unavailable", "Invalid UPI URL"},
        {"upi://pay?pn=two words", "unavailable", "Invalid UPI URL"},
        {"upi://pay?x=%zz", "unavailable", "Invalid UPI URL"},
    };
    openScreen();
    storeRecord();
    const auto earlier = record();
    for (const auto& [url, status, message] : cases) {
        SCOPED_TRACE(url);
        forget();
        requestIntent(url, R"(,"tr":"T2")");
        runAll();
        EXPECT_EQ(lastPostedMessage(), (Dictionary{{"sdk_upi_intent_response", status},
                                                   {"sdk_transaction_enquiry_response", message}}));
        EXPECT_EQ(lines.back(), "[UPI RESPONSE] ✅ JavaScript executed without errors");
        const bool isLogged =
            core.events().back() == R"(EXCEPTION_THROWN ["error": "Invalid UPI URL"])";
        EXPECT_EQ(isLogged, message == "Invalid UPI URL");
        EXPECT_EQ(record(), earlier);
    }
    const auto sent = scripts().size();
    evaluation = someError("boom");
    requestIntent("nobody://pay");
    runAll();
    EXPECT_EQ(lines.back(), "[UPI RESPONSE] ❌ Error sending response: boom");
    EXPECT_EQ(scripts().size(), sent + 1) << "not repeated";
}

TEST_F(UPILaunchTest, AConfirmationAfterTheScreenIsGoneIsPrintedAndLeavesNoRecord) {
    for (const auto& [url, line] :
         {std::pair("upi://pay", "[UPI LAUNCH] 📱 App will go to background"),
          std::pair("stubborn://pay", "[UPI LAUNCH] ❌ Failed to launch UPI app")}) {
        auto alone = loadUnshownScreen();
        requestIntent(url);
        alone.reset();
        scheduler.runUntilIdle();
        EXPECT_EQ(lines.back(), line);
        EXPECT_THAT(record(), IsEmpty());
    }
    openScreen();
    requestIntent("upi://pay");
    presenter->dismiss(true);
    scheduler.runUntilIdle();
    ASSERT_TRUE(screen()) << "it still slides away";
    EXPECT_EQ(lines.back(), "[UPI LAUNCH] 📱 App will go to background");
    EXPECT_THAT(record(), IsEmpty());
}

}  // namespace
}  // namespace zorvik
