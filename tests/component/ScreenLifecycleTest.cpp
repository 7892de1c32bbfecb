#include <thread>

#include "platform/uikit/UIButton.h"
#include "platform/uikit/UILabel.h"
#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

using platform::UIButton;
using platform::UILabel;

class ScreenLifecycleTest : public CheckoutTest {};

TEST_F(ScreenLifecycleTest, TheScreenComesUpWithItsSkeletonOverAHiddenPageAndFadesItIn) {
    port.stage().setSafeAreaInsets({47, 0, 34, 0});
    presentScreen();
    const auto skeleton = find<ZorvikShimmerView>();
    const auto web = find<WKWebView>();
    EXPECT_FALSE(skeleton->isHidden());
    EXPECT_TRUE(web->isHidden());
    EXPECT_FALSE(isErrorShown());
    EXPECT_THAT(page().messageHandlers(), ElementsAre("openUpiIntent"));
    EXPECT_TRUE(page().configuration().javaScriptCanOpenWindowsAutomatically);
    EXPECT_THAT(core.events(), ElementsAre(R"(WEBVIEW_LAUNCH ["url": "checkout_url"])"));
    port.stage().layout();
    EXPECT_EQ(skeleton->frame(), (Rect{0, 47, 390, 763}));
    EXPECT_EQ(web->frame(), (Rect{0, 47, 390, 763}));
    EXPECT_EQ(find<UILabel>()->superview()->frame(), (Rect{0, 47, 390, 797}));

    scheduler.runUntilIdle();
    scheduler.advanceBy(0.29);
    EXPECT_FALSE(skeleton->isHidden());
    EXPECT_TRUE(web->isHidden());
    scheduler.advanceBy(0.02);
    EXPECT_TRUE(skeleton->isHidden());
    EXPECT_FALSE(web->isHidden());
    EXPECT_LT(web->presentationAlpha(), 0.1);
    scheduler.advanceBy(0.3);
    EXPECT_EQ(web->presentationAlpha(), 1);
    EXPECT_EQ(scheduler.pendingCount(), 0u) << scheduler.describePending();
}

TEST_F(ScreenLifecycleTest, WithoutATokenThePanelCoversAPulsingSkeletonUntilARetryLoads) {
    openScreen(optionsOf(std::nullopt));
    EXPECT_TRUE(isErrorShown());
    EXPECT_EQ(errorText(), "Invalid checkout URL. Please try again or contact support.");
    EXPECT_FALSE(find<ZorvikShimmerView>()->isHidden());
    EXPECT_GT(scheduler.pendingCount(), 0u);
    screen()->setOptions(optionsOf("abc"));
    find<UIButton>()->sendTouchUpInside();
    EXPECT_FALSE(isErrorShown());
    runAll();
    EXPECT_TRUE(find<ZorvikShimmerView>()->isHidden());
}

TEST_F(ScreenLifecycleTest, ADismissalCleansUpThreeTimesInOrderAndLeavesNothingBehind) {
    for (const auto ending : {ScriptedLoad::Ending::finish, ScriptedLoad::Ending::hang}) {
        load.ending = ending;
        openScreen();
        storeRecord();
        const auto before = port.defaults().removals().size();
        dismissScreen();
        EXPECT_EQ(lines.back(), "[VIEW LIFECYCLE] 🧹 Performing cleanup due to dismissal");
        Lines removals = port.defaults().removals();
        removals.erase(removals.begin(), removals.begin() + static_cast<std::ptrdiff_t>(before));
        Lines expected;
        for (int run = 0; run < 3; ++run) {
            expected.insert(expected.end(), {"current_transaction_id", "current_package_name",
                                             "transaction_start_time"});
        }
        EXPECT_EQ(removals, expected);
        EXPECT_THAT(port.web().pages(), IsEmpty());
        EXPECT_EQ(scheduler.pendingCount(), 0u) << scheduler.describePending();
        lines.clear();
        comeBackAfter(1);
        EXPECT_THAT(lines, IsEmpty());
        EXPECT_THAT(core.events(), IsEmpty());
    }
}

TEST_F(ScreenLifecycleTest, ADismissedScreenThatIsStillHeldDoesNothingWithoutItsPage) {
    openScreen();
    const auto held = screen();
    presenter->dismiss(false);
    scheduler.runUntilIdle();
    EXPECT_THAT(page().messageHandlers(), IsEmpty());
    forget();
    comeBackAfter(1);
    EXPECT_THAT(lines, IsEmpty());
    find<UIButton>()->sendTouchUpInside();
    held->handleDeviceBackButtonPress();
    runAll();
    EXPECT_THAT(core.events(), ElementsAre(R"(BACK_BUTTON_PRESSED ["current_url": ""])"));
}

TEST_F(ScreenLifecycleTest, AnotherScreenAboveIsNoDismissalAndKeepsEverything) {
    openScreen();
    storeRecord();
    const auto above = platform::makeOnMainThread<platform::UIViewController>();
    above->setModalPresentationStyle(platform::UIModalPresentationStyle::fullScreen);
    screen()->present(above, false);
    runAll();
    const std::string skipped =
        "[VIEW LIFECYCLE] ⏸️ Skipping cleanup - might be UPI app return";
    EXPECT_EQ(std::count(lines.begin(), lines.end(), skipped), 2);
    EXPECT_EQ(port.defaults().entries().size(), 3u);
    EXPECT_THAT(page().messageHandlers(), SizeIs(1));
    comeBackAfter(1);
    EXPECT_THAT(lines, Contains("[APP STATE] 📱 Stored transaction ID: T1"));
}

TEST_F(ScreenLifecycleTest, AScreenDroppedOnABackgroundThreadIsDestroyedOnTheMainOne) {
    auto made = loadUnshownScreen();
    std::thread([last = std::move(made)]() mutable { last.reset(); }).join();
    EXPECT_EQ(port.web().pages().size(), 1u) << "not yet destroyed";
    EXPECT_TRUE(scheduler.runOneTurn());
    EXPECT_THAT(port.web().pages(), IsEmpty());
    outlivesThePort = loadUnshownScreen();  // dropped by the fixture after the port is gone
}

}  // namespace
}  // namespace zorvik
