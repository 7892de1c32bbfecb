#include "platform/uikit/Animation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/headless/HeadlessPlatform.h"
#include "platform/uikit/UIView.h"

namespace zorvik::platform {

using testing::ElementsAre;

class AnimationTest : public testing::Test {
  protected:
    std::function<void(bool)> note(const std::string& name) {
        return [this, name](bool finished) {
            ends.push_back(name + (finished ? " finished" : " ended"));
        };
    }

    headless::HeadlessPlatform platform;
    headless::HeadlessScheduler& scheduler = platform.scheduler();
    std::vector<std::string> ends;
    std::shared_ptr<UIView> view = makeOnMainThread<UIView>();
    std::shared_ptr<UIView> other = makeOnMainThread<UIView>();
};

TEST_F(AnimationTest, TheOpacityOnScreenFollowsTheClock) {
    UIView::animate(2, [&] { view->setAlpha(0); });
    EXPECT_EQ(view->alpha(), 0);
    EXPECT_EQ(view->presentationAlpha(), 1);
    scheduler.advanceBy(0.5);
    const double early = view->presentationAlpha();
    EXPECT_GT(early, 0.75) << "slow at the start";
    EXPECT_LT(early, 1);
    scheduler.advanceBy(0.5);
    EXPECT_DOUBLE_EQ(view->presentationAlpha(), 0.5);
    scheduler.advanceBy(0.5);
    EXPECT_DOUBLE_EQ(view->presentationAlpha(), 1 - early);
    scheduler.advanceBy(0.5);
    EXPECT_EQ(view->presentationAlpha(), 0);
    EXPECT_EQ(scheduler.pendingCount(), 0u);
}

TEST_F(AnimationTest, AnAnimationToTheSameValueTakesItsWholeTime) {
    UIView::animate(
        1, [&] { view->setAlpha(1); }, note("same"));
    scheduler.advanceBy(0.9);
    EXPECT_TRUE(ends.empty());
    scheduler.advanceBy(0.1);
    EXPECT_THAT(ends, ElementsAre("same finished"));
}

TEST_F(AnimationTest, WhateverEndsAnAnimationEarlyTellsItsCompletionInALaterTurn) {
    const struct {
        std::string name;
        std::function<void()> end;
        double alphaAfterwards;
    } cases[] = {
        {"removed", [&] { view->removeAllAnimations(); }, 0},
        {"set directly", [&] { view->setAlpha(0.7); }, 0.7},
        {"set directly to the same value", [&] { view->setAlpha(0); }, 0},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        ends.clear();
        view->setAlpha(1);
        UIView::animate(
            1, [&] { view->setAlpha(0); }, note("fade"));
        scheduler.advanceBy(0.5);
        row.end();
        EXPECT_EQ(view->presentationAlpha(), row.alphaAfterwards);
        EXPECT_TRUE(ends.empty());
        EXPECT_EQ(scheduler.pendingCount(), 1u) << "the completion only, no delayed end";
        scheduler.advanceBy(5);
        EXPECT_THAT(ends, ElementsAre("fade ended"));
    }
}

TEST_F(AnimationTest, AnotherAnimationStartsFromWhatIsOnScreen) {
    UIView::animate(
        1, [&] { view->setAlpha(0); }, note("down"));
    scheduler.advanceBy(0.5);
    UIView::animate(
        1, [&] { view->setAlpha(1); }, note("up"));
    EXPECT_DOUBLE_EQ(view->presentationAlpha(), 0.5);
    scheduler.runUntilIdle();
    EXPECT_THAT(ends, ElementsAre("down ended"));
    scheduler.advanceBy(1);
    EXPECT_THAT(ends, ElementsAre("down ended", "up finished"));
}

TEST_F(AnimationTest, AGroupEndsWithItsLastViewAndFinishedOnlyIfAllDid) {
    const auto both = [&] {
        view->setAlpha(0);
        other->setAlpha(0);
    };
    UIView::animate(1, both, note("whole"));
    scheduler.advanceBy(1);
    UIView::animate(1, both, note("broken"));
    view->removeAllAnimations();
    scheduler.advanceBy(0.9);
    EXPECT_THAT(ends, ElementsAre("whole finished"));
    scheduler.advanceBy(0.1);
    EXPECT_THAT(ends, ElementsAre("whole finished", "broken ended"));
}

TEST_F(AnimationTest, AViewThatGoesEndsItsAnimationAndIsNotKeptByTheCompletion) {
    UIView::animate(
        1, [&] { view->setAlpha(0); }, note("fade"));
    const std::weak_ptr<UIView> ended = view;
    view.reset();
    EXPECT_TRUE(ended.expired());
    scheduler.runUntilIdle();
    EXPECT_THAT(ends, ElementsAre("fade ended"));
    EXPECT_EQ(scheduler.pendingCount(), 0u);
}

TEST_F(AnimationTest, ACallThatAnimatesNothingFinishesInTheNextTurn) {
    UIView::animate(
        5, [] {}, note("nothing"));
    EXPECT_TRUE(ends.empty());
    scheduler.runUntilIdle();
    EXPECT_THAT(ends, ElementsAre("nothing finished"));
}

TEST_F(AnimationTest, ANestedCallAnimatesWithItsOwnTimeAndTheOuterOneGoesOn) {
    UIView::animate(
        2,
        [&] {
            UIView::animate(
                1, [&] { view->setAlpha(0); }, note("inner"));
            other->setAlpha(0);
        },
        note("outer"));
    scheduler.advanceBy(1);
    EXPECT_EQ(view->presentationAlpha(), 0);
    EXPECT_DOUBLE_EQ(other->presentationAlpha(), 0.5);
    EXPECT_THAT(ends, ElementsAre("inner finished"));
    scheduler.advanceBy(1);
    EXPECT_THAT(ends, ElementsAre("inner finished", "outer finished"));
}

}  // namespace zorvik::platform
