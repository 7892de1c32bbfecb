// What core/*.h declares, defined by handing each call to the functions the host has set.
#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <utility>

#include "c/Boundary.h"
#include "c/Completion.h"
#include "core/APIUtils.h"
#include "core/EventConstants.h"
#include "core/EventLogging.h"
#include "core/ZorvikCoreApiSDK.h"
#include "core/ZorvikUPIAppDetector.h"
#include "platform/runtime/DispatchQueue.h"
#include "platform/runtime/Guarded.h"

namespace zorvik {
namespace c {
namespace {

using platform::Array;
using platform::Dictionary;
using platform::DispatchQueue;
using platform::Result;
using platform::Value;

// The host's functions; the last call under way keeps them.
struct Services {
    explicit Services(const zorvik_core_services& given) {
        std::memcpy(&functions, &given, std::min(given.size, sizeof functions));
    }
    Services(const Services&) = delete;
    Services& operator=(const Services&) = delete;
    ~Services() {
        if (functions.destroy != nullptr) callHost(functions.destroy, functions.user_data);
    }

    zorvik_core_services functions{};
};

struct State {
    platform::Guarded<std::shared_ptr<const Services>> services;
    platform::Guarded<std::optional<std::string>> appCode;
};

// Never destroyed: other threads may ask while the process ends.
State& state() {
    static State* const instance = new State;
    return *instance;
}

// Calls the function when the host has set it; false: it has not.
template <class Member, class... Arguments>
bool callService(Member member, Arguments... arguments) {
    const auto services = state().services.get();
    if (!services || services->functions.*member == nullptr) return false;
    callHost(services->functions.*member, services->functions.user_data, arguments...);
    return true;
}

// The same for one that answers by a completion. One that is missing fails like any other, later.
template <class T, class Member, class... Arguments>
void callService(std::string_view name, std::function<void(const Result<T>&)> completion,
                 Member member, Arguments... arguments) {
    const auto services = state().services.get();
    if (services && services->functions.*member != nullptr) {
        auto* answer = makeCompletion<T>(std::string(name), std::move(completion));
        callHost(services->functions.*member, services->functions.user_data, arguments..., answer);
        return;
    }
    std::string reason =
        services ? "The core services that zorvik_set_core_services was given have no " +
                       std::string(name)
                 : "No core services are set: call zorvik_set_core_services before a checkout";
    DispatchQueue::global(DispatchQueue::QualityOfService::background)
        .async([completion = std::move(completion), reason = std::move(reason)] {
            if (completion) completion(serviceError(reason));
        });
}

template <class Member>
std::string address(Member member) {
    zorvik_text answer;
    callService(member, &answer);
    return answer.content.value_or("");
}

Value valueOrNull(const std::optional<std::string>& text) {
    return text ? Value(*text) : Value();
}

class HostCore : public ZorvikCoreApiSDK {
  public:
    void createOrder(double amount, const std::string& currency,
                     const std::vector<Dictionary>& orderLineItems,
                     const std::optional<Dictionary>& user, OrderCompletion completion) override {
        const std::string lineItems = jsonText(Array(orderLineItems.begin(), orderLineItems.end()));
        const std::string userText = user ? jsonText(*user) : "";
        callService<OrderResponse>("create_order", std::move(completion),
                                   &zorvik_core_services::create_order, amount, currency.c_str(),
                                   lineItems.c_str(), user ? userText.c_str() : nullptr);
    }
    void createShopOrder(const std::string& currency, const std::string& amount,
                         const std::string& productId, bool orderLineItems,
                         const std::string& checkoutExperience, const std::string& paymentMode,
                         const std::string& subPaymentMode, const std::optional<Dictionary>& user,
                         ShopOrderCompletion completion) override {
        const std::string order = jsonText(Dictionary{{"currency", currency},
                                                      {"amount", amount},
                                                      {"productId", productId},
                                                      {"orderLineItems", orderLineItems},
                                                      {"checkoutExperience", checkoutExperience},
                                                      {"paymentMode", paymentMode},
                                                      {"subPaymentMode", subPaymentMode},
                                                      {"user", user ? Value(*user) : Value()}});
        callService<Dictionary>("create_shop_order", std::move(completion),
                                &zorvik_core_services::create_shop_order, order.c_str());
    }
    void updateOrderDetails(const std::string& token, const std::string& orderId,
                            const std::string& callbackMode, const std::string& referrerPlatform,
                            const std::string& referrerPlatformVersion,
                            OrderCompletion completion) override {
        callService<OrderResponse>("update_order", std::move(completion),
                                   &zorvik_core_services::update_order, token.c_str(),
                                   plainText(orderId).c_str(), callbackMode.c_str(),
                                   referrerPlatform.c_str(), referrerPlatformVersion.c_str());
    }
    void getTransactionEnquiry(const std::string& token, const std::string& orderId,
                               const std::string& invoiceId, const std::string& transactionId,
                               EnquiryCompletion completion) override {
        callService<TransactionEnquiryResponse>(
            "enquire_transaction", std::move(completion),
            &zorvik_core_services::enquire_transaction, token.c_str(), plainText(orderId).c_str(),
            plainText(invoiceId).c_str(), plainText(transactionId).c_str());
    }
};

}  // namespace
}  // namespace c

using c::state;

ZorvikCoreApiSDK& ZorvikCoreApiSDK::shared() {
    static auto* const instance = new c::HostCore;
    return *instance;
}

std::string APIUtils::webViewViewUrl() {
    return c::address(&zorvik_core_services::page_address);
}

std::string APIUtils::webViewRespCheckUrl() {
    return c::address(&zorvik_core_services::response_address);
}

void APIUtils::setZorvikTechUrl(const std::string& url) {
    c::callService(&zorvik_core_services::set_environment_url, url.c_str());
}

void ZorvikUPIAppDetector::getUPIAppsList(const std::string& token, Completion completion) {
    c::callService<std::vector<UPIAppsVO>>("list_upi_apps", std::move(completion),
                                           &zorvik_core_services::list_upi_apps, token.c_str());
}

bool ZorvikUPIAppDetector::isUPIAppReturnURL(const std::string& url) {
    const auto services = state().services.get();
    if (!services || services->functions.is_return_url == nullptr) return false;
    return c::callHost(services->functions.is_return_url, services->functions.user_data,
                       url.c_str());
}

void EventLoggingUtils::safeLogEvent(std::string_view eventName,
                                     const std::optional<std::string>& orderId,
                                     const std::optional<std::string>& token,
                                     const std::optional<std::string>& subMerchantId,
                                     const std::optional<platform::Dictionary>& additionalData,
                                     std::string_view sdkVersion) noexcept {
    c::atBoundary([&] {
        using c::valueOrNull;
        const auto services = state().services.get();
        if (!services || services->functions.log_event == nullptr) return ZORVIK_OK;
        const platform::Dictionary event{
            {"event", eventName},
            {"orderId", valueOrNull(orderId)},
            {"token", valueOrNull(token)},
            {"subMerchantId", valueOrNull(subMerchantId)},
            {"additionalData", additionalData ? platform::Value(*additionalData) : nullptr},
            {"sdkVersion", sdkVersion},
            {"appCode", valueOrNull(state().appCode.get())}};
        c::callHost(services->functions.log_event, services->functions.user_data,
                    c::jsonText(event).c_str());
        return ZORVIK_OK;
    });
}

void EventLoggingService::setAppCode(const std::optional<std::string>& appCode) {
    state().appCode.set(appCode);
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

using namespace zorvik;
using namespace zorvik::c;

extern "C" zorvik_result zorvik_set_core_services(const zorvik_core_services* services) {
    return atBoundary([&] {
        Call call;
        std::shared_ptr<const Services> next;
        if (services != nullptr) {
            call.require(services->size >= offsetof(zorvik_core_services, update_order),
                         ZORVIK_INVALID_ARGUMENT, "services->size is not the size of the struct");
            if (!call) return call.result();
            next = std::make_shared<const Services>(*services);
        }
        state().services.set(std::move(next));
        return ZORVIK_OK;
    });
}
