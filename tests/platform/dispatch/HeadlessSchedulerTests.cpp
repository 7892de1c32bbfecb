#include "platform/headless/HeadlessScheduler.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <thread>

namespace zorvik::platform::headless {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Calls back when the last copy of the task that captured it is destroyed.
std::shared_ptr<void> whenDestroyed(std::function<void()> action) {
    return std::shared_ptr<void>(nullptr, [action = std::move(action)](void*) { action(); });
}

class HeadlessSchedulerTest : public testing::Test {
  protected:
    Task noting(std::string name) {
        return [this, name] { log.push_back(name); };
    }

    HeadlessScheduler scheduler;
    std::vector<std::string> log;
};

TEST_F(HeadlessSchedulerTest, TurnsRunInOrderAndNeverInsideThePost) {
    scheduler.runOnMain([this] {
        scheduler.runOnMain(noting("c"));
        log.push_back("a");
    });
    scheduler.runOnMainAfter(0, noting("b"));
    scheduler.runOnMainAfter(-1, {});
    scheduler.runOnMainAfter(std::numeric_limits<double>::quiet_NaN(), noting("nan"));
    EXPECT_THAT(log, IsEmpty());
    EXPECT_TRUE(scheduler.runOneTurn());
    EXPECT_THAT(log, ElementsAre("a"));
    scheduler.runUntilIdle();
    EXPECT_THAT(log, ElementsAre("a", "b", "nan", "c"));
    EXPECT_FALSE(scheduler.runOneTurn());
}

TEST_F(HeadlessSchedulerTest, DelayedTasksRunByDeadlineThenByNumber) {
    scheduler.runOnMainAfter(2, noting("late"));
    scheduler.runOnMainAfter(1, noting("first"));
    scheduler.runOnMainAfter(1, noting("second"));
    scheduler.runUntilIdle();
    EXPECT_THAT(log, IsEmpty());
    EXPECT_EQ(scheduler.nextDelay(), 1);
    scheduler.advanceBy(1);
    EXPECT_THAT(log, ElementsAre("first", "second"));
    scheduler.advanceBy(1);
    EXPECT_THAT(log, ElementsAre("first", "second", "late"));
}

TEST_F(HeadlessSchedulerTest, AdvancingRunsEachTaskAtItsOwnTime) {
    std::vector<double> times;
    const auto note = [this, &times] { times.push_back(scheduler.steadySeconds()); };
    scheduler.runOnMain(note);
    scheduler.runOnMainAfter(1, [&] {
        scheduler.runOnMain(note);
        scheduler.runOnMainAfter(0.5, note);
        scheduler.runOnMainAfter(1.5, note);
        scheduler.runOnMainAfter(1.75, note);
    });
    scheduler.runOnMainAfter(2.25, note);
    const double wall = scheduler.wallSeconds();
    scheduler.advanceBy(2.5);
    EXPECT_THAT(times, ElementsAre(0, 1, 1.5, 2.25, 2.5));
    EXPECT_EQ(scheduler.steadySeconds(), 2.5);
    EXPECT_EQ(scheduler.wallSeconds(), wall + 2.5);
    EXPECT_EQ(scheduler.pendingCount(), 1U);
}

TEST_F(HeadlessSchedulerTest, TimeNeitherRunsBackwardsNorToInfinity) {
    scheduler.runOnMainAfter(1, [this] { scheduler.advanceBy(5); });
    scheduler.advanceBy(2);
    EXPECT_EQ(scheduler.steadySeconds(), 6);
    scheduler.runOnMainAfter(std::numeric_limits<double>::infinity(), noting("never"));
    for (const double seconds : {-1.0, std::numeric_limits<double>::infinity(),
                                 std::numeric_limits<double>::quiet_NaN()}) {
        scheduler.advanceBy(seconds);
        EXPECT_EQ(scheduler.steadySeconds(), 6);
    }
    EXPECT_THAT(log, IsEmpty());
}

TEST_F(HeadlessSchedulerTest, SettingTheWallClockRunsNothing) {
    scheduler.advanceBy(2);
    scheduler.runOnMain(noting("ready"));
    scheduler.runOnMainAfter(1, noting("later"));
    scheduler.setNow(1e9);
    EXPECT_THAT(log, IsEmpty());
    EXPECT_EQ(scheduler.wallSeconds(), 1e9);
    EXPECT_EQ(scheduler.steadySeconds(), 2);
    scheduler.advanceBy(0.5);
    EXPECT_EQ(scheduler.wallSeconds(), 1e9 + 0.5);
}

TEST_F(HeadlessSchedulerTest, ACancelledTaskIsDroppedAtOnceWithWhatItHolds) {
    const auto holdsDestruction = [this](std::string name) {
        return [held = whenDestroyed(noting(std::move(name)))] { FAIL(); };
    };
    const auto delayed = scheduler.runOnMainAfter(1, holdsDestruction("delayed"));
    scheduler.cancel(delayed);
    EXPECT_THAT(log, ElementsAre("delayed"));
    scheduler.cancel(delayed);
    scheduler.cancel(4711);

    // Due, but its turn has not come.
    Scheduler::TaskId due = 0;
    scheduler.runOnMainAfter(1, [&] { scheduler.cancel(due); });
    due = scheduler.runOnMainAfter(1, holdsDestruction("due"));
    scheduler.advanceBy(1);
    EXPECT_THAT(log, ElementsAre("delayed", "due"));
    EXPECT_EQ(scheduler.pendingCount(), 0U);
}

TEST_F(HeadlessSchedulerTest, ATaskIsDestroyedRightAfterItRanAndMayPost) {
    scheduler.runOnMain([this, held = whenDestroyed([this] {
                                   log.push_back("destroyed");
                                   scheduler.runOnMain(noting("posted"));
                               })] { log.push_back("ran"); });
    scheduler.runOnMain(noting("next"));
    scheduler.runUntilIdle();
    EXPECT_THAT(log, ElementsAre("ran", "destroyed", "next", "posted"));
}

TEST_F(HeadlessSchedulerTest, BackgroundTasksWaitAndRunInTheChosenOrder) {
    for (const char* name : {"a", "b", "c"})
        scheduler.runInBackground(noting(name));
    scheduler.runUntilIdle();
    EXPECT_EQ(scheduler.backgroundCount(), 3U);
    EXPECT_TRUE(scheduler.runOneBackgroundTask(1));
    EXPECT_FALSE(scheduler.runOneBackgroundTask(2));
    scheduler.runOnMain([this] { scheduler.runInBackground(noting("d")); });
    scheduler.settle();
    EXPECT_THAT(log, ElementsAre("b", "a", "c", "d"));
}

TEST_F(HeadlessSchedulerTest, DescribesWhatIsPending) {
    EXPECT_EQ(scheduler.nextDelay(), std::nullopt);
    scheduler.runOnMainAfter(1.5, noting("late"));
    scheduler.runOnMain(noting("ready"));
    scheduler.advanceBy(0);
    scheduler.runOnMain(noting("ready"));
    EXPECT_EQ(scheduler.describePending(), "#3 ready\n#1 due in 1.5 s\n");
    EXPECT_EQ(scheduler.nextDelay(), 0);
    EXPECT_EQ(scheduler.pendingCount(), 2U);
}

TEST(HeadlessSchedulerEndTest, WhatIsPendingIsDestroyedUnrunWithAllItPostsInTurn) {
    int destroyed = 0;
    {
        HeadlessScheduler scheduler;
        const auto holder = [&scheduler, &destroyed](int posts) {
            const auto make = [&](const auto& self, int count) -> Task {
                return [held = whenDestroyed([&scheduler, &destroyed, self, count] {
                            ++destroyed;
                            if (count > 0) scheduler.runOnMainAfter(1, self(self, count - 1));
                        })] { FAIL(); };
            };
            return make(make, posts);
        };
        scheduler.runOnMain(holder(3));
        scheduler.runOnMainAfter(1, holder(0));
        scheduler.runInBackground(holder(1));
    }
    EXPECT_EQ(destroyed, 4 + 1 + 2);
}

TEST(HeadlessSchedulerThreadsTest, SettleWaitsForThreadsAndTheirTurns) {
    HeadlessScheduler scheduler(HeadlessScheduler::Background::threads);
    std::atomic<int> offMain = 0;
    int turns = 0;
    const auto postTurn = [&] { scheduler.runOnMain([&] { turns += scheduler.isMainThread(); }); };
    for (int round = 1; round <= 100; ++round) {
        for (int count = 0; count < 3; ++count) {
            scheduler.runInBackground([&, held = whenDestroyed(postTurn)] {
                for (int pause = 0; pause < 20; ++pause)
                    std::this_thread::yield();
                offMain += !scheduler.isMainThread();
                scheduler.runOnMain([&] { scheduler.runInBackground(postTurn); });
            });
        }
        scheduler.settle();
        ASSERT_EQ(offMain, 3 * round);
        ASSERT_EQ(turns, 6 * round);
    }
    EXPECT_FALSE(scheduler.runOneBackgroundTask());
}

TEST(HeadlessSchedulerThreadsTest, TheEndJoinsTheThreadsAndDropsWhatWaits) {
    std::atomic<int> ran = 0;
    std::atomic<int> destroyed = 0;
    {
        HeadlessScheduler scheduler(HeadlessScheduler::Background::threads);
        for (int index = 0; index < 1000; ++index) {
            scheduler.runInBackground([&, held = whenDestroyed([&] { ++destroyed; })] {
                ++ran;
                scheduler.runOnMain([held = whenDestroyed([&] { ++destroyed; })] { FAIL(); });
            });
        }
    }
    EXPECT_EQ(destroyed, 1000 + ran);
}

TEST(HeadlessSchedulerDeathTest, OnlyTheMainThreadTurnsTheQueue) {
    EXPECT_DEATH(
        {
            HeadlessScheduler scheduler;
            std::thread([&scheduler] { scheduler.runUntilIdle(); }).join();
        },
        "only the main thread");
}

}  // namespace
}  // namespace zorvik::platform::headless
