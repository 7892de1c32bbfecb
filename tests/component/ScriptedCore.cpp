#include "tests/component/ScriptedCore.h"

#include <thread>
#include <utility>

#include "core/APIUtils.h"
#include "core/EventConstants.h"
#include "core/EventLogging.h"
#include "core/ZorvikUPIAppDetector.h"
#include "platform/foundation/Data.h"
#include "platform/services/Environment.h"

namespace zorvik {

using platform::Array;
using platform::Dictionary;
using platform::Value;

namespace {

ScriptedCore* currentCore = nullptr;

Value valueOf(const std::optional<Dictionary>& dictionary) {
    return dictionary ? Value(*dictionary) : Value();
}

std::string named(const std::optional<std::string>& text) {
    return !text ? "nil" : *text == plainToken() ? "TOKEN" : '"' + *text + '"';
}

}  // namespace

const std::string& plainToken() {
    static const std::string token =
        "header." +
        platform::base64Encode(R"({"order_id":"order-7","sub_merchant_id":"sub-3"   })") +
        ".signature";
    return token;
}

ScriptedCore::ScriptedCore() {
    currentCore = this;
}

ScriptedCore::~ScriptedCore() {
    currentCore = nullptr;
}

ScriptedCore& ScriptedCore::current() {
    return *currentCore;
}

bool ScriptedCore::answerNext() {
    if (held_.empty()) return false;
    const auto task = std::move(held_.front());
    held_.pop_front();
    task();
    return true;
}

bool ScriptedCore::answerNextOnAThread() {
    bool answered = false;
    std::thread([&] { answered = answerNext(); }).join();
    return answered;
}

std::vector<std::string> ScriptedCore::takeCalls() {
    return std::exchange(calls_, {});
}

std::vector<std::string> ScriptedCore::events() const {
    const std::scoped_lock lock(mutex_);
    return events_;
}

std::vector<std::string> ScriptedCore::takeEvents() {
    const std::scoped_lock lock(mutex_);
    return std::exchange(events_, {});
}

void ScriptedCore::record(const std::string& event) {
    const std::scoped_lock lock(mutex_);
    events_.push_back(event);
}

void ScriptedCore::call(const std::string& name, const std::vector<Value>& arguments,
                        std::function<void()> answer) {
    std::string list;
    for (const auto& argument : arguments) {
        if (&argument != &arguments.front()) list += ", ";
        list += argument == Value(plainToken()) ? "TOKEN" : description(argument);
    }
    calls_.push_back(name + '(' + list + ')');
    if (holdsAnswers) {
        held_.push_back(std::move(answer));
    } else {
        platform::Environment::scheduler().runInBackground(std::move(answer));
    }
}

void ScriptedCore::createOrder(double amount, const std::string& currency,
                               const std::vector<Dictionary>& orderLineItems,
                               const std::optional<Dictionary>& user, OrderCompletion completion) {
    const Array items(orderLineItems.begin(), orderLineItems.end());
    call("createOrder", {amount, currency, items, valueOf(user)},
         [completion, result = orderAnswer] { completion(result); });
}

void ScriptedCore::createShopOrder(const std::string& currency, const std::string& amount,
                                   const std::string& productId, bool orderLineItems,
                                   const std::string& checkoutExperience,
                                   const std::string& paymentMode,
                                   const std::string& subPaymentMode,
                                   const std::optional<Dictionary>& user,
                                   ShopOrderCompletion completion) {
    call("createShopOrder",
         {currency, amount, productId, orderLineItems, checkoutExperience, paymentMode,
          subPaymentMode, valueOf(user)},
         [completion, result = shopOrderAnswer] { completion(result); });
}

void ScriptedCore::updateOrderDetails(const std::string& token, const std::string& orderId,
                                      const std::string& callbackMode,
                                      const std::string& referrerPlatform,
                                      const std::string& referrerPlatformVersion,
                                      OrderCompletion completion) {
    call("updateOrderDetails",
         {token, orderId, callbackMode, referrerPlatform, referrerPlatformVersion},
         [completion, result = updateAnswer] { completion(result); });
}

void ScriptedCore::getTransactionEnquiry(const std::string& token, const std::string& orderId,
                                         const std::string& invoiceId,
                                         const std::string& transactionId,
                                         EnquiryCompletion completion) {
    call("getTransactionEnquiry", {token, orderId, invoiceId, transactionId},
         [completion, result = enquiryAnswer] { completion(result); });
}

ZorvikCoreApiSDK& ZorvikCoreApiSDK::shared() {
    return *currentCore;
}

void ZorvikUPIAppDetector::getUPIAppsList(const std::string& token, Completion completion) {
    currentCore->call("getUPIAppsList", {token},
                      [completion, result = currentCore->appsAnswer] { completion(result); });
}

bool ZorvikUPIAppDetector::isUPIAppReturnURL(const std::string& url) {
    ++currentCore->returnQuestions;
    return url.starts_with(currentCore->returnPrefix);
}

void EventLoggingUtils::safeLogEvent(const std::string& eventName,
                                     const std::optional<std::string>& orderId,
                                     const std::optional<std::string>& token,
                                     const std::optional<std::string>& subMerchantId,
                                     const std::optional<Dictionary>& additionalData,
                                     const std::string& sdkVersion) noexcept {
    std::string event = eventName;
    if (!orderId && !token && !subMerchantId) {
        event += " none";
    } else if (orderId != "order-7" || token != plainToken() || subMerchantId != "sub-3") {
        event += ' ' + named(orderId) + ' ' + named(token) + ' ' + named(subMerchantId);
    }
    if (sdkVersion != "2.0.15-alpha.4") event += ' ' + sdkVersion;
    currentCore->record(event + ' ' + description(additionalData.value_or(Dictionary())));
}

void EventLoggingService::setAppCode(const std::optional<std::string>& appCode) {
    currentCore->appCodes.push_back(appCode);
}

std::string APIUtils::webViewViewUrl() {
    return currentCore->webViewViewUrl;
}

std::string APIUtils::webViewRespCheckUrl() {
    return currentCore->webViewRespCheckUrl;
}

void APIUtils::setZorvikTechUrl(const std::string& url) {
    currentCore->techUrls.push_back(url);
}

const std::string EventConstants::SDK_INITIALIZED = "SDK_INITIALIZED";
const std::string EventConstants::CHECKOUT_INITIATED = "CHECKOUT_INITIATED";
const std::string EventConstants::UPDATE_ORDER_PAYLOAD = "UPDATE_ORDER_PAYLOAD";
const std::string EventConstants::UPI_APPS_LISTED = "UPI_APPS_LISTED";
const std::string EventConstants::EXCEPTION_THROWN = "EXCEPTION_THROWN";
const std::string EventConstants::BACK_BUTTON_PRESSED = "BACK_BUTTON_PRESSED";
const std::string EventConstants::PAYMENT_STATUS = "PAYMENT_STATUS";
const std::string EventConstants::WEBVIEW_LAUNCH = "WEBVIEW_LAUNCH";
const std::string EventConstants::WEBVIEW_LOADED = "WEBVIEW_LOADED";
const std::string EventConstants::WEBVIEW_FAILED = "WEBVIEW_FAILED";
const std::string EventConstants::URL_INTERCEPTED = "URL_INTERCEPTED";
const std::string EventConstants::REDIRECT_URL_HIT = "REDIRECT_URL_HIT";
const std::string EventConstants::UPI_INTENT_STARTED = "UPI_INTENT_STARTED";

}  // namespace zorvik
