#include "examples/merchant/Merchant.h"

#include <fstream>
#include <iterator>

#include "core/development/OrderBook.h"
#include "platform/runtime/DispatchQueue.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutSDK.h"

namespace zorvik::demo {

using platform::Dictionary;
using platform::DispatchQueue;
using platform::Result;

void Merchant::setUp() {
    ZorvikCheckoutSDK::shared().setDelegate(weak_from_this());
    ZorvikCheckoutSDK::shared().initialize("teal-heron-demo");
}

void Merchant::pay() {
    desktop_.showBusy();
    std::vector<Dictionary> items;
    for (const BasketItem& item : basket())
        items.push_back({{"name", item.name}, {"amount", item.amount}});
    const auto paise = development::minorUnitsFrom(basketTotal()).value_or(0);
    ZorvikCheckoutSDK::shared().createOrder(
        static_cast<double>(paise) / 100, "INR", items, std::nullopt,
        [weak = weak_from_this()](const Result<OrderResponse>& order) {
            // The answer comes on a thread of the core services' choice.
            DispatchQueue::main().async([weak, order] {
                const auto self = weak.lock();
                if (!self) return;
                if (!order) return self->desktop_.showBasket(order.error().localizedDescription);
                self->checkOut(order.value().orderToken.value_or(""));
            });
        });
}

void Merchant::checkOut(const std::string& token) {
    remember(token);
    ZorvikCheckoutOptions options;
    options.orderToken = token;
    ZorvikCheckoutSDK::shared().checkout(desktop_.presenter(), options);
}

void Merchant::onCheckoutResponse(const Dictionary& data) {
    // Success, failure, cancelled or not known yet; goods go out on the back end's word alone.
    desktop_.showResult(data);
}

void Merchant::goBack() {
    ZorvikCheckoutSDK::shared().handleDeviceBackButtonPress();
}

bool Merchant::isCheckoutOpen() const {
    const auto presenter = desktop_.presenter();
    return presenter && presenter->presentedViewController();
}

void Merchant::resume() {
    desktop_.showBusy();
    checkOut(rememberedOrder());
}

void Merchant::remember(const std::string& token) const {
    std::ofstream(orderFile_) << token;
}

std::string Merchant::rememberedOrder() const {
    std::ifstream file(orderFile_);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

}  // namespace zorvik::demo
