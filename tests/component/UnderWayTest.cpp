#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

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
};

enum class Hold { weak, strong };
enum class Step { turn, answer };

struct UnderWayCase {
    const char* name;
    std::function<void()> begin;
    std::vector<Step> steps = {};  // before the screen goes
    Hold hold = Hold::weak;
    std::string heard = {};  // afterwards of a screen that was let go
};

TEST_F(UnderWayTest, NothingHoldsTheScreenButWhatMustAndNothingIsDoneWithoutItsPage) {
    using enum Step;
    const auto goBack = [&] { screen()->swipeBackDetected(); };
    const auto returnQuickly = [&] {
        storeRecord();
        comeBackAfter(1);
    };
    const auto finishPage = [&] {
        screen()->setUpiApps(std::vector<UPIAppsVO>{});
        screen()->webViewDidFinish(*find<WKWebView>());
    };
    const auto succeed = [&] { returnWith("success"); };
    const auto failToAsk = [&] {
        core.enquiryAnswer = someError("no line");
        returnWith("success");
    };
    const auto cancel = [&] { returnWith("cancelled"); };
    const UnderWayCase cases[] = {
        {"a back action and its event", goBack},
        {"its post and the flow's event",
         goBack,
         {turn},
         Hold::weak,
         "(turn 1) [BACK HANDLER] ❌ JavaScript error: The page is gone."},
        {"a quick return", returnQuickly, {turn}},
        {"its enquiry", returnQuickly, {turn, turn}},
        {"its answer",
         returnQuickly,
         {turn, turn, answer},
         Hold::strong,
         "(turn 2) [UPI BACK] ❌ JavaScript error: The page is gone."},
        {"the fade and the injection of a finished page", finishPage},
        {"a hand-off",
         [&] { pick("upi:pay"); },
         {turn},
         Hold::weak,
         "(turn 1) [UPI LAUNCH] ✅ UPI app launched successfully! | 📱 App will go to background"},
        {"a refused one",
         [&] { pick("stubborn:pay"); },
         {turn},
         Hold::weak,
         "(turn 1) [UPI LAUNCH] ❌ Failed to launch UPI app"},
        {"a response", [&] { redirect("1"); }},
        {"an address without one", [&] { redirect("%zz"); }},
        {"its second turn", [&] { redirect("%zz"); }, {turn}},
        {"the enquiry of a success",
         succeed,
         {},
         Hold::strong,
         "[UPI SUCCESS] ✅ Transaction enquiry successful | 📊 Response: [:]"},
        {"its answer", succeed, {answer}},
        {"its failure", failToAsk, {answer}},
        {"the second turn of that", failToAsk, {answer, turn}},
        {"a cancellation",
         cancel,
         {},
         Hold::strong,
         "(turn 1) [UPI CANCELLATION] 📞 Calling delegate failure method"},
        {"its second turn and its event", cancel, {turn}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        const auto begin = [&] {
            core.enquiryAnswer = TransactionEnquiryResponse{};
            row.begin();
            for (const Step step : row.steps) {
                step == turn ? static_cast<void>(runTurn()) : core.answerNext();
            }
            forget();
        };
        const auto end = [&] {
            while (core.isAsked()) {
                core.answerNext();
            }
            run();
        };
        auto alone = loadUnpresentedScreen();
        begin();
        alone.reset();
        EXPECT_EQ(screen() != nullptr, row.hold == Hold::strong);
        end();
        EXPECT_FALSE(screen());
        EXPECT_TRUE(hasTranscript("", row.heard.empty() ? "\n" : '\n' + row.heard + '\n'));
        EXPECT_THAT(port.web().pages(), IsEmpty());

        openScreen();
        begin();
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
