#include "testkit/ScriptedCoreServices.h"

#include <type_traits>
#include <utility>

#include "core/APIUtils.h"
#include "core/EventConstants.h"
#include "core/EventLogging.h"
#include "core/ZorvikUPIAppDetector.h"
#include "platform/runtime/Environment.h"
#include "trace/Recording.h"

namespace zorvik {

using testkit::ScriptedCoreServices;

ZorvikCoreApiSDK& ZorvikCoreApiSDK::shared() {
    return ScriptedCoreServices::instance();
}

void ZorvikUPIAppDetector::getUPIAppsList(const std::string& token, Completion completion) {
    ScriptedCoreServices::instance().getUPIAppsList(token, std::move(completion));
}

bool ZorvikUPIAppDetector::isUPIAppReturnURL(const std::string& url) {
    return url.starts_with(std::string(ScriptedCoreServices::returnScheme) + ':');
}

void EventLoggingUtils::safeLogEvent(std::string_view eventName,
                                     const std::optional<std::string>& orderId,
                                     const std::optional<std::string>& token,
                                     const std::optional<std::string>& subMerchantId,
                                     const std::optional<platform::Dictionary>& additionalData,
                                     std::string_view /*sdkVersion*/) noexcept {
    ScriptedCoreServices::instance().record(
        testkit::Event{std::string(eventName), orderId, token, subMerchantId,
                       additionalData.value_or(platform::Dictionary())});
}

void EventLoggingService::setAppCode(const std::optional<std::string>& appCode) {
    ScriptedCoreServices::instance().setAppCode(appCode);
}

std::string APIUtils::webViewViewUrl() {
    return ScriptedCoreServices::instance().checkoutPage();
}

std::string APIUtils::webViewRespCheckUrl() {
    return ScriptedCoreServices::instance().response();
}

void APIUtils::setZorvikTechUrl(const std::string& url) {
    ScriptedCoreServices::instance().setEnvironmentUrl(url);
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

namespace zorvik::testkit {

using platform::Dictionary;
using platform::Result;
using platform::Value;

namespace {

Value valueOf(const std::optional<Dictionary>& dictionary) {
    return dictionary ? Value(*dictionary) : Value();
}

// What a recording tells of an answer.
template <class T>
Dictionary described(const Result<T>& result) {
    if (!result) return {{"error", result.error().localizedDescription}};
    if constexpr (std::is_same_v<T, TransactionEnquiryResponse>) {
        const auto& order = result.value().order;
        return {{"order status", order ? order->status.value_or("") : ""},
                {"response", result.value().toDictionary()}};
    }
    return {};
}

}  // namespace

ScriptedCoreServices& ScriptedCoreServices::instance() {
    // Never destroyed: an event may come while the process ends.
    static auto& services = *new ScriptedCoreServices;
    return services;
}

void ScriptedCoreServices::clear() {
    answers_ = CoreAnswers();
    timing_ = Timing::inBackground;
    onEvent_ = nullptr;
    onCall_ = nullptr;
    onAnswer_ = nullptr;
    // What a completion lets go of may call here.
    std::exchange(waiting_, {}).clear();
    const std::scoped_lock lock(mutex_);
    events_.clear();
    calls_.clear();
    checkoutPage_ = checkoutPageUrl;
    response_ = responseUrl;
    environmentUrl_.reset();
    appCode_.reset();
}

void ScriptedCoreServices::setAddresses(std::string checkoutPage, std::string response) {
    const std::scoped_lock lock(mutex_);
    checkoutPage_ = std::move(checkoutPage);
    response_ = std::move(response);
}

std::string ScriptedCoreServices::checkoutPage() const {
    const std::scoped_lock lock(mutex_);
    return checkoutPage_;
}

std::string ScriptedCoreServices::response() const {
    const std::scoped_lock lock(mutex_);
    return response_;
}

std::vector<Event> ScriptedCoreServices::events() const {
    const std::scoped_lock lock(mutex_);
    return events_;
}

std::vector<CoreCall> ScriptedCoreServices::calls() const {
    const std::scoped_lock lock(mutex_);
    return calls_;
}

std::optional<std::string> ScriptedCoreServices::environmentUrl() const {
    const std::scoped_lock lock(mutex_);
    return environmentUrl_;
}

std::optional<std::string> ScriptedCoreServices::appCode() const {
    const std::scoped_lock lock(mutex_);
    return appCode_;
}

void ScriptedCoreServices::createOrder(double amount, const std::string& currency,
                                       const std::vector<Dictionary>& orderLineItems,
                                       const std::optional<Dictionary>& user,
                                       OrderCompletion completion) {
    take(
        CoreCall{"createOrder",
                 {{"amount", amount},
                  {"currency", currency},
                  {"orderLineItems", platform::Array(orderLineItems.begin(), orderLineItems.end())},
                  {"user", valueOf(user)}}},
        completion, &CoreAnswers::orderCreation);
}

void ScriptedCoreServices::createShopOrder(const std::string& currency, const std::string& amount,
                                           const std::string& productId, bool orderLineItems,
                                           const std::string& checkoutExperience,
                                           const std::string& paymentMode,
                                           const std::string& subPaymentMode,
                                           const std::optional<Dictionary>& user,
                                           ShopOrderCompletion completion) {
    take(CoreCall{"createShopOrder",
                  {{"currency", currency},
                   {"amount", amount},
                   {"productId", productId},
                   {"orderLineItems", orderLineItems},
                   {"checkoutExperience", checkoutExperience},
                   {"paymentMode", paymentMode},
                   {"subPaymentMode", subPaymentMode},
                   {"user", valueOf(user)}}},
         completion, &CoreAnswers::shopOrderCreation);
}

void ScriptedCoreServices::updateOrderDetails(const std::string& token, const std::string& orderId,
                                              const std::string& callbackMode,
                                              const std::string& referrerPlatform,
                                              const std::string& referrerPlatformVersion,
                                              OrderCompletion completion) {
    take(CoreCall{"updateOrderDetails",
                  {{"token", token},
                   {"orderId", orderId},
                   {"callbackMode", callbackMode},
                   {"referrerPlatform", referrerPlatform},
                   {"referrerPlatformVersion", referrerPlatformVersion}}},
         completion, &CoreAnswers::orderUpdate);
}

void ScriptedCoreServices::getTransactionEnquiry(const std::string& token,
                                                 const std::string& orderId,
                                                 const std::string& invoiceId,
                                                 const std::string& transactionId,
                                                 EnquiryCompletion completion) {
    take(CoreCall{"getTransactionEnquiry",
                  {{"token", token},
                   {"orderId", orderId},
                   {"invoiceId", invoiceId},
                   {"transactionId", transactionId}}},
         completion, &CoreAnswers::enquiry);
}

void ScriptedCoreServices::getUPIAppsList(
    const std::string& token,
    std::function<void(const Result<std::vector<UPIAppsVO>>&)> completion) {
    take(CoreCall{"getUPIAppsList", {{"token", token}}}, completion, &CoreAnswers::appList);
}

void ScriptedCoreServices::record(Event event) {
    trace::Step::event(event.name, event.additionalData);
    if (onEvent_) onEvent_(event);
    const std::scoped_lock lock(mutex_);
    events_.push_back(std::move(event));
}

template <class T>
void ScriptedCoreServices::take(CoreCall call,
                                const std::function<void(const Result<T>&)>& completion,
                                Result<T> CoreAnswers::*answer) {
    {
        const std::scoped_lock lock(mutex_);
        call.number = calls_.size() + 1;
        calls_.push_back(call);
    }
    const trace::Step asked(trace::Lane::coreServices, call.operation.c_str(), call.arguments);
    if (onCall_) onCall_(call);
    const auto give = [this, call, completion](const Result<T>& result) {
        const trace::Step answered(trace::Lane::coreServices, call.operation.c_str(),
                                   described(result), trace::Step::Kind::answer);
        if (onAnswer_) onAnswer_(call);
        if (completion) completion(result);
    };
    const auto giveBy = [give, this, answer](Timing timing) {
        const Result<T> result = answers_.*answer;
        if (timing == Timing::atOnce) return give(result);
        platform::Environment::runInBackground([give, result] { give(result); });
    };
    if (timing_ != Timing::whenTold) return giveBy(timing_);
    waiting_.push_back({call, giveBy});
}

std::vector<CoreCall> ScriptedCoreServices::waitingCalls() const {
    std::vector<CoreCall> calls;
    for (const WaitingCall& waiting : waiting_)
        calls.push_back(waiting.call);
    return calls;
}

bool ScriptedCoreServices::answerCall(std::size_t place, Timing timing) {
    if (place >= waiting_.size()) return false;
    const WaitingCall waiting = std::move(waiting_[place]);
    waiting_.erase(waiting_.begin() + static_cast<std::ptrdiff_t>(place));
    waiting.giveBy(timing);
    return true;
}

bool ScriptedCoreServices::forgetCall(std::size_t place) {
    if (place >= waiting_.size()) return false;
    const WaitingCall forgotten = std::move(waiting_[place]);
    waiting_.erase(waiting_.begin() + static_cast<std::ptrdiff_t>(place));
    return true;
}

void ScriptedCoreServices::setEnvironmentUrl(const std::string& url) {
    const std::scoped_lock lock(mutex_);
    environmentUrl_ = url;
}

void ScriptedCoreServices::setAppCode(const std::optional<std::string>& appCode) {
    const std::scoped_lock lock(mutex_);
    appCode_ = appCode;
}

}  // namespace zorvik::testkit
