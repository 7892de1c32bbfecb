// A host's own core services, complete: what core/*.h declares and nothing of the development ones.
#include <core/APIUtils.h>
#include <core/EventConstants.h>
#include <core/EventLogging.h>
#include <core/ZorvikCoreApiSDK.h>
#include <core/ZorvikUPIAppDetector.h>

#include <cstdio>

namespace zorvik {

namespace {

using platform::Dictionary;
using platform::Error;

class OwnCore : public ZorvikCoreApiSDK {
  public:
    void createOrder(double, const std::string&, const std::vector<Dictionary>&,
                     const std::optional<Dictionary>&, OrderCompletion completion) override {
        completion(notHere());
    }
    void createShopOrder(const std::string&, const std::string&, const std::string&, bool,
                         const std::string&, const std::string&, const std::string&,
                         const std::optional<Dictionary>&,
                         ShopOrderCompletion completion) override {
        completion(notHere());
    }
    void updateOrderDetails(const std::string& token, const std::string&, const std::string&,
                            const std::string&, const std::string&,
                            OrderCompletion completion) override {
        if (token == "refused") return completion(Error{"own core", 2, "Unknown order"});
        completion(OrderResponse{.orderId = "own-1", .orderToken = token});
    }
    void getTransactionEnquiry(const std::string&, const std::string&, const std::string&,
                               const std::string&, EnquiryCompletion completion) override {
        completion(notHere());
    }

  private:
    static Error notHere() { return Error{"own core", 1, "Not offered"}; }
};

}  // namespace

ZorvikCoreApiSDK& ZorvikCoreApiSDK::shared() {
    static OwnCore core;
    return core;
}

std::string APIUtils::webViewViewUrl() {
    return "https://own.example/checkout?token=%@";
}
std::string APIUtils::webViewRespCheckUrl() {
    return "https://own.example/response";
}
void APIUtils::setZorvikTechUrl(const std::string&) {}

void ZorvikUPIAppDetector::getUPIAppsList(const std::string&, Completion completion) {
    completion(std::vector{UPIAppsVO{.upiAppName = "Own App", .packageName = "ownapp"}});
}
#ifndef LEAVE_A_MEMBER_OUT
bool ZorvikUPIAppDetector::isUPIAppReturnURL(const std::string&) {
    return false;
}
#endif

void EventLoggingUtils::safeLogEvent(std::string_view eventName, const std::optional<std::string>&,
                                     const std::optional<std::string>&,
                                     const std::optional<std::string>&,
                                     const std::optional<Dictionary>&, std::string_view) noexcept {
    std::printf("event %.*s\n", static_cast<int>(eventName.size()), eventName.data());
}
void EventLoggingService::setAppCode(const std::optional<std::string>&) {}

const std::string_view EventConstants::SDK_INITIALIZED = "own:initialised";
const std::string_view EventConstants::CHECKOUT_INITIATED = "own:initiated";
const std::string_view EventConstants::UPDATE_ORDER_PAYLOAD = "own:updated";
const std::string_view EventConstants::UPI_APPS_LISTED = "own:listed";
const std::string_view EventConstants::EXCEPTION_THROWN = "own:exception";
const std::string_view EventConstants::BACK_BUTTON_PRESSED = "own:back";
const std::string_view EventConstants::PAYMENT_STATUS = "own:status";
const std::string_view EventConstants::WEBVIEW_LAUNCH = "own:launch";
const std::string_view EventConstants::WEBVIEW_LOADED = "own:loaded";
const std::string_view EventConstants::WEBVIEW_FAILED = "own:failed";
const std::string_view EventConstants::URL_INTERCEPTED = "own:intercepted";
const std::string_view EventConstants::REDIRECT_URL_HIT = "own:redirect";
const std::string_view EventConstants::UPI_INTENT_STARTED = "own:intent";

}  // namespace zorvik
