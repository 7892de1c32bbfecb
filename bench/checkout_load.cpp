// Prints, in one line, the milliseconds from each call of `checkout` to the page's finish in this
// process, then the wake-ups of the open, idle screen in five seconds.
// usage: zorvik-checkout-load URL TIMES spare|no-spare
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <string_view>

#include "core/EventConstants.h"
#include "core/development/DevelopmentCore.h"
#include "platform/foundation/Console.h"
#include "platform/gtk/GtkPlatform.h"
#include "platform/runtime/DispatchQueue.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutSDK.h"

namespace {

using namespace zorvik;
using Clock = std::chrono::steady_clock;

// Remembers when the latest page was finished. The component logs that on the main thread.
struct FinishSink : development::EventSink {
    std::optional<Clock::time_point> finished;
    void record(const development::RecordedEvent& event) override {
        if (event.eventName == EventConstants::WEBVIEW_LOADED) finished = Clock::now();
    }
};

}  // namespace

int main(int count, char** arguments) {
    if (count != 4) {
        std::cerr << "usage: zorvik-checkout-load URL TIMES spare|no-spare\n";
        return 2;
    }
    const auto port = platform::gtk::GtkPlatform::make(
        {.applicationId = "zorvik-bench",
         .keepsSparePage = std::string_view(arguments[3]) == "spare"});
    if (!port) return 1;
    platform::setConsoleSink([](std::string_view) {});
    const auto presenter = port->presenterFor(port->openWindow("Bench", {390, 760}));
    const auto sink = std::make_shared<FinishSink>();
    const auto orders = std::make_shared<development::MemoryOrderBook>();
    development::Configuration configuration;
    configuration.webViewViewUrl = arguments[1];
    configuration.webViewRespCheckUrl = "http://127.0.0.1/response";
    configuration.eventSink = sink;
    configuration.orderBook = orders;
    configuration.runInBackground = [](std::function<void()> task) {
        using platform::DispatchQueue;
        DispatchQueue::global(DispatchQueue::QualityOfService::background).async(std::move(task));
    };
    development::DevelopmentCore::shared().configure(std::move(configuration));
    const auto order = orders->create({149900, "INR", {}, std::nullopt});
    port->runUntil([] { return false; }, 0.5);

    for (int i = 0; i < std::atoi(arguments[2]); ++i) {
        sink->finished.reset();
        const auto start = Clock::now();
        ZorvikCheckoutSDK::shared().checkout(presenter, {order.value().token, {}, {}, {}, {}});
        if (!port->runUntil([&] { return sink->finished.has_value(); }, 30)) return 1;
        std::cout << (i == 0 ? "" : " ")
                  << std::chrono::duration<double, std::milli>(*sink->finished - start).count();
        port->runUntil([] { return false; }, 1.5);  // the slide and the fades are over
        if (i + 1 == std::atoi(arguments[2])) {
            const auto before = port->wakeUps();
            port->runUntil([] { return false; }, 5);
            std::cout << std::endl << "wake-ups " << port->wakeUps() - before << std::endl;
        }
        presenter->dismiss(false);
        port->runUntil([] { return false; }, 0.3);
    }
    return 0;
}
