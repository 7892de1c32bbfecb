#include "examples/merchant/Demonstration.h"

#include <atomic>

#include "examples/merchant/DemoServices.h"
#include "examples/merchant/Journal.h"
#include "platform/runtime/NotificationCenter.h"
#include "platform/runtime/UserDefaults.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutSDK.h"

namespace zorvik::demo {

using platform::Dictionary;
using platform::NotificationCenter;
using platform::UserDefaults;

namespace {

constexpr double patienceSeconds = 120;
constexpr const char* recordKeys[] = {"current_transaction_id", "current_package_name",
                                      "transaction_start_time"};

void tell(const std::string& step) {
    printLabelled("step", step);
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
    explicit Witness(std::weak_ptr<Merchant> shop) : shop_(std::move(shop)) {}

    void onCheckoutResponse(const Dictionary& data) override {
        answers.push_back(inShort(data));
        shown = outcomeOf(data);
        for (const auto& [key, value] : data)
            printLabelled("host", key + ": " + platform::description(value));
        tell("host is told: " + answers.back());
        if (const auto shop = shop_.lock()) shop->onCheckoutResponse(data);
    }

    // Any thread.
    void heard(const std::string& line) {
        const std::size_t space = line.find(' ');
        if (space == line.npos) return;
        if (line.ends_with(" opens")) isCustomerAway_ = true;
        printLabelled(line.substr(0, space), line.substr(space + 1));
    }

    void becameActive() {
        if (isCustomerAway_.exchange(false)) tell("customer is back in the shop");
    }

    bool isCustomerAway() const { return isCustomerAway_; }

    std::vector<std::string> answers;
    Outcome shown = {};  // of the last

  private:
    const std::weak_ptr<Merchant> shop_;
    std::atomic<bool> isCustomerAway_ = false;
};

Demonstration::Demonstration(Desktop& desktop, DemonstrationOptions options)
    : desktop_(desktop),
      options_(std::move(options)),
      shop_(std::make_shared<Merchant>(desktop, options_.orderFile)),
      witness_(std::make_shared<Witness>(shop_)),
      upiApps_([witness = witness_](const auto& line) { witness->heard(line); }) {
    configureServices(options_.backendUrl, makePrintingSink());
    shop_->setUp();
    ZorvikCheckoutSDK::shared().setDelegate(witness_);
    NotificationCenter::defaultCenter().addObserver(std::weak_ptr(witness_), &Witness::becameActive,
                                                    NotificationCenter::applicationDidBecomeActive);
    desktop_.start({
        .pay = [this] { pressedPay(); },
        .back = [shop = shop_] { shop->goBack(); },
        .isCheckoutOpen = [shop = shop_] { return shop->isCheckoutOpen(); },
    });
}

Demonstration::~Demonstration() = default;

void Demonstration::pressedPay() {
    tell("customer presses Pay");
    if (!options_.hasAutomaticCustomer) play(stepsOfOnlooker());
    if (options_.resumesOrder) return shop_->resume();
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
    if (!options_.hasAutomaticCustomer) {
        runUntil([] { return false; });
        return isAnswered;
    }
    printLabelled("outcome", "expected " + options_.scenario->expected + ", seen " + seen());
    return seen() == options_.scenario->expected;
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
    printLabelled("png", path);
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
