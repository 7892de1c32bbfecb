#include "examples/merchant/Demonstration.h"

#include <atomic>

#include "examples/merchant/DemoServices.h"
#include "examples/merchant/Journal.h"
#include "platform/runtime/DispatchQueue.h"
#include "platform/runtime/NotificationCenter.h"
#include "platform/runtime/UserDefaults.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutSDK.h"

namespace zorvik::demo {

using platform::Dictionary;
using platform::DispatchQueue;
using platform::NotificationCenter;
using platform::UserDefaults;
using trace::Lane;
using trace::Recording;

namespace {

constexpr double patienceSeconds = 120;
constexpr const char* recordKeys[] = {"current_transaction_id", "current_package_name",
                                      "transaction_start_time"};

// Prints the events, and records them.
class Sink : public development::EventSink {
  public:
    void record(const development::RecordedEvent& event) override {
        printed_->record(event);
        trace::Step::event(event.eventName, event.additionalData.value_or(Dictionary()));
    }

  private:
    const std::shared_ptr<development::EventSink> printed_ = makePrintingSink();
};

// A step of the story, and the cause of what happens in its scope. Any thread.
class Told {
  public:
    explicit Told(const std::string& step, Lane lane = Lane::host) : step_(lane, step.c_str()) {
        printLabelled("step", step);
    }

  private:
    const trace::Step step_;
};

void tell(const std::string& step) {
    const Told told(step);
}

void printRecord(const std::string& when) {
    for (const char* key : recordKeys) {
        const auto entry = UserDefaults::standard().object(key);
        printLabelled("store",
                      when + ", " + key + ": " + (entry ? platform::description(*entry) : "none"));
    }
}

bool isHandedOff() {
    return UserDefaults::standard().object(recordKeys[2]).has_value();
}

}  // namespace

// Stands between the checkout and the shop, and tells what comes by.
class Demonstration::Witness : public ZorvikCheckoutSDKDelegate {
  public:
    Witness(std::weak_ptr<Merchant> shop, std::shared_ptr<Recording> recording)
        : shop_(std::move(shop)), recording_(std::move(recording)) {}

    void onCheckoutResponse(const Dictionary& data) override {
        answers.push_back(inShort(data));
        shown = outcomeOf(data);
        for (const auto& [key, value] : data)
            printLabelled("host", key + ": " + platform::description(value));
        tell("host is told: " + answers.back());
        if (const auto shop = shop_.lock()) shop->onCheckoutResponse(data);
    }

    // What a UPI app says: "step Nilgiri Pay opens", "png FILE". Any thread.
    void heard(const std::string& line) {
        if (line.starts_with("step ")) {
            if (line.ends_with(" opens")) isCustomerAway_ = true;
            const Told told(line.substr(5), Lane::upiApp);
        } else if (line.starts_with("png ")) {
            tookPicture("upi-app", line.substr(4));
        }
    }

    // Any thread.
    void tookPicture(const std::string& name, const std::string& path) {
        printLabelled("png", path);
        if (!recording_) return;
        DispatchQueue::main().async([weak = std::weak_ptr(recording_), name, path] {
            if (const auto recording = weak.lock()) recording->picture(name, path);
        });
    }

    void becameActive() {
        if (isCustomerAway_.exchange(false)) tell("customer is back in the shop");
    }

    bool isCustomerAway() const { return isCustomerAway_; }

    std::vector<std::string> answers;
    Outcome shown = {};  // of the last

  private:
    const std::weak_ptr<Merchant> shop_;
    const std::shared_ptr<Recording> recording_;
    std::atomic<bool> isCustomerAway_ = false;
};

Demonstration::Demonstration(Desktop& desktop, DemonstrationOptions options)
    : desktop_(desktop),
      options_(std::move(options)),
      recording_(options_.traceFile.empty() ? nullptr : std::make_shared<Recording>()),
      shop_(std::make_shared<Merchant>(desktop, options_.orderFile)),
      witness_(std::make_shared<Witness>(shop_, recording_)),
      receiver_(witness_),
      upiApps_([witness = witness_](const auto& line) { witness->heard(line); }) {
    if (recording_) receiver_ = recording_->delegate(witness_);
    configureServices(options_.backendUrl, std::make_shared<Sink>());
    shop_->setUp();
    ZorvikCheckoutSDK::shared().setDelegate(receiver_);
    NotificationCenter::defaultCenter().addObserver(std::weak_ptr(witness_), &Witness::becameActive,
                                                    NotificationCenter::applicationDidBecomeActive);
    desktop_.start({
        .pay = [this] { pressedPay(); },
        .back =
            [shop = shop_] {
                const trace::Step step(Lane::facade, "handleDeviceBackButtonPress");
                shop->goBack();
            },
        .isCheckoutOpen = [shop = shop_] { return shop->isCheckoutOpen(); },
    });
}

Demonstration::~Demonstration() = default;

void Demonstration::pressedPay() {
    const Told told("customer presses Pay");
    if (!options_.hasAutomaticCustomer) play(stepsOfOnlooker());
    if (options_.resumesOrder) {
        const trace::Step step(Lane::facade, "checkout");
        return shop_->resume();
    }
    const trace::Step step(Lane::facade, "createOrder");
    shop_->pay();
}

bool Demonstration::run() {
    if (options_.resumesOrder) printRecord("at the start");
    if (!options_.hasAutomaticCustomer) {
        play(stepsOfOpening());
    } else {
        play(options_.resumesOrder ? stepsAfterRestart() : options_.scenario->steps);
    }
    runUntil([this] { return !witness_->answers.empty(); });
    if (stuckAt_) printLabelled("demo", "Waited in vain for " + *stuckAt_);
    const bool isAnswered = !witness_->answers.empty();
    if (desktop_.isOpen()) {
        if (isAnswered) awaitResult();
        savePng(isAnswered ? "result" : "stuck");
    }
    if (!options_.hasAutomaticCustomer) runUntil([] { return false; });
    writeTrace();
    if (!options_.hasAutomaticCustomer) return isAnswered;
    printLabelled("outcome", "expected " + options_.scenario->expected + ", seen " + seen());
    return seen() == options_.scenario->expected;
}

void Demonstration::writeTrace() const {
    if (!recording_) return;
    const auto written = recording_->writeHtml(options_.traceFile);
    if (!written) return printLabelled("demo", written.error().localizedDescription);
    printLabelled("trace", options_.traceFile);
}

void Demonstration::runUntil(const std::function<bool()>& condition) {
    const auto isOver = [&] { return condition() || stuckAt_ || !desktop_.isOpen(); };
    // A person takes the time it takes, again and again.
    while (!desktop_.runUntil(isOver, patienceSeconds) && !options_.hasAutomaticCustomer) {
    }
}

void Demonstration::awaitResult() {
    const auto isSeen = [this] {
        return !shop_->isCheckoutOpen() && !witness_->isCustomerAway() &&
               desktop_.hasButton(witness_->shown.action);
    };
    if (desktop_.runUntil(isSeen, 5)) tell("shop shows \"" + witness_->shown.title + "\"");
    if (!options_.pngFolder.empty()) desktop_.runUntil([] { return false; }, 0.4);
    printRecord("at the end");
}

std::string Demonstration::seen() const {
    if (witness_->answers.empty()) return "nothing";
    std::string text = witness_->answers.front();
    for (std::size_t i = 1; i < witness_->answers.size(); ++i)
        text += ", then " + witness_->answers[i];
    return text;
}

bool Demonstration::savePng(const std::string& name) {
    if (options_.pngFolder.empty()) return true;
    const std::string path = options_.pngFolder + "/" + name + ".png";
    if (!desktop_.isOpen() || !desktop_.savePng(path)) return false;
    witness_->tookPicture(name, path);
    return true;
}

void Demonstration::play(std::vector<Step> steps) {
    AutomaticCustomer::Surroundings surroundings{
        .desktop = desktop_,
        .savePng = [this](const std::string& name) { return savePng(name); },
        .takesPictures = !options_.pngFolder.empty(),
        .tell = tell,
        .deviceBack = [shop = shop_] { shop->goBack(); },
        .setFault = [url = options_.backendUrl](
                        const std::string& fault, bool isOn,
                        auto done) { setFault(url, fault, isOn, std::move(done)); },
        .isHandedOff = isHandedOff,
        .isInApp = [witness = witness_] { return witness->isCustomerAway(); },
    };
    customer_ = std::make_unique<AutomaticCustomer>(std::move(steps), std::move(surroundings));
    customer_->start([this](const std::string& waitedFor) {
        if (options_.hasAutomaticCustomer) stuckAt_ = waitedFor;
    });
}

}  // namespace zorvik::demo
