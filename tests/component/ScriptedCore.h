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

using Lines = std::vector<std::string>;
using Text = const std::string&;  // as the core services take it
using platform::Dictionary, platform::Result, platform::Value;

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
    void mark(Text text);
    // The entries so far that start with the prefix, without it and without marks.
    Lines entries(Text prefix = "") const;
    // All of it from the first entry with this beginning on, each entry on a line of its own behind
    // its mark. Console lines of one tag in a row are one paragraph. The transcript starts anew.
    std::string take(Text from = "");

  private:
    mutable std::mutex mutex_;
    Lines entries_;
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

    Result<OrderResponse> orderAnswer = OrderResponse{};
    Result<std::vector<UPIAppsVO>> appsAnswer = std::vector<UPIAppsVO>{};
    Result<TransactionEnquiryResponse> enquiryAnswer = TransactionEnquiryResponse{};
    Result<Dictionary> shopOrderAnswer = Dictionary{};

    // Events are recorded by name alone, where what they carry may be of any length.
    bool describesEvents = true;

    // Answers wait for answerNext instead of coming from a background task.
    bool holdsAnswers = false;
    bool isAsked() const { return !held_.empty(); }
    // On a thread of its own, which has ended on return.
    void answerNext() {
        ASSERT_TRUE(isAsked());
        const auto task = std::move(held_.front());
        held_.pop_front();
        std::thread(task).join();
    }

    // `answer`: none for a call that has no completion.
    void call(Text name, const std::vector<Value>& arguments, std::function<void()> answer = {});

    void createOrder(double amount, Text currency, const std::vector<Dictionary>& items,
                     const std::optional<Dictionary>& user, OrderCompletion completion) override {
        call("createOrder",
             {amount, currency, platform::Array(items.begin(), items.end()), orNull(user)},
             [completion, result = orderAnswer] { completion(result); });
    }
    void createShopOrder(Text currency, Text amount, Text productId, bool orderLineItems,
                         Text checkoutExperience, Text paymentMode, Text subPaymentMode,
                         const std::optional<Dictionary>& user,
                         ShopOrderCompletion completion) override {
        call("createShopOrder",
             {currency, amount, productId, orderLineItems, checkoutExperience, paymentMode,
              subPaymentMode, orNull(user)},
             [completion, result = shopOrderAnswer] { completion(result); });
    }
    void updateOrderDetails(Text token, Text orderId, Text callbackMode, Text platform,
                            Text version, OrderCompletion completion) override {
        call("updateOrderDetails", {token, orderId, callbackMode, platform, version},
             [completion, result = orderAnswer] { completion(result); });
    }
    void getTransactionEnquiry(Text token, Text orderId, Text invoiceId, Text transactionId,
                               EnquiryCompletion completion) override {
        call("getTransactionEnquiry", {token, orderId, invoiceId, transactionId},
             [completion, result = enquiryAnswer] { completion(result); });
    }

  private:
    static Value orNull(const std::optional<Dictionary>& dictionary) {
        return dictionary ? Value(*dictionary) : Value();
    }

    std::deque<std::function<void()>> held_;
};

}  // namespace zorvik
