#include "platform/dispatch/Timer.h"

#include <gtest/gtest.h>

#include "platform/headless/HeadlessPlatform.h"

namespace zorvik::platform {
namespace {

class TimerTest : public testing::Test {
  protected:
    headless::HeadlessPlatform platform;
    int fired = 0;
};

TEST_F(TimerTest, FiresOnceEvenWhenNobodyHoldsIt) {
    const std::weak_ptr<Timer> timer = Timer::scheduledTimer(1, [this] { ++fired; });
    ASSERT_FALSE(timer.expired());
    EXPECT_TRUE(timer.lock()->isValid());
    platform.scheduler().advanceBy(0.5);
    EXPECT_EQ(fired, 0);
    platform.scheduler().advanceBy(10);
    EXPECT_EQ(fired, 1);
    EXPECT_TRUE(timer.expired());
}

TEST_F(TimerTest, InvalidatingReleasesItsBlock) {
    const auto held = std::make_shared<int>();
    const auto timer = Timer::scheduledTimer(1, [this, held] { ++fired; });
    timer->invalidate();
    EXPECT_FALSE(timer->isValid());
    EXPECT_EQ(held.use_count(), 1);
    timer->invalidate();
    platform.scheduler().advanceBy(2);
    EXPECT_EQ(fired, 0);

    // The run loop's hold may be the last one.
    const std::weak_ptr<Timer> unheld = Timer::scheduledTimer(1, [this] { ++fired; });
    unheld.lock()->invalidate();
    EXPECT_TRUE(unheld.expired());
}

TEST_F(TimerTest, IsNoLongerValidInsideItsBlock) {
    std::shared_ptr<Timer> timer;
    timer = Timer::scheduledTimer(1, [&] {
        EXPECT_FALSE(timer->isValid());
        timer->invalidate();
        timer = Timer::scheduledTimer(1, [this] { ++fired; });
    });
    platform.scheduler().advanceBy(2);
    EXPECT_EQ(fired, 1);
}

TEST(TimerEndTest, ATimerThatOutlivesItsPortLeavesTheNextPortAlone) {
    std::shared_ptr<Timer> old;
    {
        const headless::HeadlessPlatform platform;
        old = Timer::scheduledTimer(1, [] { FAIL(); });
    }
    EXPECT_FALSE(old->isValid());
    old->invalidate();

    headless::HeadlessPlatform next;
    int fired = 0;
    Timer::scheduledTimer(1, [&fired] { ++fired; });
    old->invalidate();
    next.scheduler().advanceBy(1);
    EXPECT_EQ(fired, 1);
}

}  // namespace
}  // namespace zorvik::platform
