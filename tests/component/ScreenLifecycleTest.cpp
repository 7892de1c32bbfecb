#include <thread>

#include "platform/uikit/UIActivityIndicatorView.h"
#include "platform/uikit/UIButton.h"
#include "platform/uikit/UILabel.h"
#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

using platform::Rect;
using platform::UIButton;
using platform::UILabel;
using platform::UIView;
using platform::UIViewController;
using platform::WKWebView;
using platform::headless::ScriptedLoad;
using testing::ElementsAre;
using testing::IsEmpty;

class ScreenLifecycleTest : public CheckoutTest {
  protected:
    void storeRecord() {
        for (const char* key : recordKeys)
            port.defaults().write(key, std::string("x"));
    }

    static constexpr std::array recordKeys{"current_transaction_id", "current_package_name",
                                           "transaction_start_time"};
    const Lines dismissedLines{"[VIEW LIFECYCLE] 🚀 viewWillDisappear called",
                               "[VIEW LIFECYCLE] 📊 Is being dismissed: true",
                               "[VIEW LIFECYCLE] 🧹 Performing cleanup due to dismissal",
                               "[VIEW LIFECYCLE] 🚀 viewDidDisappear called",
                               "[VIEW LIFECYCLE] 📊 Is being dismissed: true",
                               "[VIEW LIFECYCLE] 🧹 Performing cleanup due to dismissal"};
};

TEST_F(ScreenLifecycleTest, TheScreenComesUpWithItsSkeletonOverAHiddenPage) {
    presentScreen();
    const auto& views = screen()->view()->subviews();
    ASSERT_EQ(views.size(), 4u);
    EXPECT_EQ(views[0], find<ZorvikShimmerView>());
    EXPECT_EQ(views[1], find<WKWebView>());
    EXPECT_EQ(views[2], find<platform::UIActivityIndicatorView>());
    EXPECT_FALSE(find<platform::UIActivityIndicatorView>()->isAnimating());
    EXPECT_FALSE(views[0]->isHidden());
    EXPECT_TRUE(views[1]->isHidden());
    EXPECT_TRUE(views[3]->isHidden());
    EXPECT_EQ(find<UILabel>()->superview(), views[3].get());
    EXPECT_EQ(errorText(), "Something went wrong.");
    EXPECT_EQ(find<UIButton>()->title(), "Retry");
    EXPECT_THAT(page().messageHandlers(), ElementsAre("openUpiIntent"));
    EXPECT_TRUE(page().configuration().allowsContentJavaScript);
    EXPECT_TRUE(page().configuration().javaScriptCanOpenWindowsAutomatically);
    EXPECT_EQ(page().requests().size(), 1u);
    EXPECT_THAT(core.events(), ElementsAre(R"(WEBVIEW_LAUNCH ["url": "checkout_url"])"));
    EXPECT_THAT(lines, IsEmpty());
}

TEST_F(ScreenLifecycleTest, OnlyTheErrorPanelReachesBelowTheSafeArea) {
    port.stage().setSafeAreaInsets({47, 0, 34, 0});
    openScreen();
    port.stage().layout();
    EXPECT_EQ(find<ZorvikShimmerView>()->frame(), (Rect{0, 47, 390, 763}));
    EXPECT_EQ(find<WKWebView>()->frame(), (Rect{0, 47, 390, 763}));
    EXPECT_EQ(find<UILabel>()->superview()->frame(), (Rect{0, 47, 390, 797}));
    const Rect label = find<UILabel>()->frame();
    EXPECT_EQ(label.x, 24);
    EXPECT_EQ(label.width, 342);
    EXPECT_NEAR(label.y + label.height / 2, 797.0 / 2 - 20, 1e-6);
    const Rect button = find<UIButton>()->frame();
    EXPECT_NEAR(button.y, label.y + label.height + 16, 1e-6);
    EXPECT_NEAR(button.x + button.width / 2, 195, 1e-6);
    const Rect spinner = find<platform::UIActivityIndicatorView>()->frame();
    EXPECT_NEAR(spinner.y + spinner.height / 2, 422, 1e-6);
}

TEST_F(ScreenLifecycleTest, AFinishedPageFadesInAfterTheSkeletonHasFadedOut) {
    presentScreen();
    scheduler.runUntilIdle();
    const auto skeleton = find<ZorvikShimmerView>();
    const auto web = find<WKWebView>();
    EXPECT_TRUE(web->isHidden());
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
    presentScreen(optionsOf(std::nullopt));
    scheduler.runUntilIdle();
    EXPECT_THAT(core.takeEvents(),
                ElementsAre(R"(WEBVIEW_LAUNCH "" nil "" ["url": "checkout_url"])"));
    EXPECT_TRUE(isErrorShown());
    EXPECT_EQ(errorText(), "Invalid checkout URL. Please try again or contact support.");
    EXPECT_THAT(page().requests(), IsEmpty());
    scheduler.advanceBy(10);
    const auto skeleton = find<ZorvikShimmerView>();
    EXPECT_FALSE(skeleton->isHidden());
    EXPECT_GT(scheduler.pendingCount(), 0u);

    screen()->setOptions(optionsOf("abc"));
    load.ending = ScriptedLoad::Ending::hang;
    find<UIButton>()->sendTouchUpInside();
    scheduler.runUntilIdle();
    EXPECT_FALSE(isErrorShown());
    EXPECT_FALSE(skeleton->isHidden());
    EXPECT_TRUE(find<WKWebView>()->isHidden());
    ASSERT_EQ(page().requests().size(), 1u);
    EXPECT_EQ(page().requests()[0].url.absoluteString(), "https://pay.example/checkout?token=abc");
}

TEST_F(ScreenLifecycleTest, ADismissalCleansUpThreeTimesInOrderAndLeavesNothingBehind) {
    openScreen();
    storeRecord();
    const std::weak_ptr<UIView> skeleton = find<ZorvikShimmerView>();
    dismissScreen();
    EXPECT_EQ(lines, dismissedLines);
    std::vector<std::string> expected;
    for (int run = 0; run < 3; ++run) {
        expected.insert(expected.end(), recordKeys.begin(), recordKeys.end());
    }
    EXPECT_EQ(port.defaults().removals(), expected);
    EXPECT_THAT(port.defaults().entries(), IsEmpty());
    EXPECT_THAT(port.web().pages(), IsEmpty());
    EXPECT_TRUE(skeleton.expired());
    EXPECT_EQ(scheduler.pendingCount(), 0u) << scheduler.describePending();
    EXPECT_EQ(scheduler.backgroundCount(), 0u);
    lines.clear();
    becomeActive();
    EXPECT_THAT(lines, IsEmpty());
}

TEST_F(ScreenLifecycleTest, ADismissedScreenThatIsStillHeldDoesNothingWithoutItsPage) {
    openScreen();
    const auto held = screen();
    presenter->dismiss(false);
    scheduler.runUntilIdle();
    EXPECT_THAT(page().messageHandlers(), IsEmpty());
    forget();
    becomeActive();
    EXPECT_THAT(lines, IsEmpty());
    find<UIButton>()->sendTouchUpInside();
    held->handleDeviceBackButtonPress();
    runAll();
    EXPECT_THAT(core.events(), ElementsAre(R"(BACK_BUTTON_PRESSED ["current_url": ""])"));
    EXPECT_FALSE(isErrorShown());
}

TEST_F(ScreenLifecycleTest, ADismissalInTheMiddleOfALoadEndsIt) {
    load.ending = ScriptedLoad::Ending::hang;
    presentScreen();
    scheduler.advanceBy(2);
    forget();
    dismissScreen();
    EXPECT_THAT(core.events(), IsEmpty());
    EXPECT_EQ(scheduler.pendingCount(), 0u) << scheduler.describePending();
}

TEST_F(ScreenLifecycleTest, AnotherScreenAboveIsNoDismissalAndKeepsEverything) {
    openScreen();
    storeRecord();
    const auto above = platform::makeOnMainThread<UIViewController>();
    above->setModalPresentationStyle(platform::UIModalPresentationStyle::fullScreen);
    screen()->present(above, false);
    runAll();
    EXPECT_THAT(takeLines(),
                ElementsAre("[VIEW LIFECYCLE] 🚀 viewWillDisappear called",
                            "[VIEW LIFECYCLE] 📊 Is being dismissed: false",
                            "[VIEW LIFECYCLE] ⏸️ Skipping cleanup - might be UPI app return",
                            "[VIEW LIFECYCLE] 🚀 viewDidDisappear called",
                            "[VIEW LIFECYCLE] 📊 Is being dismissed: false",
                            "[VIEW LIFECYCLE] ⏸️ Skipping cleanup - might be UPI app return"));
    EXPECT_EQ(port.defaults().entries().size(), 3u);
    EXPECT_EQ(page().currentUrl()->absoluteString(),
              "https://pay.example/checkout?token=" + plainToken());
    becomeActive();
    EXPECT_EQ(lines.at(0), "[APP STATE] 🚀 App became active - user returned from UPI app!");
}

TEST_F(ScreenLifecycleTest, LeavingAParentCountsAsADismissal) {
    const auto child = ZorvikCheckoutWebView::initWithOptions(optionsOf("t"), std::nullopt);
    presenter->addChild(child);
    runAll();
    child->removeFromParent();
    EXPECT_EQ(lines.at(lines.size() - 6), dismissedLines.at(0));
    EXPECT_EQ(lines.back(), dismissedLines.back());
    EXPECT_THAT(page().messageHandlers(), IsEmpty());
}

TEST_F(ScreenLifecycleTest, AScreenDroppedOnABackgroundThreadIsDestroyedOnTheMainOne) {
    auto made = loadUnshownScreen();
    std::thread([last = std::move(made)]() mutable { last.reset(); }).join();
    EXPECT_EQ(port.web().pages().size(), 1u) << "not yet destroyed";
    EXPECT_TRUE(scheduler.runOneTurn());
    EXPECT_THAT(port.web().pages(), IsEmpty());
    EXPECT_EQ(port.defaults().removals().size(), 3u);
}

TEST_F(ScreenLifecycleTest, AScreenMayOutliveThePort) {
    outlivesThePort = loadUnshownScreen();  // dropped by the fixture after the port is gone
    EXPECT_EQ(port.web().pages().size(), 1u);
}

TEST_F(ScreenLifecycleTest, AKilledWebProcessLeavesAScreenThatCanLoadAgain) {
    openScreen();
    load.ending = ScriptedLoad::Ending::hang;
    page().navigate("https://pay.example/second");
    runAll();
    page().killWebProcess();
    runAll();
    EXPECT_TRUE(isErrorShown());
    load.ending = ScriptedLoad::Ending::finish;
    find<UIButton>()->sendTouchUpInside();
    runAll();
    EXPECT_FALSE(isErrorShown());
    EXPECT_THAT(core.events().back(), testing::StartsWith("WEBVIEW_LOADED"));
}

}  // namespace
}  // namespace zorvik
