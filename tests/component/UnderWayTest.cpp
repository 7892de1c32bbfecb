#include <thread>

#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

// What a screen has set going when its last owner lets it go.
class UnderWayTest : public CheckoutTest {
  protected:
    UnderWayTest() {
        core.holdsAnswers = true;
        port.application().install("upi");
        port.application().install("stubborn", false);
    }
    void pick(const std::string& url) {
        postIntent(stringBody(R"({"package_name":"p","url":")" + url + "\"}"));
        runTurn();
    }
    void returnQuickly() {
        storeRecord();
        comeBackAfter(1);
        run();  // the enquiry waits for its answer
    }
    void returnWith(const std::string& status) { decide("shopreturn://back?status=" + status); }
};

enum class Hold { weak, strong };

struct UnderWayCase {
    const char* name;
    std::function<void()> begin;
    Hold hold = Hold::weak;
    const char* heard = "\n";  // of it afterwards
};

TEST_F(UnderWayTest, NothingHoldsTheScreenButWhatMustAndTheRestIsDropped) {
    const UnderWayCase cases[] = {
        {"a back action and its event", [&] { screen()->swipeBackDetected(); }},
        {"the post and the event of a back",
         [&] {
             screen()->handleDeviceBackButtonPress();
             runTurn();
         },
         Hold::weak, R"(
(turn 1) [BACK HANDLER] ❌ JavaScript error: The page is gone.
)"},
        {"the enquiry of a quick return", [&] { returnQuickly(); }},
        {"its answer",
         [&] {
             returnQuickly();
             core.answerNext();
         },
         Hold::strong, R"(
(turn 2) [UPI BACK] ❌ JavaScript error: The page is gone.
)"},
        {"an injection",
         [&] {
             screen()->setUpiApps(std::vector<UPIAppsVO>{});
             page().navigate("https://pay.example/next");
             while (scripts().empty() && runTurn()) {
             }
         }},
        {"the fade of a finished page", [&] { screen()->webViewDidFinish(*find<WKWebView>()); }},
        {"a hand-off", [&] { pick("upi:pay"); }, Hold::weak, R"(
(turn 1) [UPI LAUNCH] ✅ UPI app launched successfully! | 📱 App will go to background
)"},
        {"a refused one", [&] { pick("stubborn:pay"); }, Hold::weak, R"(
(turn 1) [UPI LAUNCH] ❌ Failed to launch UPI app
)"},
        {"a response", [&] { redirect("1"); }},
        {"an address without one", [&] { redirect("%zz"); }},
        {"its second turn",
         [&] {
             redirect("%zz");
             runTurn();
         }},
        {"the enquiry of a success", [&] { returnWith("success"); }, Hold::strong, R"(
[UPI SUCCESS] ✅ Transaction enquiry successful | 📊 Response: [:]
)"},
        {"its answer",
         [&] {
             returnWith("success");
             core.answerNext();
         }},
        {"its failure",
         [&] {
             core.enquiryAnswer = someError("no line");
             returnWith("success");
             core.answerNext();
         }},
        {"the second turn of that",
         [&] {
             returnWith("success");
             core.answerNext();
             runTurn();
         }},
        {"a cancellation", [&] { returnWith("cancelled"); }, Hold::strong, R"(
(turn 1) [UPI CANCELLATION] 📞 Calling delegate failure method
)"},
        {"its second turn and its event",
         [&] {
             returnWith("cancelled");
             runTurn();
         }},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        auto alone = loadUnpresentedScreen();
        row.begin();
        forget();
        alone.reset();
        EXPECT_EQ(screen() != nullptr, row.hold == Hold::strong);
        while (core.isAsked()) {
            core.answerNext();
        }
        runAll();
        EXPECT_FALSE(screen());
        EXPECT_TRUE(hasTranscript(row.heard));
        EXPECT_THAT(port.web().pages(), IsEmpty());
        EXPECT_THAT(port.defaults().entries(), IsEmpty());
    }
}

TEST_F(UnderWayTest, AReportOnItsWayIsDroppedWithItsDelegate) {
    openScreen();
    for (const char* response : {"1", "%zz"}) {
        redirect(response);
    }
    returnWith("cancelled");
    screen()->setDelegate({});
    redirect("!");
    run();
    EXPECT_THAT(seen("success"), IsEmpty());
    EXPECT_THAT(seen("failure"), IsEmpty());
}

TEST_F(UnderWayTest, AScreenDroppedOnABackgroundThreadIsDestroyedOnTheMainOne) {
    auto made = loadUnpresentedScreen();
    std::thread([last = std::move(made)]() mutable { last.reset(); }).join();
    EXPECT_EQ(port.web().pages().size(), 1u) << "not yet destroyed";
    EXPECT_TRUE(scheduler.runOneTurn());
    EXPECT_THAT(port.web().pages(), IsEmpty());
    outlivesThePort = loadUnpresentedScreen();  // dropped by the fixture after the port is gone
}

}  // namespace
}  // namespace zorvik
