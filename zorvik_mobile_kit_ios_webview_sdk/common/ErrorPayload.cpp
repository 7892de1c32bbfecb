#include "zorvik_mobile_kit_ios_webview_sdk/common/ErrorPayload.h"

#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutSDK.h"

namespace zorvik {

platform::Dictionary errorPayload(const std::string& message,
                                  const std::optional<std::string>& orderToken) {
    const std::string token = orderToken.value_or("");
    const std::string orderId = ZorvikCheckoutSDK::getOrderID(token);
    return {{"error", message},
            {"order_id", orderId},
            {"zorvik_order_id", orderId},
            {"token", token},
            {"subMerchantId", ZorvikCheckoutSDK::getSubMerchantID(token)}};
}

}  // namespace zorvik
