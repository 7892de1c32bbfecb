// A whole checkout in a window: page.html answers for the customer as soon as it has loaded. Ends
// with 0 when the delegate was told what the page wrote, and the screen closed.
#include <core/development/DevelopmentCore.h>
#include <platform/gtk/GtkPlatform.h>
#include <platform/runtime/DispatchQueue.h>
#include <zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckout.h>

#include <cstdio>

using zorvik::development::DevelopmentCore;
using zorvik::platform::Dictionary;
using zorvik::platform::DispatchQueue;
using zorvik::platform::gtk::GtkPlatform;

namespace {

struct Host : zorvik::ZorvikCheckoutSDKDelegate {
    std::vector<Dictionary> results;
    void onCheckoutResponse(const Dictionary& data) override { results.push_back(data); }
};

}  // namespace

int main() {
    const auto orders = std::make_shared<zorvik::development::MemoryOrderBook>();
    const auto order = orders->create({.amountInMinorUnits = 149900, .currency = "INR"});
    DevelopmentCore::shared().configure({
        .webViewViewUrl = "file://" PAGE,
        .webViewRespCheckUrl = "https://desk.invalid/response",
        .runInBackground =
            [](std::function<void()> task) {
                DispatchQueue::global(DispatchQueue::QualityOfService::background)
                    .async(std::move(task));
            },
        .orderBook = orders,
    });
    const auto platform = GtkPlatform::make({.applicationId = "zorvik-consumer"});
    if (!platform || !order) return 2;
    const auto presenter = platform->presenterFor(platform->openWindow("Consumer", {440, 800}));
    const auto host = std::make_shared<Host>();
    auto& sdk = zorvik::ZorvikCheckoutSDK::shared();
    sdk.setDelegate(host);
    const std::string token = order.value().token;
    sdk.checkout(presenter, {.orderToken = token});
    const bool isOver = platform->runUntil(
        [&] { return !host->results.empty() && !presenter->presentedViewController(); }, 30);
    for (const auto& result : host->results)
        std::printf("result %s\n", zorvik::platform::description(result).c_str());

    // The host asks its back end before it ships.
    const auto paid = orders->recordPayment(
        order.value().orderId, {.transactionId = "t-1",
                                .method = "CARD",
                                .status = zorvik::development::PaymentStatus::success});
    const bool isPaid =
        paid && paid.value().status() == zorvik::development::PaymentStatus::success &&
        zorvik::development::enquiryFields(paid.value(), "t-1").contains("payment_status");
    return isOver && isPaid &&
                   host->results == std::vector{Dictionary{{"paid", true}, {"token", token}}}
               ? 0
               : 1;
}
