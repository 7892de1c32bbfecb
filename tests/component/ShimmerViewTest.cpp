#include "platform/uikit/Layout.h"
#include "platform/uikit/UIScrollView.h"
#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

using platform::UIColor, platform::UIScrollView, platform::UIView;
using Views = std::vector<std::shared_ptr<UIView>>;

void collectBlocks(const UIView& root, Views& blocks) {
    const UIColor grey{224.0 / 255, 224.0 / 255, 224.0 / 255, 1};
    for (const auto& view : root.subviews()) {
        if (view->backgroundColor() == grey) blocks.push_back(view);
        collectBlocks(*view, blocks);
    }
}

class ShimmerViewTest : public CheckoutTest {
  protected:
    ShimmerViewTest() {
        skeleton->setHidden(true);
        collectBlocks(*skeleton, blocks);
    }

    // Every block opaque, nothing scheduled: not now and not in the next half minute.
    void expectStill() {
        for (int step = 0; step < 10; ++step) {
            for (const auto& block : blocks) {
                ASSERT_EQ(block->alpha(), 1) << scheduler.steadySeconds();
                ASSERT_EQ(block->presentationAlpha(), 1);
            }
            scheduler.advanceBy(3);
        }
        EXPECT_EQ(scheduler.pendingCount(), 0u) << scheduler.describePending();
    }

    std::shared_ptr<ZorvikShimmerView> skeleton = ZorvikShimmerView::initWithFrame();
    Views blocks;
};

TEST_F(ShimmerViewTest, TheSkeletonIsAHeaderAndFifteenRowsOn930Points) {
    platform::layoutTree(*skeleton, {390, 500}, {});
    ASSERT_EQ(blocks.size(), 46u);
    const auto scroll = findView<UIScrollView>(*skeleton);
    EXPECT_EQ(scroll->frame(), (Rect{0, 0, 390, 500}));
    EXPECT_EQ(scroll->contentSize().height, 930);
    EXPECT_EQ(blocks[0]->frame(), (Rect{0, 0, 390, 74}));
    EXPECT_EQ(blocks[0]->cornerRadius(), 4);
    EXPECT_EQ(skeleton->backgroundColor(), UIColor::white());
    EXPECT_FALSE(scroll->showsVerticalScrollIndicator() ||
                 scroll->showsHorizontalScrollIndicator());

    double row = 0;
    for (const double width :
         {200, 180, 220, 160, 190, 210, 170, 200, 180, 190, 180, 220, 160, 240, 200}) {
        const auto* const block = &blocks[1 + static_cast<std::size_t>(row) * 3];
        EXPECT_EQ(block[0]->superview()->frame(), (Rect{0, row++ * 56, 358, 40}));
        EXPECT_EQ(block[0]->frame(), (Rect{0, 8, 24, 24}));
        EXPECT_EQ(block[1]->superview()->frame(), (Rect{36, 6, 322, 28}));
        EXPECT_EQ(block[1]->frame(), (Rect{0, 0, 322, 16}));
        EXPECT_EQ(block[2]->frame(), (Rect{0, 24, width, 12}));
    }
}

TEST_F(ShimmerViewTest, ThePulseStartsAfterTheFadeInAndTravelsDownTwoPointSixSecondsACycle) {
    skeleton->showShimmer();
    EXPECT_EQ(skeleton->presentationAlpha(), 0);
    scheduler.advanceBy(0.29);
    EXPECT_EQ(blocks[0]->alpha(), 1);
    scheduler.advanceBy(0.02);  // 0.31
    EXPECT_EQ(skeleton->presentationAlpha(), 1);
    for (std::size_t block = 0; block < 45; ++block) {
        EXPECT_EQ(blocks[block]->alpha(), 0.3) << block;
        EXPECT_EQ(blocks[block + 1]->alpha(), 1) << block;
        scheduler.advanceBy(0.1);
    }
}

TEST_F(ShimmerViewTest, AStartAnewCountsFromTheFirstBlockAndABlockTakenAwayStaysAsItIs) {
    skeleton->setHidden(false);
    skeleton->startShimmerAnimation();
    scheduler.advanceBy(0.25);
    blocks[4]->removeFromSuperview();
    skeleton->startShimmerAnimation();
    for (int cycle = 0; cycle < 3; ++cycle) {
        scheduler.advanceBy(0.01);
        EXPECT_EQ(blocks[0]->alpha(), 0.3) << cycle;
        EXPECT_EQ(blocks[2]->alpha(), cycle == 0 ? 1 : 0.8) << "the first start's turn";
        scheduler.advanceBy(1.2);  // 1.21
        EXPECT_EQ(blocks[0]->alpha(), 0.8);
        EXPECT_LT(blocks[0]->presentationAlpha(), 0.4);
        scheduler.advanceBy(1.38);  // 2.59, the end of the pause
        EXPECT_EQ(blocks[0]->presentationAlpha(), 0.8);
        scheduler.advanceBy(0.01);
    }
    EXPECT_EQ(blocks[4]->alpha(), 1);
    scheduler.advanceBy(0.01);
    blocks[0]->removeFromSuperview();  // while it dims
    scheduler.advanceBy(5);
    EXPECT_EQ(blocks[0]->alpha(), 0.3);
}

TEST_F(ShimmerViewTest, NothingPulsesAfterAStopAHideOrTheEndWhateverWasInFlight) {
    for (const double moment : {0.0, 0.2, 0.3, 0.9, 2.1, 2.8, 6.05, 60.55}) {  // after the show
        SCOPED_TRACE(moment);
        skeleton->showShimmer();
        scheduler.advanceBy(moment);
        skeleton->stopShimmerAnimation();
        expectStill();
        EXPECT_FALSE(skeleton->isHidden());

        skeleton->showShimmer();
        scheduler.advanceBy(moment);
        int told = 0;
        skeleton->hideShimmer([&] { told += skeleton->isHidden() ? 1 : 100; });
        scheduler.advanceBy(0.29);
        EXPECT_EQ(told, 0);
        EXPECT_FALSE(skeleton->isHidden());
        expectStill();
        EXPECT_TRUE(skeleton->isHidden());
        EXPECT_EQ(told, 1);

        auto released = ZorvikShimmerView::initWithFrame();
        const std::weak_ptr<UIView> weak = released;
        released->showShimmer();
        scheduler.advanceBy(moment);
        if (moment > 2) released->hideShimmer();
        released.reset();
        EXPECT_TRUE(weak.expired());
        scheduler.runUntilIdle();
        EXPECT_EQ(scheduler.pendingCount(), 0u) << scheduler.describePending();
    }
}

TEST_F(ShimmerViewTest, AHideWhileItHidesJoinsTheFadeAndOneThatIsReplacedChangesNothing) {
    skeleton->showShimmer();
    scheduler.advanceBy(1);
    std::string told;
    const auto tell = [&](const char* who) {
        return [&, who] { told += skeleton->isHidden() ? who : "early"; };
    };
    skeleton->hideShimmer(tell("first "));
    scheduler.advanceBy(0.2);
    const double shown = skeleton->presentationAlpha();
    skeleton->hideShimmer(tell("second "));
    EXPECT_EQ(skeleton->presentationAlpha(), shown);
    EXPECT_FALSE(skeleton->isHidden());
    scheduler.advanceBy(0.1);
    EXPECT_EQ(told, "first second ");

    skeleton->showShimmer();
    scheduler.advanceBy(1);
    skeleton->hideShimmer();
    for (int count = 0; count < 2; ++count) {  // while it fades out, while it fades in
        scheduler.advanceBy(0.1);
        skeleton->showShimmer();
    }
    scheduler.advanceBy(0.29);
    EXPECT_FALSE(skeleton->isHidden());
    EXPECT_EQ(blocks.front()->alpha(), 1) << "the pulse waits for the end of the last fade-in";
    scheduler.advanceBy(0.02);
    EXPECT_EQ(blocks.front()->alpha(), 0.3);
}

}  // namespace
}  // namespace zorvik
