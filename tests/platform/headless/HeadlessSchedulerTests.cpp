#include "platform/headless/HeadlessScheduler.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <thread>

namespace zorvik::platform::headless {
namespace {

using testing::ElementsAre;

TEST(HeadlessSchedulerTest, MovingTheClockOnMakesReadyWhatIsDueAndRunsNothing) {
    HeadlessScheduler scheduler;
    std::vector<std::string> log;
    const auto noting = [&](const char* name) { return [&, name] { log.emplace_back(name); }; };
    scheduler.runOnMainAfter(std::numeric_limits<double>::infinity(), noting("never"));
    scheduler.runOnMainAfter(std::numeric_limits<double>::quiet_NaN(), noting("at once"));
    scheduler.runOneTurn();
    scheduler.runOnMainAfter(0.1, noting("first"));
    scheduler.runOnMainAfter(0.3, noting("second"));
    scheduler.runOnMainAfter(0.4, noting("not yet"));
    scheduler.moveBy(scheduler.nextDelay().value());
    EXPECT_EQ(scheduler.nextDelay(), 0);
    scheduler.moveBy(0.25);
    scheduler.runOnMain(noting("posted"));
    EXPECT_THAT(log, ElementsAre("at once"));
    scheduler.runUntilIdle();
    EXPECT_THAT(log, ElementsAre("at once", "first", "second", "posted"));
    EXPECT_EQ(scheduler.turnCount(), 4U);
}

TEST(HeadlessSchedulerTest, ACancelledTaskIsDestroyedAtOnceDueOrNotAndMayPostAsItGoes) {
    HeadlessScheduler scheduler;
    std::string log;
    const auto holding = [&](const std::string& name) {
        const auto destroyed = [&, name](void*) {
            log += name + "destroyed ";
            scheduler.runOnMain([&] { log += "posted "; });
        };
        return [&, held = std::shared_ptr<void>(nullptr, destroyed)] { log += "ran "; };
    };
    scheduler.cancel(scheduler.runOnMainAfter(1, holding("")));
    EXPECT_EQ(log, "destroyed ");
    Scheduler::TaskId due = 0;
    scheduler.runOnMainAfter(1, holding("first "));
    scheduler.runOnMainAfter(1, [&] { scheduler.cancel(due); });
    due = scheduler.runOnMainAfter(1, holding("due "));
    scheduler.advanceBy(1);
    EXPECT_EQ(log, "destroyed posted ran first destroyed due destroyed posted posted ");
}

TEST(HeadlessSchedulerThreadTest, ATaskToldToRunRunsAndEndsOnAThreadOfItsOwnMeanwhile) {
    HeadlessScheduler scheduler(HeadlessScheduler::Background::manualThread);
    std::vector<std::thread::id> threads;
    const auto note = [&] { threads.push_back(std::this_thread::get_id()); };
    for (int count = 0; count < 2; ++count)
        scheduler.runInBackground(
            [note, ended = std::shared_ptr<void>(nullptr, [note](void*) { note(); })] { note(); });
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
