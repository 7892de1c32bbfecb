#include <algorithm>
#include <array>
#include <string>

#include "fuzz/Target.h"
#include "platform/uikit/UIButton.h"
#include "testkit/CheckoutTestKit.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutWebView.h"

namespace zorvik::fuzz {

using platform::Dictionary;
using platform::ScriptValue;
using platform::headless::ScriptedLoad;
using testkit::CheckoutTestKit;
using testkit::RecordingDelegate;

namespace {

// The input as a list of choices and texts; zeroes and nothing once it has ended.
class Choices {
  public:
    explicit Choices(std::string_view input) : rest_(input) {}

    bool isEmpty() const { return rest_.empty(); }
    unsigned next(unsigned count) {
        if (rest_.empty()) return 0;
        const auto byte = static_cast<unsigned char>(rest_.front());
        rest_.remove_prefix(1);
        return byte % count;
    }
    template <std::size_t count>
    std::string oneOf(const std::array<const char*, count>& texts) {
        const unsigned choice = next(count + 1);
        return choice < count ? texts[choice] : text();
    }
    // Up to the next line feed.
    std::string text() {
        const std::string_view line = rest_.substr(0, rest_.find('\n'));
        rest_.remove_prefix(std::min(rest_.size(), line.size() + 1));
        return std::string(line);
    }

  private:
    std::string_view rest_;
};

constexpr std::array addresses{
    "https://pay.example/checkout?again",
    "https://pay.example/checkout#part",
    "https://bank.example/processing?response=%7B%22payload%22%3A%7B%22a%22%3A1%7D%7D",
    "https://bank.example/processing",
    "https://pay.example/response?response=%7B%22payload%22%3A%7B%22paid%22%3Atrue%7D%7D",
    "https://pay.example/response?response=no",
    "https://pay.example/response?from=https://pay.example/response?response=",
    "testkit-return://upi?status=success&tr=T1",
    "testkit-return://upi?status=failure&reason=no",
    "testkit-return://upi?status=cancelled",
    "testkit-return://upi",
    "about:blank"};
constexpr std::array bodies{R"({"url":"testkit-opens://pay","package_name":"p","tr":"T1"})",
                            R"({"url":"testkit-refuses://pay","package_name":"p"})",
                            R"({"url":"testkit-missing://pay","package_name":"p"})",
                            R"({"url":"","package_name":"p"})", R"({"url":1})"};
constexpr std::array names{"openUpiIntent", "openupiintent"};
constexpr std::array seconds{0.0, 0.1, 0.35, 4.9, 5.0, 61.0};

// A page, a customer, a host and a machine that do what the bytes say.
class Run {
  public:
    explicit Run(std::string_view input) : choices_(input) {
        auto& web = kit_.platform().web();
        web.onLoad([this](const std::string&) { return load_; });
        web.onEvaluate([this](const std::string&) -> platform::Result<ScriptValue> {
            if (evaluationFails_) return platform::Error{"fuzz", 1, "no"};
            return ScriptValue();
        });
        kit_.appListIs({{"C", "An app", "p", std::nullopt}});
    }

    void play() {
        kit_.openCheckout();
        for (int steps = 0; !choices_.isEmpty() && steps < 60; ++steps)
            step();
        end();
    }

  private:
    void step() {
        auto& scheduler = kit_.platform().scheduler();
        const auto& pages = kit_.platform().web().pages();
        const unsigned choice = choices_.next(20);
        if (choice < 8 && !pages.empty()) {
            pageStep(choice, *pages[choices_.next(static_cast<unsigned>(pages.size()))]);
        } else if (choice < 12) {
            scheduler.runOneTurn();
        } else if (choice == 12) {
            const auto waiting = static_cast<unsigned>(scheduler.backgroundCount());
            if (waiting > 0) scheduler.runOneBackgroundTask(choices_.next(waiting));
        } else if (choice == 13) {
            kit_.advance(seconds[choices_.next(seconds.size())]);
        } else if (choice < 18) {
            hostStep(choice);
        } else if (choice == 18) {
            kit_.platform().application().becomeActive();
        } else {
            machineStep();
        }
    }

    void pageStep(unsigned choice, platform::headless::ScriptedPage& page) {
        switch (choice) {
            case 0:
            case 1:
                page.navigate(choices_.oneOf(addresses));
                break;
            case 2:
            case 3:
                // A name nobody handles is told on standard error.
                if (const auto name = choices_.oneOf(names);
                    page.messageHandlers().contains(name)) {
                    page.post(name, {static_cast<ScriptValue::Type>(3 - choices_.next(4)),
                                     choices_.oneOf(bodies)});
                }
                break;
            case 4:
                page.navigateSubframe(choices_.oneOf(addresses));
                break;
            case 5:
                page.replaceUrl(choices_.oneOf(addresses));
                break;
            case 6:
                page.showPanel({static_cast<platform::ScriptPanel::Kind>(choices_.next(3)),
                                choices_.text(), std::nullopt});
                break;
            default:
                page.killWebProcess();
        }
    }

    void hostStep(unsigned choice) {
        const auto screen = kit_.screen();
        if (choice == 14) {
            kit_.sdk().handleDeviceBackButtonPress();
        } else if (choice == 15) {
            if (screen) screen->swipeBackDetected();
        } else if (choice == 16) {
            kit_.sdk().setDelegate(choices_.next(2) == 0 ? other_ : kit_.delegate());
        } else if (choices_.next(2) == 0) {
            kit_.sdk().checkout(kit_.presenter(), {.orderToken = CheckoutTestKit::orderToken()});
        } else if (choices_.next(2) == 0) {
            kit_.presenter()->dismiss(choices_.next(2) == 0);
        } else if (screen) {
            kit_.windowCloses();
        }
    }

    void machineStep() {
        switch (choices_.next(4)) {
            case 0:
                load_.ending = static_cast<ScriptedLoad::Ending>(choices_.next(6));
                break;
            case 1:
                load_.redirects.clear();
                if (choices_.next(2) == 0) load_.redirects.push_back(choices_.oneOf(addresses));
                break;
            case 2:
                evaluationFails_ = !evaluationFails_;
                break;
            default:
                choices_.next(2) == 0 ? kit_.enquiryFails() : kit_.enquiryAnswers({{"a", 1}}, "'");
        }
    }

    // Whatever happened, the checkout can be dismissed, and the next one works.
    void end() {
        close();
        const auto events = kit_.events();
        const auto reports = std::ranges::count_if(events, [](const testkit::Event& event) {
            return event.name == "PAYMENT_STATUS" && event.additionalData.contains("payload");
        });
        require(received() == static_cast<std::size_t>(reports),
                "the host hears of every report that is logged, and of no other");
        for (const auto& recorder : {kit_.delegate(), other_})
            for (const auto& response : recorder->responses())
                require(!response.contains("error") || response.contains("subMerchantId"),
                        "a failure says whose it is");

        load_ = ScriptedLoad();
        kit_.sdk().setDelegate(other_);
        other_->clear();
        kit_.openCheckout();
        require(kit_.isScreenOpen() && !kit_.isRetryShown(), "the next checkout opens");
        kit_.pageAnswers({{"next", true}});
        require(other_->responses() == std::vector{Dictionary{{"next", true}}}, "and ends");
        close();
    }

    void close() {
        kit_.settle();
        kit_.presenter()->dismiss(false);
        kit_.settle();
        require(kit_.platform().stage().shown().empty(), "a checkout can be dismissed");
        require(kit_.platform().web().pages().empty(), "no page outlives it");
        require(kit_.platform().scheduler().pendingCount() == 0, "nothing is left to run");
        require(kit_.platform().defaults().entries().empty(), "no record outlives it");
    }

    std::size_t received() const {
        return kit_.delegate()->responses().size() + other_->responses().size();
    }

    CheckoutTestKit kit_;
    Choices choices_;
    ScriptedLoad load_;
    bool evaluationFails_ = false;
    const std::shared_ptr<RecordingDelegate> other_ = std::make_shared<RecordingDelegate>();
};

void check(std::string_view input) {
    Run(input).play();
}

const Target target("page", check);

}  // namespace
}  // namespace zorvik::fuzz
