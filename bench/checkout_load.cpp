// What a checkout costs on a desktop port. Prints one line each, for this process with its own web
// processes:
//   loads MS...  from each call of `checkout` to the page's finish
//   idle ...     of five seconds with the screen open and idle: CPU in milliseconds, processes,
//                megabytes (PSS)
//   wake-ups N   of the main queue in the same five seconds
//   pulse ...    of five seconds in which the skeleton pulses, as idle
// usage: zorvik-checkout-load URL TIMES spare|no-spare
#include <netinet/in.h>
#include <sys/socket.h>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <string_view>

#include "bench/Desktop.h"
#include "bench/ProcessTree.h"
#include "core/EventConstants.h"
#include "core/development/DevelopmentCore.h"
#include "platform/foundation/Console.h"
#include "platform/runtime/Environment.h"
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

// An address that takes a connection and never says anything.
std::string silentAddress() {
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (bind(listener, generic, size) != 0 || listen(listener, 8) != 0 ||
        getsockname(listener, generic, &size) != 0) {
        std::abort();
    }
    return "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/?token=%@";
}

class Bench {
  public:
    explicit Bench(std::unique_ptr<bench::Platform> port)
        : port_(std::move(port)),
          presenter_(port_->presenterFor(port_->openWindow("Bench", {390, 760}))) {}

    void configure(const std::string& url) {
        development::Configuration configuration;
        configuration.webViewViewUrl = url;
        configuration.webViewRespCheckUrl = "http://127.0.0.1/response";
        configuration.eventSink = sink_;
        configuration.orderBook = orders_;
        configuration.runInBackground = platform::Environment::runInBackground;
        development::DevelopmentCore::shared().configure(std::move(configuration));
    }
    void wait(double seconds) {
        port_->runUntil([] { return false; }, seconds);
    }
    void open() {
        sink_->finished.reset();
        start_ = Clock::now();
        ZorvikCheckoutSDK::shared().checkout(presenter_, {.orderToken = token_});
    }
    void close() {
        presenter_->dismiss(false);
        wait(0.3);
    }
    // Milliseconds; nullopt when the page never finished.
    std::optional<double> load() {
        open();
        if (!port_->runUntil([&] { return sink_->finished.has_value(); }, 30)) return std::nullopt;
        return std::chrono::duration<double, std::milli>(*sink_->finished - start_).count();
    }
    unsigned long wakeUps() const { return port_->wakeUps(); }

  private:
    const std::unique_ptr<bench::Platform> port_;
    const std::shared_ptr<platform::UIViewController> presenter_;
    const std::shared_ptr<FinishSink> sink_ = std::make_shared<FinishSink>();
    const std::shared_ptr<development::MemoryOrderBook> orders_ =
        std::make_shared<development::MemoryOrderBook>();
    const std::string token_ =
        orders_->create({.amountInMinorUnits = 149900, .currency = "INR"}).value().token;
    Clock::time_point start_;
};

}  // namespace

int main(int count, char** arguments) {
    if (count != 4) {
        std::cerr << "usage: zorvik-checkout-load URL TIMES spare|no-spare\n";
        return 2;
    }
    auto port =
        bench::Platform::make({.applicationId = "zorvik-bench",
                               .keepsSparePage = std::string_view(arguments[3]) == "spare"});
    if (!port) return 1;
    platform::setConsoleSink([](std::string_view) {});
    Bench bench(std::move(port));
    bench.configure(arguments[1]);
    bench.wait(0.5);

    std::cout << "loads";
    const int times = std::atoi(arguments[2]);
    for (int i = 0; i < times; ++i) {
        const auto milliseconds = bench.load();
        if (!milliseconds) return 1;
        std::cout << ' ' << *milliseconds;
        bench.wait(1.5);  // the slide and the fades are over
        if (i + 1 < times) bench.close();
    }
    const auto before = bench.wakeUps();
    std::cout << "\nidle";
    const auto wait = [&](int milliseconds) { bench.wait(milliseconds / 1000.0); };
    bench::printIdle(wait);
    std::cout << "wake-ups " << bench.wakeUps() - before << std::endl;
    bench.close();

    bench.configure(silentAddress());
    bench.open();
    bench.wait(1.5);
    std::cout << "pulse";
    bench::printIdle(wait);
    bench.close();
    return 0;
}
