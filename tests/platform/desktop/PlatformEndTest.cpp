#include <chrono>
#include <future>
#include <thread>

#include "platform/runtime/DispatchQueue.h"
#include "platform/webkit/WKWebView.h"
#include "tests/platform/desktop/DesktopPortTest.h"

namespace zorvik::tests {
namespace {

TEST(PlatformEndTest, QuittingLeavesAHangingCallToItselfAndDropsItsAnswer) {
    std::promise<void> network;
    std::promise<void> hasAnswered;
    std::weak_ptr<UIViewController> held;
    std::chrono::steady_clock::time_point quit;
    {
        const auto platform = Platform::make({.applicationId = "zorvik-test"});
        const auto presenter = platform->presenterFor(platform->openWindow("test", {300, 300}));
        const auto screen = makeOnMainThread<UIViewController>();
        screen->view()->addSubview(
            makeOnMainThread<WKWebView>(Rect{0, 0, 100, 100}, WKWebViewConfiguration{}));
        presenter->present(screen, false);
        held = screen;
        // As a core service's call that holds the screen until it is answered.
        DispatchQueue::global(DispatchQueue::QualityOfService::background)
            .async([&network, &hasAnswered, call = screen]() mutable {
                network.get_future().wait();
                DispatchQueue::main().async([call] { FAIL() << "nobody is there any more"; });
                call.reset();
                hasAnswered.set_value();
            });
        quit = std::chrono::steady_clock::now();
    }
    const std::chrono::duration<double> waited = std::chrono::steady_clock::now() - quit;
    EXPECT_LT(waited.count(), 2 + 1);
    network.set_value();
    hasAnswered.get_future().wait();
    EXPECT_FALSE(held.expired()) << "not destroyed on that thread";
    const auto next = Platform::make({.applicationId = "zorvik-test"});
    EXPECT_TRUE(held.expired());
}

TEST(PlatformEndTest, TurnsForWhichNoMainLoopEverRanAreToldOf) {
    testing::internal::CaptureStderr();
    {
        const auto platform = Platform::make({.applicationId = "zorvik-test"});
        DispatchQueue::main().async([] { FAIL() << "no loop runs"; });
    }
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::HasSubstr("waited on the main queue (1); call run()"));
    const auto platform = Platform::make({.applicationId = "zorvik-test"});
    bool hasRun = false;
    DispatchQueue::main().async([&] { hasRun = true; });
    EXPECT_TRUE(platform->runUntil([&] { return hasRun; }, 60));
}

TEST(MainLoopTest, TheQueueGoesOnInALoopThatATaskRunsAndWakesItFromOtherThreads) {
    const auto platform = Platform::make({.applicationId = "zorvik-test", .keepsSparePage = false});
    std::string log;
    std::promise<void> idle;  // nothing else is due by then
    std::thread other([&] {
        idle.get_future().wait();
        DispatchQueue::main().async([&] { log += "inner "; });
    });
    DispatchQueue::main().async([&] {
        EXPECT_TRUE(platform->runUntil([&] { return log == "next inner "; }, 10));
        log += "outer ";
    });
    DispatchQueue::main().async([&] {
        log += "next ";
        idle.set_value();
    });
    EXPECT_TRUE(platform->runUntil([&] { return log.ends_with("outer "); }, 10)) << log;
    other.join();
}

}  // namespace
}  // namespace zorvik::tests
