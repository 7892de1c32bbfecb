#include "tests/hostile/HostileCheckout.h"

#include <signal.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <optional>
#include <thread>

#include ZORVIK_PORT_HEADER
#include "platform/foundation/Console.h"
#include "platform/foundation/JSONSerialization.h"
#include "platform/runtime/DispatchQueue.h"
#include "platform/runtime/NotificationCenter.h"
#include "platform/uikit/UIApplication.h"
#include "platform/uikit/UIButton.h"
#include "platform/webkit/WKWebView.h"

namespace zorvik::tests {

using namespace zorvik::platform;

namespace {

constexpr auto tools = R"(<script>
    const post = body => webkit.messageHandlers.openUpiIntent.postMessage(body);
    const intent = '{"url":"nobody-opens:x","package_name":"app.one"}';
    const response = location.origin + '/response?response={"payload":{"paid":true}}';
    var heard = ''; addEventListener('message', event => { heard += event.data; });
    </script>)";

constexpr auto ordinaryPage = R"(<script>
    let list;
    window.zorvik_web = { UPIIntentAvailable: text => { list = JSON.parse(text); post(intent); } };
    addEventListener('message', event => {
        location.href = location.origin + '/response?response=' +
            encodeURIComponent(JSON.stringify({ payload: { ...JSON.parse(event.data), ...list } }));
    });</script>)";

template <class View>
std::shared_ptr<View> findIn(const UIView& root) {
    for (const auto& view : root.subviews()) {
        if (const auto found = std::dynamic_pointer_cast<View>(view)) return found;
        if (const auto found = findIn<View>(*view)) return found;
    }
    return nullptr;
}

}  // namespace

struct HostileCheckout::World {
    ScriptedCore core;
    const std::unique_ptr<Platform> platform =
        Platform::make({.applicationId = "zorvik-hostile", .hungPageSeconds = 1.5});
    const std::shared_ptr<UIViewController> presenter =
        platform->presenterFor(platform->openWindow("shop", {600, 800}));
    std::optional<MainThreadWatch> watch{std::in_place};

    World() { core.describesEvents = false; }
    ~World() {
        watch.reset();
        ZorvikCheckoutSDK::reset();
    }
};

HostileCheckout::World& HostileCheckout::world() {
    if (!world_) world_ = std::make_shared<World>();
    return *world_;
}

void HostileCheckout::endWorld() {
    world_.reset();
}

HostileCheckout::HostileCheckout() : core(world().core), watch(*world().watch) {
    setConsoleSink([this](std::string_view line) {
        ++lines_;
        ++printed_[std::string(line.substr(0, longestLine))];
    });
    core.transcript.take();
    core.appsAnswer = std::vector<UPIAppsVO>{{"ONE", "One", "app.one", "data:,"}};
    core.enquiryAnswer = TransactionEnquiryResponse{Order{"PENDING"}};
    core.webViewRespCheckUrl = server.address("/response");
    serve("/ordinary", ordinaryPage);
    server.reply("/never", "", true);
    ZorvikCheckoutSDK::shared().setDelegate(host);
    watch.takeLongest();
}

HostileCheckout::~HostileCheckout() {
    // A row that failed must not fail the next one too.
    if (isScreenOpen()) dismiss();
    ZorvikCheckoutSDK::shared().setDelegate(nullptr);
    setConsoleSink({});
}

void HostileCheckout::serve(const std::string& path, const std::string& body) {
    server.replyPage(path, tools + body);
}

void HostileCheckout::open(const std::string& path) {
    core.webViewViewUrl = server.address(path + "?token=%@");
    inATurn([] {
        ZorvikCheckoutSDK::shared().checkout(world().presenter, {plainToken(), {}, {}, {}, {}});
    });
    ASSERT_TRUE(waitUntil([this] { return isScreenOpen(); }));
    screen_ = world().presenter->presentedViewController();
}

bool HostileCheckout::waitUntil(const std::function<bool()>& condition, double seconds) {
    watch.enterLoop();
    const bool holds = world().platform->runUntil(
        [&] {
            watch.leaveLoop();
            const bool result = condition();
            watch.enterLoop();
            return result;
        },
        seconds);
    watch.leaveLoop();
    return holds;
}

// As a host or the system would: in a turn of the main loop.
void HostileCheckout::inATurn(const std::function<void()>& task) {
    bool isDone = false;
    DispatchQueue::main().async([&] {
        task();
        isDone = true;
    });
    EXPECT_TRUE(waitUntil([&] { return isDone; })) << "the main queue stands still";
}

void HostileCheckout::settle(double seconds) {
    waitUntil([] { return false; }, seconds);
}

void HostileCheckout::waitForLine(const std::string& line, std::size_t times) {
    EXPECT_TRUE(waitUntil([&] { return timesPrinted(line) >= times; }))
        << timesPrinted(line) << " times: " << line;
}

void HostileCheckout::waitForPanel(double seconds) {
    EXPECT_TRUE(waitUntil([this] { return isPanelShown(); }, seconds)) << "no panel";
}

bool HostileCheckout::askUntil(const std::function<bool()>& condition) {
    for (double waited = 0; !condition(); waited += 0.02) {
        if (waited > 10) return false;
        settle(0.02);
    }
    return true;
}

void HostileCheckout::waitForPage(std::size_t times) {
    EXPECT_TRUE(askUntil([&] { return eventCount("WEBVIEW_LOADED") >= times; })) << "no page";
}

void HostileCheckout::waitForPageOrPanel() {
    EXPECT_TRUE(askUntil([&] { return eventCount("WEBVIEW_LOADED") > 0 || isPanelShown(); }));
}

void HostileCheckout::waitForRequest(const std::string& path, std::size_t times) {
    EXPECT_TRUE(askUntil([&] {
        const auto requests = server.requests();
        return std::ranges::count_if(requests, [&](const std::string& request) {
                   return request.find(" " + path) != std::string::npos;
               }) >= static_cast<std::ptrdiff_t>(times);
    })) << "nobody asked for "
        << path;
}

std::string HostileCheckout::evaluated(const std::string& script) {
    const auto text = std::make_shared<std::optional<std::string>>();
    findIn<WKWebView>(*world().presenter->presentedViewController()->view())
        ->evaluateJavaScript(script, [text](const auto& result) {
            *text = result ? result.value().text : result.error().localizedDescription;
        });
    waitUntil([&] { return text->has_value(); });
    return text->value_or("no answer");
}

void HostileCheckout::waitForValue(const std::string& script, const std::string& value) {
    std::string last;
    askUntil([&] { return (last = evaluated(script)) == value; });
    EXPECT_EQ(last, value) << script;
}

void HostileCheckout::click() {
    std::atomic<bool> isDone = false;
    std::thread customer([&] {
        EXPECT_EQ(std::system("timeout 10 xdotool mousemove 300 400 click 1"), 0);
        isDone = true;
    });
    waitUntil([&] { return isDone.load(); });
    customer.join();
}

void HostileCheckout::clickUntilPanel() {
    // A click that meets the fading skeleton is not the page's.
    for (int clicks = 0; clicks < 10 && !isPanelShown(); ++clicks) {
        click();
        waitUntil([this] { return isPanelShown(); }, 1);
    }
    EXPECT_TRUE(isPanelShown()) << "no panel";
}

void HostileCheckout::back() {
    inATurn([] { ZorvikCheckoutSDK::shared().handleDeviceBackButtonPress(); });
}

void HostileCheckout::handOff() {
    installApplication("zorvikapp", "exit 0");
    // The desktop notices the application in its own time.
    EXPECT_TRUE(askUntil([this] {
        evaluated(R"(post('{"url":"zorvikapp:x","package_name":"app.one"}'), 0)");
        return timesPrinted("[TRANSACTION STORE] ✅ Transaction details stored successfully") > 0;
    })) << "no hand-off";
    evaluated("heard = ''");
}

void HostileCheckout::becomeActive() {
    inATurn([] {
        NotificationCenter::defaultCenter().post(UIApplication::didBecomeActiveNotification);
    });
}

void HostileCheckout::kill(EngineProcess kind) {
    std::vector<pid_t> processes = engineProcesses(kind);
    // An engine that loses a process in the middle of its start may give the program up.
    settle(0.2);
    std::erase_if(processes, [now = engineProcesses(kind)](pid_t process) {
        return std::ranges::count(now, process) == 0;
    });
    kill(processes);
}

void HostileCheckout::kill(const std::vector<pid_t>& processes) {
    for (const pid_t process : processes)
        ::kill(process, SIGKILL);
}

bool HostileCheckout::isScreenOpen() const {
    return world().presenter->presentedViewController() != nullptr;
}

bool HostileCheckout::isPanelShown() const {
    return isScreenOpen() &&
           !findIn<UIButton>(*world().presenter->presentedViewController()->view())
                ->superview()
                ->isHidden();
}

std::size_t HostileCheckout::timesPrinted(const std::string& line) const {
    const auto entry = printed_.find(line.substr(0, longestLine));
    return entry == printed_.end() ? 0 : entry->second;
}

std::size_t HostileCheckout::timesPrintedFrom(const std::string& beginning) const {
    std::size_t times = 0;
    for (auto entry = printed_.lower_bound(beginning);
         entry != printed_.end() && entry->first.starts_with(beginning); ++entry) {
        times += entry->second;
    }
    return times;
}

std::size_t HostileCheckout::eventCount(const std::string& name) const {
    return core.transcript.entries("event " + name + ' ').size();
}

Dictionary HostileCheckout::paid() {
    return {{"paid", true}};
}

Dictionary HostileCheckout::paidOrdinarily() {
    return {{"sdk_upi_intent_response", "unregistered"},
            {"sdk_transaction_enquiry_response", "UPI app not installed"},
            {"UPIApps", Array{Dictionary{{"upi_app_code", "ONE"},
                                         {"upi_app_name", "One"},
                                         {"package_name", "app.one"},
                                         {"appiconbase64", "data:,"}}}}};
}

void HostileCheckout::pay() {
    const auto isPaid = [this] { return !host->responses().empty() && !isScreenOpen(); };
    const auto page = findIn<WKWebView>(*world().presenter->presentedViewController()->view());
    for (int tries = 0; tries < 10 && !isPaid(); ++tries) {
        page->evaluateJavaScript("location.href = response", {});
        waitUntil(isPaid, 2);
    }
    EXPECT_TRUE(isPaid()) << "the page cannot pay";
    if (isScreenOpen()) dismiss();
}

void HostileCheckout::retry() {
    core.webViewViewUrl = server.address("/ordinary?token=%@");
    inATurn([] {
        findIn<UIButton>(*world().presenter->presentedViewController()->view())
            ->sendTouchUpInside();
    });
    EXPECT_TRUE(waitUntil([this] { return !host->responses().empty() && !isScreenOpen(); }));
}

void HostileCheckout::dismiss() {
    bool isGone = false;
    inATurn([&] { world().presenter->dismiss(true, [&] { isGone = true; }); });
    EXPECT_TRUE(waitUntil([&] { return isGone; })) << "the screen stays";
}

void HostileCheckout::waitForSilence() {
    EXPECT_TRUE(waitUntil([this] { return screen_.expired(); })) << "the screen is still held";
    const auto lines = lines_;
    const auto answers = host->responses().size();
    settle(0.15);
    EXPECT_EQ(lines_, lines) << "said after the end";
    EXPECT_EQ(host->responses().size(), answers) << "told after the end";
}

}  // namespace zorvik::tests
