#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

enum class Hold { weak, strong };
enum class Step { turn, answer };

// What a screen has set going when it goes.
class UnderWayTest : public CheckoutTest {
  protected:
    UnderWayTest() {
        core.holdsAnswers = true;
        port.application().install("upi");
        port.application().install("stubborn", false);
    }
    void pick(const std::string& url) {
        postIntent(stringBody(R"({"package_name":"p","url":")" + url + "\"}"));
    }
    void returnWith(const std::string& status) { decide("shopreturn://back?status=" + status); }

    // Lets a screen go, and dismisses another, after these steps of what it began; `heard`:
    // afterwards of the first one.
    void expectHold(Hold hold, const char* name, const std::function<void()>& begin,
                    const std::vector<Step>& steps = {}, const std::string& heard = "") {
        SCOPED_TRACE(name);
        const auto start = [&] {
            core.enquiryAnswer = TransactionEnquiryResponse{};
            begin();
            for (const Step step : steps)
                step == Step::turn ? static_cast<void>(runTurn()) : core.answerNext();
            forget();
        };
        const auto end = [&] {
            while (core.isAsked())
                core.answerNext();
            run();
        };
        auto alone = loadUnpresentedScreen();
        start();
        alone.reset();
        EXPECT_EQ(screen() != nullptr, hold == Hold::strong);
        end();
        EXPECT_FALSE(screen());
        EXPECT_TRUE(hasTranscript("", heard + '\n'));
        EXPECT_THAT(port.web().pages(), IsEmpty());

        openScreen();
        start();
        const auto handedOver = scripts().size();
        presenter->dismiss(true);
        end();
        ASSERT_TRUE(screen()) << "it slides away still";
        EXPECT_EQ(scripts().size(), handedOver);
        EXPECT_THAT(port.defaults().entries(), IsEmpty());
        runAll();
        EXPECT_FALSE(screen());
        forget();
    }
};

TEST_F(UnderWayTest, NothingHoldsTheScreenButWhatMustAndNothingIsDoneWithoutItsPage) {
    using enum Hold;
    using enum Step;
    const auto goBack = [&] { screen()->swipeBackDetected(); };
    const auto returnQuickly = [&] { storeRecord(), comeBackAfter(1); };
    const auto finishPage = [&] {
        screen()->setUpiApps(Apps());
        screen()->webViewDidFinish(*find<WKWebView>());
    };
    const auto handOff = [&] { pick("upi:pay"); };
    const auto beRefused = [&] { pick("stubborn:pay"); };
    const auto respond = [&] { redirect("1"); };
    const auto respondWithNothing = [&] { redirect("%zz"); };
    const auto succeed = [&] { returnWith("success"); };
    const auto failToAsk = [&] {
        core.enquiryAnswer = someError("no line");
        succeed();
    };
    const auto cancel = [&] { returnWith("cancelled"); };
    expectHold(weak, "a back action and its event", goBack);
    expectHold(weak, "its post and the flow's event", goBack, {turn},
               "\n(turn 1) [BACK HANDLER] ❌ JavaScript error: The page is gone.");
    expectHold(weak, "a quick return", returnQuickly, {turn});
    expectHold(weak, "its enquiry", returnQuickly, {turn, turn});
    expectHold(strong, "its answer", returnQuickly, {turn, turn, answer},
               "\n(turn 2) [UPI BACK] ❌ JavaScript error: The page is gone.");
    expectHold(weak, "the fade and the injection of a finished page", finishPage);
    expectHold(
        weak, "a hand-off", handOff, {turn},
        "\n(turn 1) [UPI LAUNCH] ✅ UPI app launched successfully! | 📱 App will go to background");
    expectHold(weak, "a refused one", beRefused, {turn},
               "\n(turn 1) [UPI LAUNCH] ❌ Failed to launch UPI app");
    expectHold(weak, "a response", respond);
    expectHold(weak, "an address without one", respondWithNothing);
    expectHold(weak, "its second turn", respondWithNothing, {turn});
    expectHold(strong, "the enquiry of a success", succeed, {},
               "\n[UPI SUCCESS] ✅ Transaction enquiry successful | 📊 Response: [:]");
    expectHold(weak, "its answer", succeed, {answer});
    expectHold(weak, "its failure", failToAsk, {answer});
    expectHold(weak, "the second turn of that", failToAsk, {answer, turn});
    expectHold(strong, "a cancellation", cancel, {},
               "\n(turn 1) [UPI CANCELLATION] 📞 Calling delegate failure method");
    expectHold(weak, "its second turn and its event", cancel, {turn});
}

TEST_F(UnderWayTest, AReportOnItsWayIsDroppedWithItsDelegate) {
    openScreen();
    redirect("1");
    redirect("%zz");
    returnWith("cancelled");
    returnWith("success");
    core.answerNext();
    screen()->setDelegate({});
    redirect("!");
    run();
    EXPECT_THAT(seen("success"), IsEmpty());
    EXPECT_THAT(seen("failure"), IsEmpty());
}

}  // namespace
}  // namespace zorvik
