#include "zorvik_mobile_kit_ios_webview_sdk/facade/ZorvikCheckoutSDKDelegateObjCProxy.h"

#include <array>

#include "core/EventConstants.h"
#include "core/EventLogging.h"
#include "zorvik_mobile_kit_ios_webview_sdk/LogUtil.h"
#include "zorvik_mobile_kit_ios_webview_sdk/SDKVersion.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutSDK.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutWebView.h"
#include "zorvik_mobile_kit_ios_webview_sdk/common/CheckoutEvents.h"
#include "zorvik_mobile_kit_ios_webview_sdk/common/Text.h"

namespace zorvik {

using platform::Dictionary;

namespace {

// The first of these keys that holds a string; its order is the bridge's own.
constexpr std::array transactionKeys{"zorvikTransactionId", "pspTransactionId", "transactionId",
                                     "tr"};

std::string transactionIdForReport(const Dictionary& payload, const std::string& extracted) {
    for (const auto* key : transactionKeys) {
        const auto entry = payload.find(key);
        if (entry == payload.end()) continue;
        if (const auto* text = entry->second.string()) return *text;
    }
    return extracted.empty() ? "unknown" : extracted;
}

}  // namespace

void ZorvikCheckoutSDKDelegateObjCProxy::zorvikCheckoutWebViewDidSucceed(
    const std::shared_ptr<ZorvikCheckoutWebView>& screen, const Dictionary& payload) {
    const std::string printedPayload = platform::description(payload);
    LogUtil::debugLog([&] { return joined("🎉 Success called with payload: ", printedPayload); });
    const std::string orderId =
        ZorvikCheckoutSDK::getOrderID(screen->options().orderToken.value_or(""));
    // Holds the screen strongly until it has run.
    inBackground(
        [screen, orderId, printedPayload,
         transactionId = transactionIdForReport(payload, screen->_extractedTransactionId)] {
            const auto token = screen->options().orderToken;
            EventLoggingUtils::safeLogEvent(EventConstants::PAYMENT_STATUS, orderId, token,
                                            ZorvikCheckoutSDK::getSubMerchantID(token.value_or("")),
                                            Dictionary{{"transactionId", transactionId},
                                                       {"payload", printedPayload},
                                                       {"status", "success"}},
                                            SDKVersion::version);
        });
    if (const auto host = delegate_.lock()) host->onCheckoutResponse(payload);
    screen->dismiss(true);
}

void ZorvikCheckoutSDKDelegateObjCProxy::zorvikCheckoutWebViewDidFail(
    const std::shared_ptr<ZorvikCheckoutWebView>& screen, const Dictionary& payload) {
    LogUtil::debugLog([&] { return joined("📊 Payload: ", platform::description(payload)); });
    const auto entry = payload.find("error");
    const auto* text = entry == payload.end() ? nullptr : entry->second.string();
    // Holds the screen strongly until it has run.
    inBackground([screen, payload, error = text == nullptr ? "Payment failed" : *text] {
        logCheckoutEvent(EventConstants::PAYMENT_STATUS, screen->options().orderToken,
                         {{"error", error}, {"payload", payload}, {"status", "failed"}});
    });
    if (const auto host = delegate_.lock()) {
        const Dictionary copy = payload;
        host->onCheckoutResponse(copy);
        LogUtil::debugLog([&] {
            return joined("✅ Failure forwarded to delegate with error response: ",
                          platform::description(copy));
        });
    }
    screen->dismiss(true);
}

}  // namespace zorvik
