#include "platform/uikit/Animation.h"

#include <gtest/gtest.h>

#include "platform/headless/HeadlessPlatform.h"
#include "platform/uikit/UIView.h"

namespace zorvik::platform {

class AnimationTest : public testing::Test {
  protected:
    void fadeTo(double alpha, const std::string& name) {
        UIView::animate(
            1, [&] { view->setAlpha(alpha); }, note(name));
    }
    std::function<void(bool)> note(const std::string& name) {
        return [this, name](bool finished) { ends += name + (finished ? "+ " : "- "); };
    }

    headless::HeadlessPlatform platform;
    headless::HeadlessScheduler& scheduler = platform.scheduler();
    std::string ends;
    std::shared_ptr<UIView> view = makeOnMainThread<UIView>();
    std::shared_ptr<UIView> other = makeOnMainThread<UIView>();
};

TEST_F(AnimationTest, WhateverEndsAnAnimationEarlyTellsItsCompletionInALaterTurn) {
    const struct {
        const char* name;
        std::function<void()> end;
    } cases[] = {
        {"removed", [&] { view->removeAllAnimations(); }},
        {"set directly to the same value", [&] { view->setAlpha(0); }},
        {"the view is destroyed", [&] { view.reset(); }},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        ends.clear();
        view->setAlpha(1);
        fadeTo(0, "fade");
        scheduler.advanceBy(0.5);
        row.end();
        EXPECT_EQ(ends, "");
        EXPECT_EQ(scheduler.pendingCount(), 1u) << "the completion only, no delayed end";
        scheduler.runUntilIdle();
        EXPECT_EQ(ends, "fade- ");
    }
}

TEST_F(AnimationTest, AnotherAnimationStartsFromWhatIsOnScreen) {
    fadeTo(0, "down");
    EXPECT_EQ(view->presentationAlpha(), 1);
    scheduler.advanceBy(0.25);
    EXPECT_GT(view->presentationAlpha(), 0.75) << "slow at the start";
    scheduler.advanceBy(0.25);
    fadeTo(1, "up");
    EXPECT_DOUBLE_EQ(view->presentationAlpha(), 0.5);
    scheduler.advanceBy(1);
    EXPECT_EQ(ends, "down- up+ ");
}

TEST_F(AnimationTest, OneThatJoinedTheRunningOneEndsWithItEarlyToo) {
    fadeTo(0, "down");
    scheduler.advanceBy(0.5);
    fadeTo(0, "joined");
    scheduler.advanceBy(0.25);
    EXPECT_LT(view->presentationAlpha(), 0.25) << "it goes on as it did";
    view->removeAllAnimations();
    scheduler.runUntilIdle();
    EXPECT_EQ(ends, "joined- down- ");
    EXPECT_EQ(scheduler.pendingCount(), 0u) << scheduler.describePending();
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
    EXPECT_EQ(ends, "whole+ ");
    scheduler.advanceBy(0.1);
    EXPECT_EQ(ends, "whole+ broken- ");
}

}  // namespace zorvik::platform
