#include "examples/merchant/Merchant.h"

#include <fstream>
#include <iterator>

#include "core/development/DevelopmentCore.h"
#include "examples/common/DemoUPIApps.h"
#include "examples/common/HttpClient.h"
#include "examples/merchant/HttpOrderBook.h"
#include "examples/merchant/Journal.h"
#include "platform/runtime/DispatchQueue.h"
#include "platform/runtime/UserDefaults.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutSDK.h"

namespace zorvik::demo {

using development::DevelopmentCore;
using platform::Dictionary;
using platform::DispatchQueue;
using platform::Result;
using platform::UserDefaults;

namespace {

constexpr double patienceSeconds = 120;
constexpr const char* recordKeys[] = {"current_transaction_id", "current_package_name",
                                      "transaction_start_time"};

// Where a person pays, only pictures are taken.
const std::vector<Step> stepsOfOnlooker{
    {Step::Action::seeScreen},
    {Step::Action::wait, "0.45"},
    {Step::Action::savePng, "skeleton"},
    {Step::Action::see, "!!document.querySelector('#upi-apps button')"},
    {Step::Action::wait, "0.7"},
    {Step::Action::savePng, "page"},
};

void inBackground(std::function<void()> task) {
    DispatchQueue::global(DispatchQueue::QualityOfService::background).async(std::move(task));
}

void printRecord(const std::string& when) {
    for (const char* key : recordKeys) {
        const auto entry = UserDefaults::standard().object(key);
        printLabelled("store",
                      when + ", " + key + ": " + (entry ? platform::description(*entry) : "none"));
    }
}

}  // namespace

std::shared_ptr<Merchant> Merchant::open(Desktop& desktop, MerchantOptions options) {
    const std::shared_ptr<Merchant> merchant(new Merchant(desktop, std::move(options)));
    const auto whileThere = [weak = merchant->weak_from_this()](auto act) {
        return [weak, act] {
            if (const auto self = weak.lock()) act(*self);
        };
    };
    desktop.start({
        .pay = whileThere([](Merchant& self) { self.pay(); }),
        .back = [] { ZorvikCheckoutSDK::shared().handleDeviceBackButtonPress(); },
        .isCheckoutOpen =
            [&desktop] {
                const auto presenter = desktop.presenter();
                return presenter && presenter->presentedViewController();
            },
    });
    merchant->configureCore();
    return merchant;
}

Merchant::Merchant(Desktop& desktop, MerchantOptions options)
    : desktop_(desktop), options_(std::move(options)) {}

void Merchant::configureCore() {
    development::Configuration configuration;
    configuration.webViewViewUrl = options_.backendUrl + "/checkout?token=%@";
    configuration.webViewRespCheckUrl = options_.backendUrl + "/payment/response";
    for (const DemoUPIApp& app : demoUPIApps()) {
        configuration.upiApps.push_back(
            {{app.code, app.name, app.packageName, options_.backendUrl + "/icons/" + app.icon},
             app.returnScheme});
    }
    configuration.runInBackground = inBackground;
    configuration.eventSink = makePrintingSink();
    configuration.orderBook = std::make_shared<HttpOrderBook>(options_.backendUrl);
    DevelopmentCore::shared().configure(std::move(configuration));
}

bool Merchant::run() {
    auto& sdk = ZorvikCheckoutSDK::shared();
    sdk.setDelegate(weak_from_this());
    sdk.initialize("teal-heron-demo");
    if (options_.resumesOrder) printRecord("at the start");

    // A person takes the time it takes, again and again.
    const auto runUntil = [this](const std::function<bool()>& condition) {
        const auto isOver = [&] { return condition() || stuckAt_ || !desktop_.isOpen(); };
        while (!desktop_.runUntil(isOver, patienceSeconds) && !options_.hasAutomaticCustomer) {
        }
    };
    if (options_.hasAutomaticCustomer) startCustomer(stepsOfCustomer());
    runUntil([this] { return hostCalls_ > 0; });
    if (stuckAt_) printLabelled("demo", "Waited in vain for " + *stuckAt_);
    if (!desktop_.isOpen()) return hostCalls_ > 0;
    if (hostCalls_ > 0) {
        // The checkout screen slides away before the result can be seen.
        const auto presenter = desktop_.presenter();
        desktop_.runUntil([&] { return !presenter->presentedViewController(); }, 5);
        desktop_.runUntil([] { return false; }, 0.4);
        printRecord("at the end");
    }
    savePng(hostCalls_ > 0 ? "result" : "stuck");
    if (!options_.hasAutomaticCustomer) runUntil([] { return false; });
    if (hostCalls_ > 1) printLabelled("demo", "The host was called more than once");
    return hostCalls_ > 0;
}

void Merchant::pay() {
    desktop_.showBusy();
    if (!options_.hasAutomaticCustomer) startCustomer(stepsOfOnlooker);
    if (options_.resumesOrder) return checkOut(rememberedOrder());
    std::vector<Dictionary> items;
    for (const BasketItem& item : basket()) {
        items.push_back({{"name", item.name}, {"amount", item.amount}});
    }
    const auto amount = development::minorUnitsFrom(basketTotal()).value_or(0);
    ZorvikCheckoutSDK::shared().createOrder(
        static_cast<double>(amount) / 100, "INR", items, std::nullopt,
        [weak = weak_from_this()](const Result<OrderResponse>& order) {
            // The completion comes on a thread of the core services' choice.
            DispatchQueue::main().async([weak, order] {
                const auto self = weak.lock();
                if (!self) return;
                if (!order) return self->desktop_.showBasket(order.error().localizedDescription);
                const std::string token = order.value().orderToken.value_or("");
                self->rememberOrder(token);
                self->checkOut(token);
            });
        });
}

void Merchant::checkOut(const std::string& token) {
    ZorvikCheckoutOptions options;
    options.orderToken = token;
    ZorvikCheckoutSDK::shared().checkout(desktop_.presenter(), options);
}

void Merchant::onCheckoutResponse(const Dictionary& data) {
    ++hostCalls_;
    for (const auto& [key, value] : data) {
        printLabelled("host", key + ": " + platform::description(value));
    }
    if (data.empty()) printLabelled("host", "(an empty dictionary)");
    desktop_.showResult(data);
}

void Merchant::rememberOrder(const std::string& token) const {
    std::ofstream(options_.orderFile) << token;
}

std::string Merchant::rememberedOrder() const {
    std::ifstream file(options_.orderFile);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

bool Merchant::savePng(const std::string& name) {
    if (options_.pngFolder.empty()) return true;
    const std::string path = options_.pngFolder + "/" + name + ".png";
    if (!desktop_.isOpen() || !desktop_.savePng(path)) return false;
    printLabelled("png", path);
    return true;
}

void Merchant::setFault(const std::string& fault, bool isOn, std::function<void()> done) {
    inBackground([url = options_.backendUrl, fault, isOn, done = std::move(done)] {
        const auto answer = exchange("POST", url + "/api/demo/faults", Dictionary{{fault, isOn}});
        if (!answer) return printLabelled("demo", answer.error().localizedDescription);
        printLabelled("demo", fault + (isOn ? " is on" : " is off"));
        DispatchQueue::main().async(done);
    });
}

std::vector<Step> Merchant::stepsOfCustomer() const {
    using enum Step::Action;
    if (options_.resumesOrder) {
        return {{Step::Action::pay},
                {seeScreen},
                {see,
                 "!document.getElementById('loading')?.getClientRects().length && "
                 "!!document.getElementById('methods')"},
                {wait, "0.7"},
                {savePng, "after-restart"}};
    }
    std::vector<Step> steps = options_.scenario->steps;
    // The window is drawn first.
    steps.insert(steps.begin(), {{wait, "0.5"}, {savePng, "shop"}});
    return steps;
}

void Merchant::startCustomer(std::vector<Step> steps) {
    AutomaticCustomer::Surroundings surroundings{
        .desktop = desktop_,
        .savePng = [this](const std::string& name) { return savePng(name); },
        .pay = [this] { pay(); },
        .deviceBack = [] { ZorvikCheckoutSDK::shared().handleDeviceBackButtonPress(); },
        .setFault = [this](const std::string& fault, bool isOn,
                           auto done) { setFault(fault, isOn, std::move(done)); },
        .isHandedOff = [] { return UserDefaults::standard().object(recordKeys[2]).has_value(); },
    };
    customer_ = std::make_unique<AutomaticCustomer>(std::move(steps), std::move(surroundings));
    customer_->start([this](const std::string& waitedFor) {
        if (options_.hasAutomaticCustomer) stuckAt_ = waitedFor;
    });
}

}  // namespace zorvik::demo
