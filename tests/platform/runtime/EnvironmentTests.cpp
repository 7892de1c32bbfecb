#include "platform/runtime/Environment.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <set>
#include <thread>

#include "platform/headless/HeadlessPlatform.h"
#include "platform/runtime/BackgroundThreads.h"
#include "platform/runtime/DispatchQueue.h"
#include "platform/runtime/MainThread.h"
#include "platform/runtime/Timer.h"
#include "platform/runtime/UserDefaults.h"
#include "platform/uikit/UIViewController.h"

namespace zorvik::platform {
namespace {

using headless::HeadlessPlatform;
using ThreadLog = std::vector<std::thread::id>;

// Uses the port in force, if any, and notes its thread when it is destroyed.
struct Recorder : UIViewController {
    explicit Recorder(ThreadLog& destructionLog, bool use = false)
        : log(destructionLog), usesPort(use) {}
    ~Recorder() override {
        log.push_back(std::this_thread::get_id());
        if (!usesPort) return;
        UserDefaults::standard().removeObject("key");
        DispatchQueue::main().async([last = makeOnMainThread<Recorder>(log)] { FAIL(); });
    }

    ThreadLog& log;
    bool usesPort;
};

TEST(EnvironmentDeathTest, OnePortIsInForceFromItsConstructionToItsDestruction) {
    EXPECT_DEATH(Environment::scheduler(), "no port is installed");
    std::make_unique<HeadlessPlatform>().reset();
    EXPECT_FALSE(Environment::isInstalled());
    const HeadlessPlatform platform;
    EXPECT_DEATH(const HeadlessPlatform second, "installed already");
}

TEST(EnvironmentTest, WhatStoodInForTheServicesIsKeptUntilThePortGoes) {
    std::weak_ptr<const void> kept;
    {
        HeadlessPlatform platform;
        headless::HeadlessApplication other(platform.scheduler());
        const auto exchange = [&](ApplicationService& application, std::shared_ptr<int> owner) {
            Environment::exchange({platform.scheduler(), platform.web(), application,
                                   platform.defaults(), platform.stage()},
                                  std::move(owner));
        };
        auto owner = std::make_shared<int>();
        kept = owner;
        exchange(other, std::move(owner));
        EXPECT_EQ(&Environment::application(), &other);
        exchange(platform.application(), nullptr);
        EXPECT_EQ(&Environment::application(), &platform.application());
        EXPECT_FALSE(kept.expired());
    }
    EXPECT_TRUE(kept.expired());
}

TEST(EnvironmentTest, AnObjectIsDestroyedOnTheMainThreadAndMayStillUseThePort) {
    ThreadLog log;
    {
        HeadlessPlatform platform(headless::HeadlessScheduler::Background::threads);
        const auto make = [&log] { return makeOnMainThread<Recorder>(log, true); };
        const auto global = DispatchQueue::global(DispatchQueue::QualityOfService::background);
        UIViewController presenter;
        platform.stage().show(make(), presenter, false, {});
        global.async([object = makeOnMainThread<Recorder>(log)] {});
        platform.scheduler().settle();
        EXPECT_EQ(log.size(), 1U) << "the screen is shown";
        DispatchQueue::main().async([object = make()] { FAIL(); });
        Timer::scheduledTimer(1, [object = make()] { FAIL(); });
        global.async([object = make()] {});
    }
    makeOnMainThread<Recorder>(log).reset();
    EXPECT_EQ(log, ThreadLog(10, std::this_thread::get_id()));
}

TEST(EnvironmentTest, WhatComesAfterThePortIsDroppedAndDestroyedOnTheMainThread) {
    ThreadLog log;
    std::make_unique<HeadlessPlatform>().reset();
    std::thread([&log] {
        const auto global = DispatchQueue::global(DispatchQueue::QualityOfService::background);
        DispatchQueue::main().async([object = makeOnMainThread<Recorder>(log)] { FAIL(); });
        global.async([object = makeOnMainThread<Recorder>(log)] { FAIL(); });
        makeOnMainThread<Recorder>(log).reset();
    }).join();
    EXPECT_TRUE(log.empty()) << "not on the thread that let go";
    HeadlessPlatform next;
    EXPECT_EQ(log, ThreadLog(3, std::this_thread::get_id()));
    next.scheduler().settle();
}

TEST(BackgroundThreadsTest, AStopWaitsForWhatEndsInTimeAndLeavesTheRestToItself) {
    const HeadlessPlatform platform;
    std::promise<void> hanging;
    std::promise<void> hasEnded;
    std::atomic<int> told = 0;
    std::atomic<bool> hasRun = false;
    {
        BackgroundThreads threads(1, [&told] { ++told; });
        threads.run([&hasRun] { hasRun = true; });
        threads.run([&] {
            hanging.get_future().wait();
            hasEnded.set_value();
        });
        threads.run([] { FAIL() << "it had not begun at the stop"; });
        const auto before = std::chrono::steady_clock::now();
        threads.stop(0.1);
        EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(1));
        threads.run([] { FAIL() << "it came after the stop"; });
    }
    EXPECT_TRUE(hasRun);
    hanging.set_value();
    hasEnded.get_future().wait();
    EXPECT_EQ(told, 1);
}

}  // namespace
}  // namespace zorvik::platform
