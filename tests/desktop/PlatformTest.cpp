#include <atomic>
#include <thread>

#include "platform/dispatch/DispatchQueue.h"
#include "platform/dispatch/Timer.h"
#include "platform/services/Environment.h"
#include "platform/webkit/WKWebView.h"
#include "tests/desktop/DesktopTest.h"

namespace zorvik::tests {
namespace {

using QualityOfService = DispatchQueue::QualityOfService;

class PlatformTest : public DesktopTest {};

TEST_F(PlatformTest, AnIdleScreenWakesUpNever) {
    const auto block = makeOnMainThread<UIView>(Rect{0, 0, 100, 100});
    screen->view()->addSubview(block);
    show(screen);
    bool isEnded = false;
    UIView::animate(
        0.2, [&] { block->setAlpha(0); }, [&](bool) { isEnded = true; });
    ASSERT_TRUE(waitUntil([&] { return isEnded; }));
    settle(1);
    const auto before = platform->wakeUps();
    settle(2);
    EXPECT_EQ(platform->wakeUps(), before);
}

TEST_F(PlatformTest, TasksOfManyThreadsAllRunInTheOrderOfEachThread) {
    constexpr int threadCount = 4;
    constexpr int taskCount = 500;
    std::array<int, threadCount> next{};
    int outOfOrder = 0;
    std::vector<std::thread> threads;
    for (std::size_t thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([&, thread] {
            for (int task = 0; task < taskCount; ++task) {
                DispatchQueue::main().async([&, thread, task] {
                    if (next[thread]++ != task) ++outOfOrder;
                });
            }
        });
    }
    EXPECT_TRUE(waitUntil([&] { return next == std::array{500, 500, 500, 500}; }));
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(outOfOrder, 0);
}

TEST_F(PlatformTest, ABusyQueueLeavesTheScreenAndThePageTheirTurns) {
    const auto page = makeOnMainThread<WKWebView>(Rect{0, 0, 300, 300}, WKWebViewConfiguration{});
    screen->view()->addSubview(page);
    show(screen);
    bool isBusy = true;
    std::function<void()> again = [&] {
        if (isBusy) DispatchQueue::main().async(again);
    };
    again();
    bool isTimerDue = false;
    const auto timer = Timer::scheduledTimer(0.2, [&] { isTimerDue = true; });
    std::string frames;
    page->evaluateJavaScript(
        "let frames = 0; const count = () => { ++frames; requestAnimationFrame(count) }; "
        "count(); 0",
        {});
    settle(1);
    page->evaluateJavaScript(
        "frames", [&](const auto& result) { frames = result ? result.value().text : "0"; });
    EXPECT_TRUE(waitUntil([&] { return !frames.empty(); })) << "the engine is heard";
    EXPECT_GT(std::stoi(frames), 15) << "and drawn";
    EXPECT_TRUE(isTimerDue);
    isBusy = false;
    settle();
}

TEST_F(PlatformTest, BackgroundTasksRunElsewhereAndManyAtOnce) {
    const auto main = std::this_thread::get_id();
    std::atomic<int> running = 0;
    std::atomic<int> ended = 0;
    std::atomic<int> most = 0;
    for (int task = 0; task < 4; ++task) {
        DispatchQueue::global(QualityOfService::background).async([&] {
            EXPECT_NE(std::this_thread::get_id(), main);
            const int now = ++running;
            if (now > most) most = now;
            while (most < 2)
                std::this_thread::yield();  // one that waits stops no other
            --running;
            ++ended;
        });
    }
    EXPECT_TRUE(waitUntil([&] { return ended == 4; }));
}

TEST_F(PlatformTest, ADroppedTimerLetsGoOfWhatItHeld) {
    const auto held = std::make_shared<int>();
    const auto timer = Timer::scheduledTimer(60, [held] {});
    timer->invalidate();
    EXPECT_EQ(held.use_count(), 1);
}

TEST(PlatformEndTest, BackgroundTasksAreEndedAndMainTasksAreReleased) {
    const auto held = std::make_shared<int>();
    std::atomic<int> ended = 0;
    {
        const auto platform = gtk::GtkPlatform::make({.applicationId = "zorvik-test"});
        for (int task = 0; task < 20; ++task) {
            DispatchQueue::global(QualityOfService::background).async([&ended, held] {
                DispatchQueue::main().async([held] { FAIL() << "the platform is gone"; });
                ++ended;
            });
        }
    }
    EXPECT_EQ(ended, 20);
    EXPECT_EQ(held.use_count(), 1);
}

TEST(PlatformEndTest, ViewsMayOutliveThePlatformAndANewOneMayFollow) {
    std::shared_ptr<WKWebView> page;
    std::shared_ptr<UIViewController> controller;
    for (int round = 0; round < 2; ++round) {
        const auto platform = gtk::GtkPlatform::make({.applicationId = "zorvik-test"});
        page = makeOnMainThread<WKWebView>(Rect{0, 0, 100, 100}, WKWebViewConfiguration{});
        controller = makeOnMainThread<UIViewController>();
        controller->view()->addSubview(page);
        GtkWindow* window = platform->openWindow("test", {300, 300});
        platform->presenterFor(window)->present(controller, true);
        page->load({*URL::parse("about:blank")});
        page->evaluateJavaScript("1", {});
        platform->runUntil([] { return false; }, 0.2);
    }
    page.reset();
    controller.reset();
}

TEST(PlatformStartTest, WhatCannotStartSaysWhy) {
    for (const std::string name : {"", ".", "..", "a/b"}) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(gtk::GtkPlatform::make({.applicationId = name}), nullptr);
        EXPECT_NE(testing::internal::GetCapturedStderr(), "");
    }
    EXPECT_FALSE(Environment::isInstalled());
}

}  // namespace
}  // namespace zorvik::tests
