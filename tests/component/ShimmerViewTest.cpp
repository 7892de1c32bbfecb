#include "platform/uikit/Layout.h"
#include "platform/uikit/UIScrollView.h"
#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

using platform::Rect;
using platform::UIColor;
using platform::UIScrollView;
using platform::UIView;

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
        skeleton->setTranslatesAutoresizingMaskIntoConstraints(false);
        skeleton->setHidden(true);
        UIView& root = *presenter->view();
        root.addSubview(skeleton);
        platform::NSLayoutConstraint::activate(
            {skeleton->topAnchor().constraintEqualTo(root.topAnchor()),
             skeleton->leadingAnchor().constraintEqualTo(root.leadingAnchor()),
             skeleton->trailingAnchor().constraintEqualTo(root.trailingAnchor()),
             skeleton->bottomAnchor().constraintEqualTo(root.bottomAnchor())});
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
    platform::layoutTree(*presenter->view(), {390, 500}, {});
    ASSERT_EQ(blocks.size(), 46u);
    const auto scroll = findView<UIScrollView>(*skeleton);
    const auto content = scroll->subviews().at(0);
    EXPECT_EQ(scroll->frame(), (Rect{0, 0, 390, 500}));
    EXPECT_EQ(content->frame().height, 930);
    EXPECT_EQ(content->frame().width, 390);
    EXPECT_EQ(scroll->contentSize().height, 930);
    EXPECT_FALSE(scroll->showsVerticalScrollIndicator());
    EXPECT_FALSE(scroll->showsHorizontalScrollIndicator());
    EXPECT_EQ(blocks[0]->frame(), (Rect{0, 0, 390, 74}));

    const double widths[] = {200, 180, 220, 160, 190, 210, 170, 200,
                             180, 190, 180, 220, 160, 240, 200};
    for (std::size_t row = 0; row < 15; ++row) {
        SCOPED_TRACE(row);
        const auto& icon = *blocks[1 + row * 3];
        const auto& title = *blocks[2 + row * 3];
        const auto& subtitle = *blocks[3 + row * 3];
        EXPECT_EQ(icon.superview()->frame(), (Rect{0, static_cast<double>(row) * 56, 358, 40}));
        EXPECT_EQ(icon.frame(), (Rect{0, 8, 24, 24}));
        EXPECT_EQ(title.superview()->frame(), (Rect{36, 6, 322, 28}));
        EXPECT_EQ(title.frame(), (Rect{0, 0, 322, 16}));
        EXPECT_EQ(subtitle.frame(), (Rect{0, 24, widths[row], 12}));
    }
    for (const auto& block : blocks)
        EXPECT_EQ(block->cornerRadius(), 4);
    EXPECT_EQ(skeleton->backgroundColor(), UIColor::white());
}

TEST_F(ShimmerViewTest, ThePulseStartsAfterTheFadeInAndTravelsDownOverFourAndAHalfSeconds) {
    skeleton->showShimmer();
    EXPECT_FALSE(skeleton->isHidden());
    EXPECT_EQ(skeleton->presentationAlpha(), 0);
    scheduler.advanceBy(0.29);
    EXPECT_EQ(blocks[0]->alpha(), 1);
    scheduler.advanceBy(0.02);  // 0.31
    EXPECT_EQ(skeleton->presentationAlpha(), 1);
    for (std::size_t block = 0; block < 12; ++block) {
        EXPECT_EQ(blocks[block]->alpha(), 0.3) << block;
        EXPECT_EQ(blocks[block + 1]->alpha(), 1) << block;
        scheduler.advanceBy(0.1);
    }
    scheduler.advanceBy(0.29);  // 1.8
    EXPECT_EQ(blocks[0]->alpha(), 0.8);
    EXPECT_EQ(blocks[45]->alpha(), 1);
    scheduler.advanceBy(2.99);  // 4.79
    EXPECT_EQ(blocks[45]->alpha(), 1);
    scheduler.advanceBy(0.02);  // 4.81
    EXPECT_EQ(blocks[45]->alpha(), 0.3);
}

TEST_F(ShimmerViewTest, OneCycleTakesTwoPointSixSeconds) {
    skeleton->setHidden(false);
    skeleton->startShimmerAnimation();
    for (int cycle = 0; cycle < 3; ++cycle) {
        scheduler.advanceBy(0.01);
        EXPECT_EQ(blocks[0]->alpha(), 0.3) << cycle;
        scheduler.advanceBy(1.2);  // 1.21
        EXPECT_EQ(blocks[0]->alpha(), 0.8);
        EXPECT_LT(blocks[0]->presentationAlpha(), 0.4);
        scheduler.advanceBy(1.2);  // 2.41, the pause
        EXPECT_EQ(blocks[0]->presentationAlpha(), 0.8);
        scheduler.advanceBy(0.18);  // 2.59
        EXPECT_EQ(blocks[0]->alpha(), 0.8);
        scheduler.advanceBy(0.01);
    }
}

struct MomentCase {
    const char* name;
    double seconds;  // after the show
};

const MomentCase moments[] = {
    {"at once", 0},           {"in the fade-in", 0.2}, {"at its end", 0.3}, {"first dim", 0.9},
    {"first brightens", 2.1}, {"first pauses", 2.8},   {"all pulse", 6.05}, {"much later", 60.55},
};

TEST_F(ShimmerViewTest, AStoppedSkeletonNeverPulsesAgainWhateverWasInFlight) {
    for (const auto& moment : moments) {
        SCOPED_TRACE(moment.name);
        skeleton->showShimmer();
        scheduler.advanceBy(moment.seconds);
        skeleton->stopShimmerAnimation();
        expectStill();
        EXPECT_FALSE(skeleton->isHidden());
    }
}

TEST_F(ShimmerViewTest, AHiddenSkeletonFadesOutStaysHiddenAndTellsOnce) {
    for (const auto& moment : moments) {
        SCOPED_TRACE(moment.name);
        skeleton->showShimmer();
        scheduler.advanceBy(moment.seconds);
        int told = 0;
        skeleton->hideShimmer([&] {
            ++told;
            EXPECT_TRUE(skeleton->isHidden());
        });
        EXPECT_EQ(told, 0);
        scheduler.advanceBy(0.29);
        EXPECT_FALSE(skeleton->isHidden());
        scheduler.advanceBy(0.02);
        EXPECT_TRUE(skeleton->isHidden());
        EXPECT_EQ(told, 1);
        expectStill();
        EXPECT_TRUE(skeleton->isHidden());
        EXPECT_EQ(told, 1);
    }
    skeleton->hideShimmer();  // nobody to tell
    scheduler.advanceBy(1);
    EXPECT_TRUE(skeleton->isHidden());
}

TEST_F(ShimmerViewTest, AReleasedSkeletonLeavesNothingBehind) {
    for (const auto& moment : moments) {
        for (const bool isHiding : {false, true}) {
            SCOPED_TRACE(moment.name);
            auto released = ZorvikShimmerView::initWithFrame();
            const std::weak_ptr<UIView> weak = released;
            released->showShimmer();
            scheduler.advanceBy(moment.seconds);
            if (isHiding) released->hideShimmer();
            released.reset();
            EXPECT_TRUE(weak.expired());
            scheduler.runUntilIdle();
            EXPECT_EQ(scheduler.pendingCount(), 0u) << scheduler.describePending();
        }
    }
}

TEST_F(ShimmerViewTest, ASecondStartCountsAllBlocksAgainFromTheFirst) {
    skeleton->setHidden(false);
    skeleton->startShimmerAnimation();
    scheduler.advanceBy(2.05);
    skeleton->startShimmerAnimation();
    EXPECT_EQ(blocks[0]->alpha(), 1);
    scheduler.advanceBy(0.15);
    EXPECT_EQ(blocks[0]->alpha(), 0.3);
    EXPECT_EQ(blocks[1]->alpha(), 0.3);
    for (std::size_t block = 2; block < blocks.size(); ++block) {
        EXPECT_EQ(blocks[block]->alpha(), 1) << block;
    }
    EXPECT_EQ(scheduler.pendingCount(), 46u) << "one timer or fade a block, no more";
}

TEST_F(ShimmerViewTest, AFadeThatANewerOneReplacedChangesNothing) {
    skeleton->showShimmer();
    scheduler.advanceBy(1);
    skeleton->hideShimmer();
    scheduler.advanceBy(0.1);
    skeleton->showShimmer();  // while it fades out
    scheduler.advanceBy(0.1);
    skeleton->showShimmer();  // while it fades in
    scheduler.advanceBy(0.29);
    EXPECT_FALSE(skeleton->isHidden());
    EXPECT_EQ(blocks.front()->alpha(), 1) << "the pulse waits for the end of the last fade-in";
    scheduler.advanceBy(0.02);
    EXPECT_EQ(blocks.front()->alpha(), 0.3);
}

TEST_F(ShimmerViewTest, ShowAndHideMayAlternate) {
    for (int round = 0; round < 3; ++round) {
        skeleton->showShimmer();
        scheduler.advanceBy(0.35);
        EXPECT_FALSE(skeleton->isHidden());
        EXPECT_EQ(blocks[0]->alpha(), 0.3);
        skeleton->hideShimmer();
        scheduler.advanceBy(0.31);
        EXPECT_TRUE(skeleton->isHidden());
    }
    expectStill();
}

}  // namespace
}  // namespace zorvik
