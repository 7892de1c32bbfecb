// Short checkouts on the real engine, one after another in one process: pages and hosts that
// behave in any way, or only ordinary payments. Memory, processes and what else may pile up are
// counted as it goes.
// usage: zorvik-engine [--runs N] [--seed S] [--plain] | --replay SEED        under a display
#include <signal.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <random>
#include <set>
#include <string>
#include <string_view>

#include "platform/foundation/Console.h"
#include "platform/foundation/Data.h"
#include "platform/foundation/JSONSerialization.h"
#include "platform/runtime/NotificationCenter.h"
#include "platform/uikit/UIButton.h"
#include "platform/webkit/WKWebView.h"
#include "testkit/ScriptedCoreServices.h"
#include "testkit/Step.h"
#include "tests/reliability/DesktopPort.h"
#include "tests/reliability/PageServer.h"
#include "tests/reliability/Usage.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutSDK.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutWebView.h"

namespace {

using namespace zorvik;
using namespace zorvik::testkit;
using platform::Dictionary;
using platform::UIButton;
using platform::UIView;
using platform::UIViewController;
using platform::WKWebView;
using Kind = Step::Kind;

// A checkout, and a few things that come in its way; half of them end with a payment.
Script shortScript(std::uint64_t seed, bool isPlain) {
    std::mt19937_64 dice(seed);
    const auto below = [&](unsigned end) { return static_cast<std::uint8_t>(dice() % end); };
    Script script{{Kind::loads, below(12)}, {Kind::checkout, 0}};
    if (isPlain) script.front().way = 0;
    if (isPlain || below(2) == 0) {
        if (below(4) > 0) script.front().way = 0;
        script.push_back({Kind::navigate, below(2)});
        return script;
    }
    constexpr std::array kinds{Kind::time,    Kind::time,  Kind::navigate, Kind::navigate,
                               Kind::post,    Kind::back,  Kind::activate, Kind::processDies,
                               Kind::dismiss, Kind::retry, Kind::delegate, Kind::checkout,
                               Kind::window,  Kind::loads, Kind::subframe};
    constexpr std::array<unsigned, kinds.size()> ways{2, 2, 14, 14, 9, 3,  1, 1,
                                                      2, 1, 3,  1,  1, 12, 3};
    for (unsigned left = 1 + below(5); left > 0; --left) {
        const auto place = below(kinds.size());
        script.push_back({kinds[place], below(ways[place])});
    }
    return script;
}

template <class View>
std::shared_ptr<View> find(const UIView& root) {
    for (const auto& view : root.subviews()) {
        if (const auto found = std::dynamic_pointer_cast<View>(view)) return found;
        if (auto found = find<View>(*view)) return found;
    }
    return nullptr;
}

class Host : public ZorvikCheckoutSDKDelegate {
  public:
    explicit Host(std::vector<Dictionary>& given) : given_(given) {}
    void onCheckoutResponse(const Dictionary& data) override { given_.push_back(data); }

  private:
    std::vector<Dictionary>& given_;
};

class Engine {
  public:
    explicit Engine(const tests::PageServer& server) : server_(server) {
        platform::setConsoleSink([](std::string_view) {});
        openWindow();
    }
    ~Engine() { platform::setConsoleSink({}); }

    bool isThere() const { return platform_ != nullptr; }
    void settle(double seconds) {
        platform_->runUntil([] { return false; }, seconds);
    }

    // What went wrong; "" when nothing did.
    std::string play(const Script& script) {
        core().clear();
        core().answers().appList = std::vector<UPIAppsVO>{{"code", "Some app", "app.some", {}}};
        given_.clear();
        asked_.clear();
        screens_.clear();
        changeDelegate(0);
        for (const Step& step : script)
            perform(step);
        const bool mustPay = script.size() == 3 && script.front().way == 0 &&
                             script.back().kind == Kind::navigate && script.back().way < 2;
        const bool isPaid =
            platform_->runUntil([&] { return !given_.empty(); }, mustPay ? 20 : 0.05);
        if (mustPay && !isPaid) return "the host was not told of the payment";
        // A payment closes the screen; whatever else is open the host does.
        if (!mustPay) dismissAll();
        if (!platform_->runUntil([&] { return !isOpen(); }, 10)) return "the screen stays open";
        const auto areFreed = [&] {
            return std::ranges::all_of(screens_, [](const auto& one) { return one.expired(); });
        };
        if (!platform_->runUntil(areFreed, 10)) return "a dismissed screen lives on";
        return unexplained();
    }

  private:
    static ScriptedCoreServices& core() { return ScriptedCoreServices::instance(); }

    void openWindow() {
        window_ = platform_->openWindow("reliability", {390, 700});
        presenter_ = platform_->presenterFor(window_);
    }
    bool isOpen() const { return presenter_->presentedViewController() != nullptr; }
    std::shared_ptr<ZorvikCheckoutWebView> screen() const {
        std::shared_ptr<UIViewController> top = presenter_;
        while (top->presentedViewController())
            top = top->presentedViewController();
        return std::dynamic_pointer_cast<ZorvikCheckoutWebView>(top);
    }
    void dismissAll() {
        // One that has yet to come comes first.
        for (int round = 0; round < 3; ++round) {
            presenter_->dismiss(false);
            settle(0.02);
        }
    }

    void perform(const Step& step) {
        switch (step.kind) {
            case Kind::loads:
                return core().setAddresses(server_.address(tests::PageServer::paths.at(step.way)),
                                           server_.address("/response"));
            case Kind::checkout:
                return startCheckout();
            case Kind::time:
                return settle(step.way == 0 ? 0.05 : 0.4);
            case Kind::navigate:
                return inPage("location.href = " + literal(addressFor(step.way)));
            case Kind::subframe:
                return inPage("const f = document.createElement('iframe'); f.src = " +
                              literal(addressFor(step.way)) + "; document.body.appendChild(f)");
            case Kind::post:
                return inPage("window.webkit.messageHandlers.openUpiIntent.postMessage(" +
                              messageFor(step.way) + ")");
            case Kind::processDies:
                for (const pid_t process : tests::processesBelow(getpid(), tests::webProcessName))
                    kill(process, SIGKILL);
                return;
            case Kind::activate:
                return platform::NotificationCenter::defaultCenter().post(
                    platform::NotificationCenter::applicationDidBecomeActive);
            case Kind::back:
                return ZorvikCheckoutSDK::shared().handleDeviceBackButtonPress();
            case Kind::dismiss:
                return presenter_->dismiss(step.way == 0);
            case Kind::retry:
                if (const auto open = screen())
                    if (const auto button = find<UIButton>(*open->view());
                        button && !button->superview()->isHidden())
                        button->sendTouchUpInside();
                return;
            case Kind::delegate:
                return changeDelegate(step.way);
            case Kind::window:
                platform_->closeWindow(window_);
                return openWindow();
            default:
                return;
        }
    }

    void startCheckout() {
        std::string claims = R"({"order_id":"order","sub_merchant_id":"merchant"})";
        claims.resize((claims.size() + 2) / 3 * 3, ' ');
        const auto ends = [this] {
            return std::ranges::count_if(core().events(), [](const Event& event) {
                return event.name == "WEBVIEW_LOADED" || event.name == "WEBVIEW_FAILED";
            });
        };
        const auto before = ends();
        const auto former = screen();
        ZorvikCheckoutSDK::shared().checkout(
            presenter_, {.orderToken = "header." + platform::base64Encode(claims) + ".signature"});
        platform_->runUntil([&] { return screen() && screen() != former; }, 2);
        if (screen()) screens_.push_back(screen());
        // A page that hangs has no end to wait for.
        platform_->runUntil([&] { return ends() > before; }, 1);
    }
    void changeDelegate(unsigned way) {
        if (way == 0) {
            hosts_.push_back(std::make_shared<Host>(given_));
            ZorvikCheckoutSDK::shared().setDelegate(hosts_.back());
        } else if (way == 1) {
            ZorvikCheckoutSDK::shared().setDelegate(nullptr);
        } else {
            hosts_.clear();
        }
    }

    static std::string literal(const std::string& text) {
        return platform::JSONSerialization::data(platform::Value(text)).value();
    }
    // In a task of the page's own, so that no evaluation waits for what it does.
    void inPage(const std::string& script) {
        const auto open = screen();
        const auto view = open ? find<WKWebView>(*open->view()) : nullptr;
        if (view) view->evaluateJavaScript("setTimeout(() => { " + script + " }, 0);0", {});
    }
    std::string addressFor(unsigned way) {
        const std::string number = std::to_string(++number_);
        const std::string json = R"({"payload":{"answer":)" + number + "}}";
        const std::string response = server_.address("/response") + "?response=";
        const auto upi = [&](const std::string& query) { return "testkit-return://upi" + query; };
        switch (way) {
            case 0:
            case 1:
                asked_.insert(std::stoll(number));
                return response + "%7B%22payload%22%3A%7B%22answer%22%3A" + number + "%7D%7D";
            case 2:
                return response + "unreadable";
            case 3:
                return server_.address("/response") + "?from=" + response;
            case 4:
                return response + number;
            case 5:
                return upi("?status=success&tr=t-" + number);
            case 6:
                return upi("?status=failure&tr=t-" + number);
            case 7:
                return upi("?status=cancelled&tr=t-" + number);
            case 8:
                return upi("?status=failed");
            case 9:
                return upi("?tr=t-" + number);
            case 10:
                return upi("");
            case 12:
                return server_.address("/hangs");
            case 13:
                return server_.address("/another") + "?processing&response=%7B%7D";
            default:
                return server_.address("/another");
        }
    }
    std::string messageFor(unsigned way) const {
        if (way == 4) return literal(R"({"url":"no address","package_name":"app"})");
        if (way > 4) return way == 7 ? "7" : literal("no JSON");
        return literal(R"({"url":"testkit-missing://pay","package_name":"app"})");
    }

    // Each answer at the most once, a page's own as often as it may have been loaded, and
    // otherwise only what the component or the enquiry says.
    std::string unexplained() const {
        std::set<std::int64_t> seen;
        for (const Dictionary& data : given_) {
            if (const auto answer = data.find("answer"); answer != data.end()) {
                const std::int64_t number = *answer->second.integer();
                const bool isPagesOwn = number >= 1 && number <= 4;
                if (!isPagesOwn && (!asked_.contains(number) || !seen.insert(number).second))
                    return "the host was given " + platform::description(data);
                continue;
            }
            const bool isKnown =
                data.empty() || data.contains("error") || data.contains("payment_status");
            if (!isKnown) return "the host was given " + platform::description(data);
        }
        return "";
    }

    const tests::PageServer& server_;
    const std::unique_ptr<tests::DesktopPlatform> platform_ =
        tests::DesktopPlatform::make({.applicationId = "zorvik-reliability"});
    decltype(platform_->openWindow("", {})) window_ = nullptr;
    std::shared_ptr<UIViewController> presenter_;
    std::vector<std::shared_ptr<Host>> hosts_;
    std::vector<Dictionary> given_;
    std::set<std::int64_t> asked_;
    std::vector<std::weak_ptr<ZorvikCheckoutWebView>> screens_;
    std::int64_t number_ = 100;
};

struct Sample : tests::Usage {
    std::vector<pid_t> processes = tests::processesBelow(getpid(), tests::webProcessName);
    std::size_t processesPss = 0;
    std::size_t sources = tests::eventSources();
    std::size_t temporary = 0;
    std::size_t notes = 0;

    Sample() {
        for (const pid_t process : processes)
            processesPss += tests::kilobytes(process, "smaps_rollup", "Pss:");
        // The web engine's sandbox leaves a note of each process in a folder of its own there.
        const char* const folder = std::getenv("XDG_RUNTIME_DIR");
        if (folder == nullptr) return;
        notes = tests::entriesIn(std::string(folder) + "/.flatpak");
        temporary = tests::entriesIn(folder, true) -
                    tests::entriesIn(std::string(folder) + "/.flatpak", true);
    }
    void print(std::size_t run, double seconds) const {
        std::printf(
            "%6zu runs %7.0f s  rss %6zu kB  pss %6zu kB  web processes %zu (%6zu kB)  "
            "files %3zu  threads %2zu  sources %3zu  temporary files %zu  sandbox notes %zu\n",
            run, seconds, rss, pss, processes.size(), processesPss, files, threads, sources,
            temporary, notes);
        std::fflush(stdout);
    }
};

// What may not pile up, against the sample after the warm-up; a few come and go by themselves.
std::string growth(const Sample& before, const Sample& after) {
    constexpr std::size_t slack = 4;
    if (after.processes.size() > 2) return "web processes are left";
    if (after.files > before.files + slack) return "file handles are left";
    if (after.threads > before.threads + slack) return "threads are left";
    if (after.sources > before.sources + slack) return "main loop sources are left";
    if (after.temporary > before.temporary + slack) return "temporary files are left";
    return "";
}

int run(const tests::PageServer& server, std::size_t runs, std::uint64_t seed, bool isPlain) {
    Engine engine(server);
    if (!engine.isThere()) return 2;
    const auto start = std::chrono::steady_clock::now();
    std::optional<Sample> warm;
    const std::size_t between = std::max<std::size_t>(runs / 20, 1);
    int code = 0;
    for (std::size_t done = 1; done <= runs; ++done, ++seed) {
        const Script script = shortScript(seed, isPlain);
        const std::string broken = engine.play(script);
        if (!broken.empty()) {
            std::cout << "broken: " << broken << "\n# seed " << seed << '\n'
                      << textOf(script) << std::flush;
            code = 1;
        }
        if (done % between != 0 && done != runs) continue;
        // What is on its way out has gone by then.
        engine.settle(1);
        const Sample sample;
        sample.print(
            done, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        if (!warm && done >= std::max<std::size_t>(runs / 10, 10)) warm = sample;
        if (done < runs || !warm) continue;
        if (const std::string left = growth(*warm, sample); !left.empty()) {
            std::cout << "broken: " << left << std::endl;
            code = 1;
        }
    }
    return code;
}

}  // namespace

int main(int count, char** arguments) {
    std::size_t runs = 1000;
    std::uint64_t seed = 1;
    bool isPlain = false;
    for (int place = 1; place < count; ++place) {
        const std::string_view name = arguments[place];
        if (name == "--plain") {
            isPlain = true;
        } else if (place + 1 < count && (name == "--runs" || name == "--seed")) {
            (name == "--runs" ? runs : seed) = std::strtoull(arguments[++place], nullptr, 10);
        } else if (place + 1 < count && name == "--replay") {
            seed = std::strtoull(arguments[++place], nullptr, 10);
            std::cout << textOf(shortScript(seed, isPlain)) << std::flush;
            runs = 1;
        } else {
            std::cerr << "usage: zorvik-engine [--runs N] [--seed S] [--plain] | --replay SEED\n";
            return 2;
        }
    }
    // A folder of this process's own, to count what is left there.
    if (const char* folder = std::getenv("XDG_RUNTIME_DIR")) {
        const std::string temporary = std::string(folder) + "/tmp";
        std::filesystem::create_directories(temporary);
        setenv("TMPDIR", temporary.c_str(), 1);
    }
    const tests::PageServer server;
    return run(server, runs, seed, isPlain);
}
