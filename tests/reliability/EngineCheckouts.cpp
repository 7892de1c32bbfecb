#include "tests/reliability/EngineCheckouts.h"

#include <signal.h>

#include <algorithm>
#include <array>
#include <random>
#include <set>

#include ZORVIK_PORT_HEADER
#include "platform/foundation/Console.h"
#include "platform/foundation/Data.h"
#include "platform/foundation/JSONSerialization.h"
#include "platform/runtime/NotificationCenter.h"
#include "platform/uikit/UIButton.h"
#include "platform/webkit/WKWebView.h"
#include "testkit/ScriptedCoreServices.h"
#include "tests/reliability/Usage.h"
#include "tests/support/EngineProcesses.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutSDK.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutWebView.h"

namespace zorvik::tests {

using namespace zorvik::testkit;
using platform::Dictionary;
using platform::UIButton;
using platform::UIView;
using platform::UIViewController;
using platform::WKWebView;
using Kind = Step::Kind;

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

namespace {

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

class Checkouts : public EngineCheckouts {
  public:
    explicit Checkouts(const PageServer& server) : server_(server) {
        platform::setConsoleSink([](std::string_view) {});
        if (platform_) openWindow();
    }
    ~Checkouts() override { platform::setConsoleSink({}); }

    bool isThere() const override { return platform_ != nullptr; }
    void settle(double seconds) override {
        platform_->runUntil([] { return false; }, seconds);
    }

    std::string play(const Script& script) override {
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
        // A payment closes the screen; whatever else is open the host does.
        if (!mustPay || !isPaid) dismissAll();
        if (mustPay && !isPaid) return "the host was not told of the payment: " + eventText();
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
                loadsWay_ = step.way;
                return core().setAddresses(server_.address(PageServer::paths.at(step.way)),
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
                // The engine ends its host where a web process dies before it has told its number.
                for (const pid_t process : engineProcesses(EngineProcess::web))
                    if (secondsOld(process) > 2) kill(process, SIGKILL);
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
        const auto ends = [] {
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
        // A page that hangs has no end to wait for; the others take as long as the machine does.
        constexpr std::array hanging{3U, 4U, 11U};
        const bool hangs = std::ranges::find(hanging, loadsWay_) != hanging.end();
        const std::size_t given = given_.size();
        platform_->runUntil([&] { return ends() > before || given_.size() > given; },
                            hangs ? 0.5 : 15);
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
        const std::string paid = "%7B%22payload%22%3A%7B%22answer%22%3A" + number + "%7D%7D";
        const std::string page = server_.address("/response");
        const std::string response = page + "?response=";
        const std::string upi = "testkit-return://upi";
        const std::string tr = "tr=t-" + number;
        if (way < 2) asked_.insert(std::stoll(number));
        const std::array ways{response + paid,
                              response + paid,
                              response + "unreadable",
                              page + "?from=" + response,
                              response + number,
                              upi + "?status=success&" + tr,
                              upi + "?status=failure&" + tr,
                              upi + "?status=cancelled&" + tr,
                              upi + "?status=failed",
                              upi + "?" + tr,
                              upi,
                              server_.address("/another"),
                              server_.address("/hangs"),
                              server_.address("/another") + "?processing&response=%7B%7D"};
        return ways.at(way);
    }
    std::string messageFor(unsigned way) const {
        if (way == 4) return literal(R"({"url":"no address","package_name":"app"})");
        if (way > 4) return way == 7 ? "7" : literal("no JSON");
        return literal(R"({"url":"testkit-missing://pay","package_name":"app"})");
    }

    static std::string eventText() {
        std::string text;
        for (const Event& event : core().events())
            text.append(event.name)
                .append(platform::description(event.additionalData))
                .push_back(' ');
        return text;
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

    const PageServer& server_;
    const std::unique_ptr<Platform> platform_ =
        Platform::make({.applicationId = "zorvik-reliability"});
    decltype(platform_->openWindow("", {})) window_ = nullptr;
    std::shared_ptr<UIViewController> presenter_;
    std::vector<std::shared_ptr<Host>> hosts_;
    std::vector<Dictionary> given_;
    std::set<std::int64_t> asked_;
    std::vector<std::weak_ptr<ZorvikCheckoutWebView>> screens_;
    std::int64_t number_ = 100;
    unsigned loadsWay_ = 0;
};

}  // namespace

std::unique_ptr<EngineCheckouts> EngineCheckouts::make(const PageServer& server) {
    return std::make_unique<Checkouts>(server);
}

}  // namespace zorvik::tests
