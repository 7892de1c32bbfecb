#pragma once

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "core/UPIAppsVO.h"
#include "core/ZorvikCoreApiSDK.h"
#include "platform/foundation/Data.h"
#include "platform/foundation/Value.h"
#include "platform/runtime/Environment.h"

namespace zorvik {

// An order token with the claims "order-7" and "sub-3" that every reader can read.
inline const std::string& plainToken() {
    static const std::string token =
        "header." +
        platform::base64Encode(R"({"order_id":"order-7","sub_merchant_id":"sub-3"   })") +
        ".signature";
    return token;
}

// The core services as a test wants them: every call and event is recorded as a line of text (the
// plain token as TOKEN), every answer is what the test set. Main thread, but for events and the
// answers.
class ScriptedCore : public ZorvikCoreApiSDK {
  public:
    static inline ScriptedCore* current = nullptr;
    ScriptedCore() { current = this; }
    ~ScriptedCore() override { current = nullptr; }

    std::string webViewViewUrl = "https://pay.example/checkout?token=%@";
    std::string webViewRespCheckUrl = "https://pay.example/check";
    int returnQuestions = 0;
    std::vector<std::string> techUrls;  // as assigned
    std::vector<std::optional<std::string>> appCodes;

    platform::Result<OrderResponse> orderAnswer = OrderResponse{};
    platform::Result<std::vector<UPIAppsVO>> appsAnswer = std::vector<UPIAppsVO>{};
    platform::Result<TransactionEnquiryResponse> enquiryAnswer = TransactionEnquiryResponse{};
    platform::Result<platform::Dictionary> shopOrderAnswer = platform::Dictionary{};

    // Answers wait for answerNext instead of coming from a background task.
    bool holdsAnswers = false;
    // On a thread of its own, which has ended on return.
    void answerNext() {
        ASSERT_FALSE(held_.empty());
        const auto task = std::move(held_.front());
        held_.pop_front();
        std::thread(task).join();
    }

    // name(argument, ...)
    std::vector<std::string> takeCalls() { return std::exchange(calls_, {}); }
    // NAME ["key": value, ...] for an event of the plain token's checkout; the three ids stand
    // behind the name where they are others, as does "none".
    std::vector<std::string> events() const {
        const std::scoped_lock lock(mutex_);
        return events_;
    }
    std::vector<std::string> takeEvents() {
        const std::scoped_lock lock(mutex_);
        return std::exchange(events_, {});
    }

    void record(const std::string& event) {
        const std::scoped_lock lock(mutex_);
        events_.push_back(event);
    }
    void call(const std::string& name, const std::vector<platform::Value>& arguments,
              std::function<void()> answer) {
        std::string list;
        for (const auto& argument : arguments) {
            if (&argument != &arguments.front()) list += ", ";
            list += argument == platform::Value(plainToken()) ? "TOKEN" : description(argument);
        }
        calls_.push_back(name + '(' + list + ')');
        if (holdsAnswers) {
            held_.push_back(std::move(answer));
        } else {
            platform::Environment::runInBackground(std::move(answer));
        }
    }

    void createOrder(double amount, const std::string& currency,
                     const std::vector<platform::Dictionary>& orderLineItems,
                     const std::optional<platform::Dictionary>& user,
                     OrderCompletion completion) override {
        const platform::Array items(orderLineItems.begin(), orderLineItems.end());
        call("createOrder",
             {amount, currency, items, user ? platform::Value(*user) : platform::Value()},
             [completion, result = orderAnswer] { completion(result); });
    }
    void createShopOrder(const std::string& currency, const std::string& amount,
                         const std::string& productId, bool orderLineItems,
                         const std::string& checkoutExperience, const std::string& paymentMode,
                         const std::string& subPaymentMode,
                         const std::optional<platform::Dictionary>& user,
                         ShopOrderCompletion completion) override {
        call("createShopOrder",
             {currency, amount, productId, orderLineItems, checkoutExperience, paymentMode,
              subPaymentMode, user ? platform::Value(*user) : platform::Value()},
             [completion, result = shopOrderAnswer] { completion(result); });
    }
    void updateOrderDetails(const std::string& token, const std::string& orderId,
                            const std::string& callbackMode, const std::string& referrerPlatform,
                            const std::string& referrerPlatformVersion,
                            OrderCompletion completion) override {
        call("updateOrderDetails",
             {token, orderId, callbackMode, referrerPlatform, referrerPlatformVersion},
             [completion, result = orderAnswer] { completion(result); });
    }
    void getTransactionEnquiry(const std::string& token, const std::string& orderId,
                               const std::string& invoiceId, const std::string& transactionId,
                               EnquiryCompletion completion) override {
        call("getTransactionEnquiry", {token, orderId, invoiceId, transactionId},
             [completion, result = enquiryAnswer] { completion(result); });
    }

  private:
    std::vector<std::string> calls_;
    std::deque<std::function<void()>> held_;
    mutable std::mutex mutex_;
    std::vector<std::string> events_;
};

}  // namespace zorvik
