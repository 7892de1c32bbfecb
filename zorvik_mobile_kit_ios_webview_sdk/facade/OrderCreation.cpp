#include <utility>

#include "core/EventConstants.h"
#include "zorvik_mobile_kit_ios_webview_sdk/LogUtil.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutSDK.h"
#include "zorvik_mobile_kit_ios_webview_sdk/common/CheckoutEvents.h"
#include "zorvik_mobile_kit_ios_webview_sdk/common/Text.h"

namespace zorvik {

using platform::Array;
using platform::description;
using platform::Dictionary;
using platform::Result;
using platform::Value;

namespace {

std::string printed(const std::optional<Dictionary>& dictionary) {
    return dictionary ? description(*dictionary) : "nil";
}

std::string printed(const OrderResponse& response) {
    return joined("orderId: ", response.orderId.value_or("nil"),
                  ", status: ", response.status.value_or("nil"));
}

std::string printed(const Dictionary& dictionary) {
    return description(dictionary);
}

// Logs how an operation ended, then hands the result on as it came, on the thread it came on.
template <class T>
std::function<void(const Result<T>&)> passedThrough(
    std::string operation, std::function<void(const Result<T>&)> completion) {
    return [operation = std::move(operation),
            completion = std::move(completion)](const Result<T>& result) {
        if (result) {
            LogUtil::debugLog(
                [&] { return joined(operation, " success: ", printed(result.value())); });
        } else {
            const std::string& error = result.error().localizedDescription;
            LogUtil::debugLog([&] { return joined(operation, " failure: ", error); });
            logEventWithoutOrder(EventConstants::EXCEPTION_THROWN, {{"error", error}});
        }
        if (completion) completion(result);
    };
}

}  // namespace

void ZorvikCheckoutSDK::createOrder(double amount, const std::string& currency,
                                    const std::vector<Dictionary>& orderLineItems,
                                    const std::optional<Dictionary>& user,
                                    ZorvikCoreApiSDK::OrderCompletion completion) {
    LogUtil::debugLog([&] {
        return joined("createOrder called with amount: ", description(amount),
                      ", currency: ", currency, ", orderLineItems: ",
                      description(Value(Array(orderLineItems.begin(), orderLineItems.end()))),
                      ", user: ", printed(user));
    });
    ZorvikCoreApiSDK::shared().createOrder(
        amount, currency, orderLineItems, user,
        passedThrough<OrderResponse>("createOrder", std::move(completion)));
}

void ZorvikCheckoutSDK::createShopOrder(const std::string& currency, const std::string& amount,
                                        const std::string& productId, bool orderLineItems,
                                        const std::string& checkoutExperience,
                                        const std::string& paymentMode,
                                        const std::string& subPaymentMode,
                                        const std::optional<Dictionary>& user,
                                        ZorvikCoreApiSDK::ShopOrderCompletion completion) {
    LogUtil::debugLog([&] {
        return joined("createShopOrder called with currency: ", currency, ", amount: ", amount,
                      ", productId: ", productId, ", orderLineItems: ", description(orderLineItems),
                      ", checkoutExperience: ", checkoutExperience, ", paymentMode: ", paymentMode,
                      ", subPaymentMode: ", subPaymentMode, ", user: ", printed(user));
    });
    ZorvikCoreApiSDK::shared().createShopOrder(
        currency, amount, productId, orderLineItems, checkoutExperience, paymentMode,
        subPaymentMode, user, passedThrough<Dictionary>("createShopOrder", std::move(completion)));
}

}  // namespace zorvik
