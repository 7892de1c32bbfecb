#include <atomic>
#include <random>
#include <thread>

#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

using platform::headless::HeadlessPlatform, platform::headless::HeadlessScheduler;

// A host that does in a fixed but wild order what it may do on the main thread, while two threads
// of its own do what any thread may, and background tasks and answers run on two more. Ports come
// and go under it. What it looks for is mostly for a race detector to find.
class ThreadStormTest : public testing::Test {
  protected:
    static constexpr int ports = 15, stepsOfAPort = 400;

    ThreadStormTest() {
        platform::setConsoleSink([](std::string_view) {});
    }
    ~ThreadStormTest() override { platform::setConsoleSink({}); }

    // Counts its deaths on another thread than the main one.
    struct Witness {
        explicit Witness(ThreadStormTest& storm) : test(storm) {}
        ~Witness() { test.strayed += std::this_thread::get_id() == test.mainThread ? 0 : 1; }
        ThreadStormTest& test;
    };

    unsigned choice(unsigned count) { return static_cast<unsigned>(random() % count); }

    void usePort() {
        HeadlessPlatform port(HeadlessScheduler::Background::threads);
        port.web().onLoad([](const std::string&) { return ScriptedLoad(); });
        port.web().onEvaluate([](const std::string&) { return ScriptValue(); });
        presenter = platform::makeOnMainThread<platform::UIViewController>();
        presenter->setShownByStage(true);
        for (int count = 0; count < stepsOfAPort; ++count)
            step(port);
        if (choice(2) == 0) {
            ZorvikCheckoutSDK::reset();
            handOver(nullptr);
            presenter.reset();
            port.scheduler().settle();
        }
        presenter.reset();
    }

    void step(HeadlessPlatform& port) {
        auto& sdk = ZorvikCheckoutSDK::shared();
        const auto navigate = [&port](const char* address) {
            if (!port.web().pages().empty()) port.web().page().navigate(address);
        };
        switch (choice(18)) {
            case 0:
                return sdk.setDelegate(choice(3) == 0 ? nullptr : std::make_shared<Receiver>());
            case 1:
                return sdk.setDelegate(host);
            case 2:
                sdk.setEnvironmentUrl("https://pay.example/" + std::to_string(choice(9)));
                return sdk.initialize("shop-" + std::to_string(choice(9)));
            case 3:
                if (shown()) return;
                return sdk.checkout(presenter,
                                    optionsOf(choice(2) == 0 ? plainToken() : otherToken));
            case 4:
                if (choice(9) == 0) ZorvikCheckoutSDK::reset();
                return sdk.handleDeviceBackButtonPress();
            case 5:
            case 9:
                if (const auto screen = shown()) {
                    screen->swipeBackDetected();
                    for (int change = 0; change < 20; ++change)
                        screen->setOptions(optionsOf(change % 2 == 0 ? otherToken : plainToken()));
                    screens.push_back(screen);
                    handOver(screen);
                }
                return;
            case 6:
                return navigate("https://pay.example/check?response=1");
            case 7:
                return navigate("shopreturn://upi?status=failure&tr=T");
            case 8:
                return presenter->dismiss(false);
            default:
                for (int turns = 0; turns < 30; ++turns)
                    if (!port.scheduler().runOneTurn()) std::this_thread::yield();
        }
    }
    Screen shown() const {
        return std::dynamic_pointer_cast<ZorvikCheckoutWebView>(
            presenter->presentedViewController());
    }

    // What any thread may do. It takes the screen over, and may be the last to hold it.
    void otherThread() {
        for (unsigned round = 0; !isOver; ++round) {
            if (const Screen screen = handOver(nullptr)) {
                screen->handleDeviceBackButtonPress();
                tornOptions += isTorn(screen->options()) ? 1 : 0;
            }
            auto& sdk = ZorvikCheckoutSDK::shared();
            sdk.createOrder(1, "INR", {}, std::nullopt, [this](const auto&) { ++answers; });
            platform::Environment::runOnMain(
                [witness = platform::makeOnMainThread<Witness>(*this)] {});
            ZorvikCheckoutSDK::getOrderID(otherToken);
            if (round % 8 == 0) platform::setConsoleSink([](std::string_view) {});
            std::this_thread::yield();
        }
    }
    static bool isTorn(const ZorvikCheckoutOptions& options) {
        return options.orderToken != plainToken() && options.orderToken != otherToken;
    }
    Screen handOver(const Screen& screen) {
        const std::scoped_lock lock(mutex);
        return std::exchange(handedOver, screen);
    }

    static inline const std::string otherToken = tokenOf(R"({"order_id":"order-8"})");
    ScriptedCore core;
    std::mt19937 random{20261123};
    std::shared_ptr<Receiver> host = std::make_shared<Receiver>();
    std::shared_ptr<platform::UIViewController> presenter;
    std::vector<std::weak_ptr<ZorvikCheckoutWebView>> screens;
    std::mutex mutex;
    Screen handedOver;
    std::atomic<bool> isOver = false;
    std::atomic<int> answers = 0, tornOptions = 0, strayed = 0;
    const std::thread::id mainThread = std::this_thread::get_id();
};

TEST_F(ThreadStormTest, WhateverThreadsAndPortsDoNothingIsTornLostOrLeftBehind) {
    usePort();  // the first, which other threads may not be ahead of
    std::thread first([this] { otherThread(); });
    std::thread second([this] { otherThread(); });
    for (int count = 1; count < ports; ++count)
        usePort();
    isOver = true;
    first.join();
    second.join();
    handOver(nullptr);
    ZorvikCheckoutSDK::reset();
    HeadlessPlatform port;
    port.scheduler().settle();
    EXPECT_THAT(screens,
                Each(testing::Property(&std::weak_ptr<ZorvikCheckoutWebView>::expired, true)));
    EXPECT_GT(screens.size(), 10u);
    EXPECT_GT(answers, 0);
    EXPECT_EQ(tornOptions, 0);
    EXPECT_EQ(strayed, 0);
    const std::string other = " \"order-8\" \"" + otherToken + "\" \"\" ";
    for (const auto& event : core.transcript.entries("event ")) {
        // Its ids are of two moments: a known limit.
        if (event.find("\"status\": \"success\"") != std::string::npos) continue;
        const std::string ids = event.substr(event.find(' '));
        EXPECT_TRUE(ids.starts_with(" [") || ids.starts_with(" none [") || ids.starts_with(other))
            << event;
    }
}

}  // namespace
}  // namespace zorvik
