#include "zorvik_mobile_kit_ios_webview_sdk/common/CheckoutEvents.h"

#include <utility>

#include "core/EventLogging.h"
#include "platform/runtime/DispatchQueue.h"
#include "zorvik_mobile_kit_ios_webview_sdk/SDKVersion.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutSDK.h"

namespace zorvik {

void logCheckoutEvent(std::string_view eventName, const std::optional<std::string>& orderToken,
                      const platform::Dictionary& additionalData) {
    const std::string token = orderToken.value_or("");
    EventLoggingUtils::safeLogEvent(eventName, ZorvikCheckoutSDK::getOrderID(token), orderToken,
                                    ZorvikCheckoutSDK::getSubMerchantID(token), additionalData,
                                    SDKVersion::version);
}

void logEventWithoutOrder(std::string_view eventName, const platform::Dictionary& additionalData) {
    EventLoggingUtils::safeLogEvent(eventName, std::nullopt, std::nullopt, std::nullopt,
                                    additionalData, SDKVersion::version);
}

void inBackground(std::function<void()> task) {
    using platform::DispatchQueue;
    DispatchQueue::global(DispatchQueue::QualityOfService::background).async(std::move(task));
}

}  // namespace zorvik
