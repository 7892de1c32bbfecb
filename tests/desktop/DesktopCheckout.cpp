#include "tests/desktop/DesktopCheckout.h"

#include <algorithm>

#include "platform/dispatch/DispatchQueue.h"
#include "platform/foundation/Console.h"
#include "platform/foundation/JSONSerialization.h"

namespace zorvik::tests {

using platform::DispatchQueue;
using platform::UIView;

namespace {

// What the makers' page offers: a function that receives the UPI apps, and a listener.
constexpr auto checkoutPage = R"page(
<h1>Pay</h1>
<script>
  window.received = [];
  window.messages = [];
  window.zorvik_web = { UPIIntentAvailable: text => window.received.push(JSON.parse(text)) };
  window.addEventListener('message', event => window.messages.push(event.data));
</script>
)page";

}  // namespace

std::shared_ptr<DesktopCheckout> DesktopCheckout::make(const std::string& checkoutUrl) {
    auto host = std::make_shared<DesktopCheckout>();
    platform::setConsoleSink(
        [raw = host.get()](std::string_view line) { raw->console.emplace_back(line); });
    host->platform = platform::gtk::GtkPlatform::make({.applicationId = "desktop-checkout"});
    host->window = host->platform->openWindow("Merchant", {390, 760});
    host->presenter = host->platform->presenterFor(host->window);
    host->server.replyPage("/checkout", checkoutPage);
    host->server.replyPage("/processing", "<!doctype html><p>processing");
    host->configure(checkoutUrl.empty() ? host->server.address("/checkout") + "?token=%@"
                                        : checkoutUrl);
    return host;
}

DesktopCheckout::~DesktopCheckout() {
    presenter.reset();
    platform.reset();
    platform::setConsoleSink({});
}

void DesktopCheckout::onCheckoutResponse(const platform::Dictionary& data) {
    results.push_back(data);
}

void DesktopCheckout::configure(const std::string& checkoutUrl,
                                std::vector<development::DevelopmentUPIApp> apps) {
    static const auto orders = std::make_shared<development::MemoryOrderBook>();
    development::Configuration configuration;
    configuration.webViewViewUrl = checkoutUrl;
    configuration.webViewRespCheckUrl = server.address("/response");
    configuration.upiApps = std::move(apps);
    configuration.eventSink = events;
    configuration.orderBook = orders;
    configuration.runInBackground = [](std::function<void()> task) {
        DispatchQueue::global(DispatchQueue::QualityOfService::background).async(std::move(task));
    };
    development::DevelopmentCore::shared().configure(std::move(configuration));
}

void DesktopCheckout::checkout() {
    auto& sdk = ZorvikCheckoutSDK::shared();
    sdk.setDelegate(weak_from_this());
    std::optional<OrderResponse> order;
    sdk.createOrder(
        1499, "INR", {}, std::nullopt, [&order](const platform::Result<OrderResponse>& created) {
            DispatchQueue::main().async([&order, response = created.value()] { order = response; });
        });
    waitFor([&] { return order.has_value(); });
    orderId = order->orderId.value();
    token = order->orderToken.value();
    sdk.checkout(presenter, {token, {}, {}, {}, {}});
    waitFor([this] { return isScreenOpen(); });
}

bool DesktopCheckout::waitForEvent(const std::string& name, std::size_t times) {
    return waitFor([&] { return countOf(name) >= times; });
}

std::string DesktopCheckout::evaluated(const std::string& script) {
    std::optional<std::string> text;
    find<platform::WKWebView>()->evaluateJavaScript(
        script, [&text](const platform::Result<platform::ScriptValue>& result) {
            text = result ? result.value().text : "error: " + result.error().localizedDescription;
        });
    waitFor([&] { return text.has_value(); });
    return text.value_or("error: no answer");
}

void DesktopCheckout::payWith(const std::string& response) {
    const std::string address = server.address("/response") + "?response=" + response;
    const auto literal = platform::JSONSerialization::data(platform::Value(address));
    evaluated("setTimeout(() => { location.href = " + literal.value() + " }, 0);0");
}

std::vector<std::string> DesktopCheckout::eventNames() const {
    std::vector<std::string> names;
    for (const auto& event : events->events()) {
        names.push_back(event.eventName);
    }
    return names;
}

std::size_t DesktopCheckout::countOf(const std::string& eventName) const {
    const auto names = eventNames();
    return static_cast<std::size_t>(std::count(names.begin(), names.end(), eventName));
}

std::shared_ptr<UIView> DesktopCheckout::find(UIView& root,
                                              const std::function<UIView*(UIView&)>& match) {
    for (const auto& view : root.subviews()) {
        if (match(*view) != nullptr) return view;
        if (auto found = find(*view, match)) return found;
    }
    return nullptr;
}

}  // namespace zorvik::tests
