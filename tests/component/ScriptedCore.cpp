#include "tests/component/ScriptedCore.h"

#include "core/APIUtils.h"
#include "core/EventConstants.h"
#include "core/EventLogging.h"
#include "core/ZorvikUPIAppDetector.h"

namespace zorvik {

using platform::Dictionary;

namespace {

std::string named(const std::optional<std::string>& text) {
    return !text ? "nil" : *text == plainToken() ? "TOKEN" : '"' + *text + '"';
}

}  // namespace

ZorvikCoreApiSDK& ZorvikCoreApiSDK::shared() {
    return *ScriptedCore::current;
}

void ZorvikUPIAppDetector::getUPIAppsList(const std::string& token, Completion completion) {
    ScriptedCore::current->call(
        "getUPIAppsList", {token},
        [completion, result = ScriptedCore::current->appsAnswer] { completion(result); });
}

bool ZorvikUPIAppDetector::isUPIAppReturnURL(const std::string& url) {
    ++ScriptedCore::current->returnQuestions;
    return url.starts_with("shopreturn://");
}

void EventLoggingUtils::safeLogEvent(std::string_view eventName,
                                     const std::optional<std::string>& orderId,
                                     const std::optional<std::string>& token,
                                     const std::optional<std::string>& subMerchantId,
                                     const std::optional<Dictionary>& additionalData,
                                     std::string_view sdkVersion) noexcept {
    std::string event(eventName);
    if (!orderId && !token && !subMerchantId) {
        event += " none";
    } else if (orderId != "order-7" || token != plainToken() || subMerchantId != "sub-3") {
        event += ' ' + named(orderId) + ' ' + named(token) + ' ' + named(subMerchantId);
    }
    EXPECT_EQ(sdkVersion, "2.0.15-alpha.4");
    ScriptedCore::current->record(event + ' ' + description(additionalData.value_or(Dictionary())));
}

void EventLoggingService::setAppCode(const std::optional<std::string>& appCode) {
    ScriptedCore::current->appCodes.push_back(appCode);
}

std::string APIUtils::webViewViewUrl() {
    return ScriptedCore::current->webViewViewUrl;
}

std::string APIUtils::webViewRespCheckUrl() {
    return ScriptedCore::current->webViewRespCheckUrl;
}

void APIUtils::setZorvikTechUrl(const std::string& url) {
    ScriptedCore::current->techUrls.push_back(url);
}

constinit const std::string_view EventConstants::SDK_INITIALIZED = "SDK_INITIALIZED";
constinit const std::string_view EventConstants::CHECKOUT_INITIATED = "CHECKOUT_INITIATED";
constinit const std::string_view EventConstants::UPDATE_ORDER_PAYLOAD = "UPDATE_ORDER_PAYLOAD";
constinit const std::string_view EventConstants::UPI_APPS_LISTED = "UPI_APPS_LISTED";
constinit const std::string_view EventConstants::EXCEPTION_THROWN = "EXCEPTION_THROWN";
constinit const std::string_view EventConstants::BACK_BUTTON_PRESSED = "BACK_BUTTON_PRESSED";
constinit const std::string_view EventConstants::PAYMENT_STATUS = "PAYMENT_STATUS";
constinit const std::string_view EventConstants::WEBVIEW_LAUNCH = "WEBVIEW_LAUNCH";
constinit const std::string_view EventConstants::WEBVIEW_LOADED = "WEBVIEW_LOADED";
constinit const std::string_view EventConstants::WEBVIEW_FAILED = "WEBVIEW_FAILED";
constinit const std::string_view EventConstants::URL_INTERCEPTED = "URL_INTERCEPTED";
constinit const std::string_view EventConstants::REDIRECT_URL_HIT = "REDIRECT_URL_HIT";
constinit const std::string_view EventConstants::UPI_INTENT_STARTED = "UPI_INTENT_STARTED";

}  // namespace zorvik
