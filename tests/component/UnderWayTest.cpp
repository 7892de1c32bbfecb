#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

// What a screen has set going when it goes. Nothing holds it but what must, and nothing is done
// without its page.
TEST_F(CheckoutTest, OfWhatIsUnderWayOnlyTheRowsThatSayStrongHoldTheScreen) {
    core.holdsAnswers = true;
    port.application().install("upi");
    port.application().install("stubborn", false);
    const auto goBack = [&] { screen()->swipeBackDetected(); };
    const auto returnQuickly = [&] { storeRecord(), comeBackAfter(1); };
    const auto finishPage = [&] {
        screen()->setUpiApps(Apps());
        screen()->webViewDidFinish(*find<WKWebView>());
    };
    const auto pick = [&](const std::string& url) {
        return
            [=, this] { postIntent(stringBody(R"({"package_name":"p","url":")" + url + "\"}")); };
    };
    const auto respond = [&] { redirect("1"); };
    const auto respondWithNothing = [&] { redirect("%zz"); };
    const auto succeed = [&] { decide("shopreturn://back?status=success"); };
    const auto failToAsk = [&] {
        core.enquiryAnswer = someError("no line");
        succeed();
    };
    const auto cancel = [&] { decide("shopreturn://back?status=cancelled"); };
    const struct {
        const char *hold, *name;
        std::function<void()> begin;
        std::string steps;  // of what it began: "t" a turn, "a" an answer
        std::string heard;  // of it, once the screen was let go of
    } rows[] = {
        {"weak", "a back action and its event", goBack, "", ""},
        {"weak", "its post and the flow's event", goBack, "t",
         "\n(turn 1) [BACK HANDLER] ❌ JavaScript error: The page is gone."},
        {"weak", "a quick return", returnQuickly, "t", ""},
        {"weak", "its enquiry", returnQuickly, "tt", ""},
        {"strong", "its answer", returnQuickly, "tta",
         "\n(turn 2) [UPI BACK] ❌ JavaScript error: The page is gone."},
        {"weak", "the fade and the injection of a finished page", finishPage, "", ""},
        {"weak", "a hand-off", pick("upi:pay"), "t",
         "\n(turn 1) [UPI LAUNCH] ✅ UPI app launched successfully! | 📱 App will go to background"},
        {"weak", "a refused one", pick("stubborn:pay"), "t",
         "\n(turn 1) [UPI LAUNCH] ❌ Failed to launch UPI app"},
        {"weak", "a response", respond, "", ""},
        {"weak", "an address without one", respondWithNothing, "", ""},
        {"weak", "its second turn", respondWithNothing, "t", ""},
        {"strong", "the enquiry of a success", succeed, "",
         "\n[UPI SUCCESS] ✅ Transaction enquiry successful | 📊 Response: [:]"},
        {"weak", "its answer", succeed, "a", ""},
        {"weak", "its failure", failToAsk, "a", ""},
        {"weak", "the second turn of that", failToAsk, "at", ""},
        {"strong", "a cancellation", cancel, "",
         "\n(turn 1) [UPI CANCELLATION] 📞 Calling delegate failure method"},
        {"weak", "its second turn and its event", cancel, "t", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        core.enquiryAnswer = TransactionEnquiryResponse{};
        auto alone = loadUnpresentedScreen();
        row.begin();
        for (const char step : row.steps)
            step == 't' ? static_cast<void>(runTurn()) : core.answerNext();
        forget();
        alone.reset();
        EXPECT_EQ(screen() ? "strong" : "weak", std::string(row.hold));
        while (core.isAsked())
            core.answerNext();
        EXPECT_TRUE(leadsTo("", row.heard + '\n'));
        EXPECT_FALSE(screen());
        EXPECT_THAT(port.web().pages(), IsEmpty());
        port.defaults().remove({"current_transaction_id"});
    }
}

}  // namespace
}  // namespace zorvik
