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

// What happened, in order, the plain token written as TOKEN. Any thread.
class Transcript {
  public:
    void add(std::string entry);
    // Written before the next entry, unless another mark comes before that.
    void mark(const std::string& text);
    // The entries so far that start with the prefix, without it and without marks.
    std::vector<std::string> entries(const std::string& prefix) const;
    // All of it from the first entry with this beginning on, each entry on a line of its own under
    // its mark. Console lines of one tag in a row are one paragraph. The transcript starts anew.
    std::string take(const std::string& from = "");

  private:
    mutable std::mutex mutex_;
    std::vector<std::string> entries_;
    std::string mark_;
};

// The core services as a test wants them: every call is recorded as "call name(argument, ...)" and
// every event as "event NAME [data]", with the three ids behind the name where they are not those
// of the plain token ("none": all absent). Every answer is what the test set. Main thread, but for
// events and the answers.
class ScriptedCore : public ZorvikCoreApiSDK {
  public:
    static inline ScriptedCore* current = nullptr;
    ScriptedCore() { current = this; }
    ~ScriptedCore() override { current = nullptr; }

    Transcript transcript;
    std::string webViewViewUrl = "https://pay.example/checkout?token=%@";
    std::string webViewRespCheckUrl = "https://pay.example/check";

    platform::Result<OrderResponse> orderAnswer = OrderResponse{};
    platform::Result<std::vector<UPIAppsVO>> appsAnswer = std::vector<UPIAppsVO>{};
    platform::Result<TransactionEnquiryResponse> enquiryAnswer = TransactionEnquiryResponse{};
    platform::Result<platform::Dictionary> shopOrderAnswer = platform::Dictionary{};

    // Answers wait for answerNext instead of coming from a background task.
    bool holdsAnswers = false;
    bool isAsked() const { return !held_.empty(); }
    // On a thread of its own, which has ended on return.
    void answerNext() {
        ASSERT_FALSE(held_.empty());
        const auto task = std::move(held_.front());
        held_.pop_front();
        std::thread(task).join();
    }

    // `answer`: none for a call that has no completion.
    void call(const std::string& name, const std::vector<platform::Value>& arguments,
              std::function<void()> answer = {});

    void createOrder(double amount, const std::string& currency,
                     const std::vector<platform::Dictionary>& orderLineItems,
                     const std::optional<platform::Dictionary>& user,
                     OrderCompletion completion) override {
        const platform::Array items(orderLineItems.begin(), orderLineItems.end());
        call("createOrder", {amount, currency, items, orNull(user)},
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
              subPaymentMode, orNull(user)},
             [completion, result = shopOrderAnswer] { completion(result); });
    }
    void updateOrderDetails(const std::string& token, const std::string& orderId,
                            const std::string& callbackMode, const std::string& platform,
                            const std::string& version, OrderCompletion completion) override {
        call("updateOrderDetails", {token, orderId, callbackMode, platform, version},
             [completion, result = orderAnswer] { completion(result); });
    }
    void getTransactionEnquiry(const std::string& token, const std::string& orderId,
                               const std::string& invoiceId, const std::string& transactionId,
                               EnquiryCompletion completion) override {
        call("getTransactionEnquiry", {token, orderId, invoiceId, transactionId},
             [completion, result = enquiryAnswer] { completion(result); });
    }

  private:
    static platform::Value orNull(const std::optional<platform::Dictionary>& dictionary) {
        return dictionary ? platform::Value(*dictionary) : platform::Value();
    }

    std::deque<std::function<void()>> held_;
};

}  // namespace zorvik
