#include "platform/uikit/UIButton.h"
#include "platform/uikit/UILabel.h"
#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

using platform::UIButton, platform::UILabel;

class ScreenLifecycleTest : public CheckoutTest {};

TEST_F(ScreenLifecycleTest, TheScreenComesUpWithItsSkeletonOverAHiddenPageAndFadesItIn) {
    port.stage().setSafeAreaInsets({47, 0, 34, 0});
    presentScreen();
    const auto skeleton = find<ZorvikShimmerView>();
    const auto web = find<WKWebView>();
    const auto label = find<UILabel>();
    const auto retry = find<UIButton>();
    EXPECT_EQ(screen()->modalPresentationStyle(), platform::UIModalPresentationStyle::fullScreen);
    EXPECT_FALSE(skeleton->isHidden());
    EXPECT_TRUE(web->isHidden());
    EXPECT_FALSE(isErrorShown());
    EXPECT_EQ(label->text(), "Something went wrong.");
    EXPECT_EQ(label->textAlignment(), platform::NSTextAlignment::center);
    EXPECT_EQ(label->numberOfLines(), 0);
    EXPECT_EQ(label->superview()->backgroundColor(), platform::UIColor::white());
    EXPECT_EQ(screen()->view()->backgroundColor(), platform::UIColor::white());
    EXPECT_EQ(retry->title(), "Retry");
    EXPECT_THAT(page().messageHandlers(), ElementsAre("openUpiIntent"));
    EXPECT_TRUE(page().configuration().allowsContentJavaScript);
    EXPECT_TRUE(page().configuration().javaScriptCanOpenWindowsAutomatically);
    port.stage().layout();
    EXPECT_EQ(skeleton->frame(), (Rect{0, 47, 390, 763}));
    EXPECT_EQ(web->frame(), (Rect{0, 47, 390, 763}));
    EXPECT_EQ(label->superview()->frame(), (Rect{0, 47, 390, 797}));
    const auto& spinner = find<platform::UIActivityIndicatorView>()->frame();
    EXPECT_EQ(spinner.y + spinner.height / 2, 422);
    // A line of 20.4 points, 20 above the panel's middle, and the button 16 below it.
    EXPECT_NEAR(label->frame().y, 797.0 / 2 - 20 - 20.4 / 2, 1e-9);
    EXPECT_EQ(label->frame().x, 24);
    EXPECT_EQ(label->frame().width, 390 - 2 * 24);
    EXPECT_NEAR(retry->frame().y, label->frame().y + label->frame().height + 16, 1e-9);
    EXPECT_NEAR(retry->frame().x, (390 - retry->frame().width) / 2, 1e-9);

    run();
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
    EXPECT_EQ(find<UILabel>()->text(),
              "Invalid checkout URL. Please try again or contact support.");
    EXPECT_FALSE(find<ZorvikShimmerView>()->isHidden());
    EXPECT_GT(scheduler.pendingCount(), 0u);
    for (const char* token : {"first", "second"}) {  // every load is built anew
        screen()->setOptions(optionsOf(token));
        core.webViewViewUrl = "https://other.example/";
        find<UIButton>()->sendTouchUpInside();
        EXPECT_FALSE(isErrorShown());
        runAll();
        EXPECT_EQ(seen("load").back(), "https://other.example/?token=" + std::string(token));
    }
    EXPECT_TRUE(find<ZorvikShimmerView>()->isHidden());
}

TEST_F(ScreenLifecycleTest, ADismissalCleansUpThreeTimesAndLeavesNothingBehind) {
    openScreen();
    storeRecord();
    dismissScreen();
    Lines keys{"current_transaction_id", "current_package_name", "transaction_start_time"};
    EXPECT_THAT(port.defaults().removals(), SizeIs(3 * keys.size()));
    EXPECT_TRUE(std::equal(keys.begin(), keys.end(), port.defaults().removals().begin()));
    EXPECT_THAT(port.web().pages(), IsEmpty());
    EXPECT_EQ(scheduler.pendingCount(), 0u) << scheduler.describePending();
    forget();
    comeBackAfter(1);
    EXPECT_TRUE(leadsTo("", "\n"));
}

TEST_F(ScreenLifecycleTest, ADismissedScreenThatIsStillHeldDoesNothingWithoutItsPage) {
    load.ending = ScriptedLoad::Ending::hangAfterCommit;
    openScreen();
    screen()->setUpiApps(Apps());
    const auto held = screen();
    const auto web = find<WKWebView>();
    presenter->dismiss(false);
    run();
    EXPECT_FALSE(page().isLoading());
    EXPECT_EQ(scheduler.pendingCount(), 0u) << "the skeleton pulses still";
    forget();
    comeBackAfter(1);
    find<UIButton>()->sendTouchUpInside();
    held->handleDeviceBackButtonPress();
    held->webViewDidFinish(*web);
    held->userContentControllerDidReceive(
        *web->configuration().userContentController,
        {"openUpiIntent", stringBody(R"({"url":"","package_name":"p"})")});
    page().navigateSubframe("https://pay.example/");
    page().showPanel({platform::ScriptPanel::Kind::alert, "unheard", std::nullopt});
    runAll();
    EXPECT_THAT(
        seen("event"),
        ElementsAre(StartsWith("WEBVIEW_LOADED"), StartsWith("UPI_INTENT_STARTED"),
                    StartsWith("EXCEPTION_THROWN"), R"(BACK_BUTTON_PRESSED ["current_url": ""])"));
    for (const char* unheard : {"[WEBVIEW]", "[APP STATE]", "[URL INTERCEPT]", "script", "load"})
        EXPECT_THAT(core.transcript.entries(unheard), IsEmpty());
    EXPECT_TRUE(web->isHidden());
}

TEST_F(ScreenLifecycleTest, AnotherScreenAboveIsNoDismissalAndKeepsEverything) {
    openScreen();
    storeRecord();
    const auto above = platform::makeOnMainThread<platform::UIViewController>();
    above->setModalPresentationStyle(platform::UIModalPresentationStyle::fullScreen);
    screen()->present(above, false);
    runAll();
    EXPECT_TRUE(hasTranscript("", R"(
[VIEW LIFECYCLE] 🚀 viewWillDisappear called | 📊 Is being dismissed: false | ⏸️ Skipping cleanup - might be UPI app return
(turn 1) [VIEW LIFECYCLE] 🚀 viewDidDisappear called | 📊 Is being dismissed: false | ⏸️ Skipping cleanup - might be UPI app return
)"));
    EXPECT_THAT(port.defaults().entries(), SizeIs(3));
    EXPECT_THAT(page().messageHandlers(), SizeIs(1));
    comeBackAfter(1);
    run();
    EXPECT_THAT(heard(), Contains("[APP STATE] 📱 Stored transaction ID: T1"));
}

TEST_F(ScreenLifecycleTest, AScreenTakenFromItsParentIsDismissed) {
    auto alone = loadUnpresentedScreen();
    presenter->addChild(alone);
    storeRecord();
    forget();
    alone->removeFromParent();
    EXPECT_TRUE(hasTranscript("", R"(
[VIEW LIFECYCLE] 🚀 viewWillDisappear called | 📊 Is being dismissed: true | 🧹 Performing cleanup due to dismissal
  | 🚀 viewDidDisappear called | 📊 Is being dismissed: true | 🧹 Performing cleanup due to dismissal
)"));
    EXPECT_THAT(port.defaults().entries(), IsEmpty());
    EXPECT_THAT(page().messageHandlers(), IsEmpty());
}

}  // namespace
}  // namespace zorvik
