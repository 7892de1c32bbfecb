#include "platform/headless/HeadlessScheduler.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <thread>

namespace zorvik::platform::headless {
namespace {

using testing::ElementsAre;

// Calls back when the last copy of the task that captured it is destroyed.
std::shared_ptr<void> whenDestroyed(std::function<void()> action) {
    return std::shared_ptr<void>(nullptr, [action = std::move(action)](void*) { action(); });
}

class HeadlessSchedulerTest : public testing::Test {
  protected:
    Task noting(std::string name) {
        return [this, name] { log.push_back(name); };
    }

    std::vector<std::string> log;
    HeadlessScheduler scheduler;
};

TEST_F(HeadlessSchedulerTest, AdvancingRunsEachTaskAtItsOwnTimeAndEqualOnesInOrder) {
    const auto note = [this](const std::string& name) {
        return [this, name] { log.push_back(name + std::to_string(scheduler.steadySeconds())); };
    };
    scheduler.runOnMainAfter(2, note("late "));
    scheduler.runOnMainAfter(1, [this, note] {
        scheduler.runOnMain(note("turn "));
        scheduler.runOnMainAfter(0.5, note("nested "));
        scheduler.runOnMainAfter(1, note("nested late "));
        scheduler.runOnMainAfter(1.75, note("never "));
    });
    scheduler.runOnMainAfter(1, note("equal "));
    scheduler.runOnMainAfter(std::numeric_limits<double>::quiet_NaN(), note("now "));
    scheduler.runOnMainAfter(std::numeric_limits<double>::infinity(), note("never "));
    scheduler.advanceBy(2.5);
    EXPECT_THAT(log, ElementsAre("now 0.000000", "equal 1.000000", "turn 1.000000",
                                 "nested 1.500000", "late 2.000000", "nested late 2.000000"));
}

TEST_F(HeadlessSchedulerTest, ATaskThatRanOrWasCancelledIsDestroyedAtOnceAndMayPost) {
    const auto holding = [this](const std::string& name) {
        return [this, name, held = whenDestroyed([this, name] {
                                log.push_back(name + " destroyed");
                                scheduler.runOnMain(noting(name + " posted"));
                            })] { log.push_back(name + " ran"); };
    };
    scheduler.cancel(scheduler.runOnMainAfter(1, holding("delayed")));
    EXPECT_THAT(log, ElementsAre("delayed destroyed"));
    scheduler.runUntilIdle();
    log.clear();
    Scheduler::TaskId due = 0;
    scheduler.runOnMainAfter(1, holding("first"));
    scheduler.runOnMainAfter(1, [&] { scheduler.cancel(due); });
    due = scheduler.runOnMainAfter(1, holding("due"));
    scheduler.advanceBy(1);
    EXPECT_THAT(log, ElementsAre("first ran", "first destroyed", "due destroyed", "first posted",
                                 "due posted"));
}

TEST(HeadlessSchedulerThreadsTest, SettleWaitsForThreadsAndTheirTurns) {
    HeadlessScheduler scheduler(HeadlessScheduler::Background::threads);
    std::atomic<int> offMain = 0;
    int turns = 0;
    const auto main = std::this_thread::get_id();
    const auto postTurn = [&] {
        scheduler.runOnMain([&] { turns += std::this_thread::get_id() == main; });
    };
    for (int round = 1; round <= 100; ++round) {
        scheduler.runInBackground([&, held = whenDestroyed(postTurn)] {
            offMain += std::this_thread::get_id() != main;
            scheduler.runOnMain([&] { scheduler.runInBackground(postTurn); });
        });
        scheduler.settle();
        ASSERT_EQ(offMain, round);
        ASSERT_EQ(turns, 2 * round);
    }
}

TEST_F(HeadlessSchedulerTest, MovingTheClockOnMakesReadyWhatIsDueAndRunsNothing) {
    scheduler.runOnMainAfter(0.1, noting("first"));
    scheduler.runOnMainAfter(0.3, noting("second"));
    scheduler.runOnMainAfter(0.4, noting("not yet"));
    scheduler.moveBy(scheduler.nextDelay().value());
    EXPECT_EQ(scheduler.nextDelay(), 0);
    scheduler.moveBy(0.25);
    scheduler.runOnMain(noting("posted"));
    EXPECT_THAT(log, ElementsAre());
    scheduler.runUntilIdle();
    EXPECT_THAT(log, ElementsAre("first", "second", "posted"));
    EXPECT_EQ(scheduler.turnCount(), 3U);
}

TEST(HeadlessSchedulerThreadTest, ATaskToldToRunRunsAndEndsOnAThreadOfItsOwnMeanwhile) {
    HeadlessScheduler scheduler(HeadlessScheduler::Background::manualThread);
    std::vector<std::thread::id> threads;
    const auto note = [&] { threads.push_back(std::this_thread::get_id()); };
    for (int count = 0; count < 2; ++count)
        scheduler.runInBackground([note, ended = whenDestroyed(note)] { note(); });
    EXPECT_EQ(scheduler.backgroundCount(), 2U);
    EXPECT_TRUE(threads.empty());
    EXPECT_TRUE(scheduler.runOneBackgroundTask(1));
    EXPECT_EQ(threads.size(), 2U);
    scheduler.settle();
    EXPECT_FALSE(scheduler.runOneBackgroundTask());
    EXPECT_THAT(threads, testing::AllOf(testing::SizeIs(4), testing::Each(threads.front()),
                                        testing::Each(testing::Ne(std::this_thread::get_id()))));
}

}  // namespace
}  // namespace zorvik::platform::headless
