#include "core/development/DevelopmentCore.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "core/APIUtils.h"
#include "core/EventConstants.h"
#include "core/EventLogging.h"
#include "core/ZorvikUPIAppDetector.h"

namespace zorvik::development {

namespace {

using platform::Dictionary;
using platform::Error;
using platform::Result;

struct State {
    std::mutex mutex;
    std::shared_ptr<const Configuration> configuration;
    std::map<Operation, Error> failures;
    std::optional<std::string> appCode;
};

// Never destroyed: background tasks may still ask for it while the process ends.
State& state() {
    static State* const instance = new State;
    return *instance;
}

std::shared_ptr<const Configuration> currentConfiguration() {
    const std::scoped_lock lock(state().mutex);
    return state().configuration;
}

Error failure(std::string description) {
    return Error{"zorvik.development.core", 1, std::move(description)};
}

// A misuse must be told outside the call as well, and no queue was given to tell it on.
void runOnOwnThread(const std::function<void()>& task) {
    try {
        std::thread(task).detach();
    } catch (const std::system_error&) {
        task();
    }
}

// Answers one call: on the background queue, with the failure in force when the call was made, else
// with what `answer` finds in the order book.
template <class T, class Answer>
void perform(Operation operation, std::function<void(const Result<T>&)> completion, Answer answer) {
    std::shared_ptr<const Configuration> configuration;
    std::optional<Error> failureOnDemand;
    {
        const std::scoped_lock lock(state().mutex);
        configuration = state().configuration;
        const auto found = state().failures.find(operation);
        if (found != state().failures.end()) failureOnDemand = found->second;
    }
    if (!completion) completion = [](const Result<T>&) {};
    if (!configuration) {
        runOnOwnThread([completion] {
            completion(failure("The development core services have not been configured"));
        });
        return;
    }
    configuration->runInBackground([configuration, failureOnDemand, completion, answer] {
        if (failureOnDemand) return completion(*failureOnDemand);
        completion(answer(*configuration));
    });
}

OrderResponse responseFor(const OrderRecord& order) {
    return OrderResponse{order.orderId, order.token, std::string(text(order.status()))};
}

Result<OrderRecord> create(OrderBook& book, std::optional<std::int64_t> amount,
                           const std::string& currency, platform::Array lineItems,
                           const std::optional<Dictionary>& user) {
    if (!amount) return failure("The amount is not an amount of money");
    return book.create(OrderDraft{*amount, currency, std::move(lineItems), user});
}

// The scheme of an address in lower case; "" for a text without one.
std::string schemeOf(std::string_view address) {
    const std::size_t colon = address.find(':');
    std::string scheme;
    if (colon == address.npos) return scheme;
    for (const char character : address.substr(0, colon)) {
        const bool isUpper = character >= 'A' && character <= 'Z';
        scheme += isUpper ? static_cast<char>(character - 'A' + 'a') : character;
    }
    return scheme;
}

}  // namespace

DevelopmentCore& DevelopmentCore::shared() {
    static DevelopmentCore* const instance = new DevelopmentCore;
    return *instance;
}

void DevelopmentCore::configure(Configuration configuration) {
    std::shared_ptr<const Configuration> next;
    if (configuration.runInBackground) {
        if (!configuration.orderBook) configuration.orderBook = std::make_shared<MemoryOrderBook>();
        next = std::make_shared<const Configuration>(std::move(configuration));
    }
    // What is replaced is released outside the lock: it may run the owner's destructors.
    const std::scoped_lock lock(state().mutex);
    std::swap(state().configuration, next);
    state().failures.clear();
}

void DevelopmentCore::failOn(Operation operation, std::optional<Error> error) {
    const std::scoped_lock lock(state().mutex);
    if (error) {
        state().failures.insert_or_assign(operation, std::move(*error));
    } else {
        state().failures.erase(operation);
    }
}

void DevelopmentCore::createOrder(double amount, const std::string& currency,
                                  const std::vector<Dictionary>& orderLineItems,
                                  const std::optional<Dictionary>& user,
                                  OrderCompletion completion) {
    perform<OrderResponse>(
        Operation::createOrder, std::move(completion),
        [=](const Configuration& configuration) -> Result<OrderResponse> {
            const auto order =
                create(*configuration.orderBook, minorUnitsFrom(amount), currency,
                       platform::Array(orderLineItems.begin(), orderLineItems.end()), user);
            if (!order) return order.error();
            return responseFor(order.value());
        });
}

void DevelopmentCore::createShopOrder(const std::string& currency, const std::string& amount,
                                      const std::string& productId, bool orderLineItems,
                                      const std::string& checkoutExperience,
                                      const std::string& paymentMode,
                                      const std::string& subPaymentMode,
                                      const std::optional<Dictionary>& user,
                                      ShopOrderCompletion completion) {
    perform<Dictionary>(Operation::createShopOrder, std::move(completion),
                        [=](const Configuration& configuration) -> Result<Dictionary> {
                            platform::Array lineItems;
                            if (orderLineItems)
                                lineItems.emplace_back(Dictionary{{"product_id", productId}});
                            const auto order =
                                create(*configuration.orderBook, minorUnitsFrom(amount), currency,
                                       std::move(lineItems), user);
                            if (!order) return order.error();
                            Dictionary fields = enquiryFields(order.value(), "");
                            fields["order_token"] = order.value().token;
                            fields["product_id"] = productId;
                            fields["checkout_experience"] = checkoutExperience;
                            fields["payment_mode"] = paymentMode;
                            fields["sub_payment_mode"] = subPaymentMode;
                            return fields;
                        });
}

void DevelopmentCore::updateOrderDetails(const std::string& token, const std::string& orderId,
                                         const std::string& callbackMode,
                                         const std::string& referrerPlatform,
                                         const std::string& referrerPlatformVersion,
                                         OrderCompletion completion) {
    perform<OrderResponse>(
        Operation::updateOrderDetails, std::move(completion),
        [=](const Configuration& configuration) -> Result<OrderResponse> {
            const auto order = configuration.orderBook->updateDetails(
                token, orderId,
                OrderDetails{callbackMode, referrerPlatform, referrerPlatformVersion});
            if (!order) return order.error();
            return responseFor(order.value());
        });
}

void DevelopmentCore::getTransactionEnquiry(const std::string& token, const std::string& orderId,
                                            const std::string& invoiceId,
                                            const std::string& transactionId,
                                            EnquiryCompletion completion) {
    perform<TransactionEnquiryResponse>(
        Operation::getTransactionEnquiry, std::move(completion),
        [=](const Configuration& configuration) -> Result<TransactionEnquiryResponse> {
            const auto order = configuration.orderBook->find(token, orderId);
            if (!order) return order.error();
            Dictionary fields = enquiryFields(order.value(), transactionId);
            fields["invoice_id"] = invoiceId;
            return TransactionEnquiryResponse{Order{std::string(text(order.value().status()))},
                                              std::move(fields)};
        });
}

}  // namespace zorvik::development

// The contract's static members.
namespace zorvik {

using development::currentConfiguration;
using development::state;

ZorvikCoreApiSDK& ZorvikCoreApiSDK::shared() {
    return development::DevelopmentCore::shared();
}

std::string APIUtils::webViewViewUrl() {
    const auto configuration = currentConfiguration();
    return configuration ? configuration->webViewViewUrl : "";
}

std::string APIUtils::webViewRespCheckUrl() {
    const auto configuration = currentConfiguration();
    return configuration ? configuration->webViewRespCheckUrl : "";
}

// The addresses are those of the configuration, whatever back end the host asks for.
void APIUtils::setZorvikTechUrl(const std::string& /*url*/) {}

void ZorvikUPIAppDetector::getUPIAppsList(const std::string& /*token*/, Completion completion) {
    development::perform<std::vector<UPIAppsVO>>(development::Operation::getUPIAppsList,
                                                 std::move(completion),
                                                 [](const development::Configuration& configuration)
                                                     -> platform::Result<std::vector<UPIAppsVO>> {
                                                     std::vector<UPIAppsVO> apps;
                                                     for (const auto& app : configuration.upiApps)
                                                         apps.push_back(app.record);
                                                     return apps;
                                                 });
}

bool ZorvikUPIAppDetector::isUPIAppReturnURL(const std::string& url) {
    const auto configuration = currentConfiguration();
    const std::string scheme = development::schemeOf(url);
    if (!configuration || scheme.empty()) return false;
    return std::any_of(configuration->upiApps.begin(), configuration->upiApps.end(),
                       [&](const development::DevelopmentUPIApp& app) {
                           return development::schemeOf(app.returnScheme + ":") == scheme;
                       });
}

void EventLoggingUtils::safeLogEvent(std::string_view eventName,
                                     const std::optional<std::string>& orderId,
                                     const std::optional<std::string>& token,
                                     const std::optional<std::string>& subMerchantId,
                                     const std::optional<platform::Dictionary>& additionalData,
                                     std::string_view sdkVersion) noexcept {
    try {
        std::shared_ptr<const development::Configuration> configuration;
        std::optional<std::string> appCode;
        {
            const std::scoped_lock lock(state().mutex);
            configuration = state().configuration;
            appCode = state().appCode;
        }
        if (!configuration || !configuration->eventSink) return;
        configuration->eventSink->record({std::string(eventName), orderId, token, subMerchantId,
                                          additionalData, std::string(sdkVersion), appCode});
    } catch (...) {
        // An event is never worth the payment it tells of.
    }
}

void EventLoggingService::setAppCode(const std::optional<std::string>& appCode) {
    const std::scoped_lock lock(state().mutex);
    state().appCode = appCode;
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
