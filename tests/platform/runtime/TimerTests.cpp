#include "platform/runtime/Timer.h"

#include <gtest/gtest.h>

#include "platform/headless/HeadlessPlatform.h"

namespace zorvik::platform {

TEST(TimerTest, InvalidatedOrOutlivingItsPortATimerHoldsNothingAndNeverFires) {
    const auto held = std::make_shared<int>();
    std::shared_ptr<Timer> outliving;
    {
        const headless::HeadlessPlatform platform;
        outliving = Timer::scheduledTimer(1, [held] { FAIL(); });
        const std::weak_ptr<Timer> timer = Timer::scheduledTimer(1, [held] { FAIL(); });
        timer.lock()->invalidate();
        EXPECT_TRUE(timer.expired());
        EXPECT_EQ(held.use_count(), 2);
    }
    headless::HeadlessPlatform next;
    int fired = 0;
    Timer::scheduledTimer(1, [&] { ++fired; });
    outliving->invalidate();
    EXPECT_EQ(held.use_count(), 1);
    next.scheduler().advanceBy(1);
    EXPECT_EQ(fired, 1);
}

}  // namespace zorvik::platform
