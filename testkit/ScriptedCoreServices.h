#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/OrderRecords.h"
#include "core/UPIAppsVO.h"
#include "core/ZorvikCoreApiSDK.h"
#include "platform/foundation/Error.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/Value.h"

namespace zorvik::testkit {

// An analytics event as the component logged it.
struct Event {
    std::string name;  // the name of its constant: "PAYMENT_STATUS"
    std::optional<std::string> orderId;
    std::optional<std::string> token;
    std::optional<std::string> subMerchantId;
    platform::Dictionary additionalData;
};

// A call of the core services: the operation's name, and its arguments by their names.
struct CoreCall {
    std::string operation;
    platform::Dictionary arguments;
    std::size_t number = 0;  // from 1, in the order of the calls
};

// What the core services answer: with these a checkout goes well.
struct CoreAnswers {
    platform::Result<OrderResponse> orderUpdate = OrderResponse{};
    platform::Result<std::vector<UPIAppsVO>> appList = std::vector<UPIAppsVO>{};
    platform::Result<TransactionEnquiryResponse> enquiry =
        TransactionEnquiryResponse{Order{"SUCCESS"}, {{"payment_status", "SUCCESS"}}};
    platform::Result<OrderResponse> orderCreation = OrderResponse{"order-1", "token-1", "CREATED"};
    platform::Result<platform::Dictionary> shopOrderCreation =
        platform::Dictionary{{"order_id", "order-1"}};
};

// The core services of the test kit: linked in place of any others, they answer what a test said
// and keep what they were told. A call is answered once, by a background task unless told
// otherwise, with the answer in force when the call was made. One for the process; a new kit clears
// it. Any thread, but what is said to it, `answers` and `clear` included, is for the main one.
class ZORVIK_API ScriptedCoreServices : public ZorvikCoreApiSDK {
  public:
    // A page's address is one of these, unless told otherwise; a UPI app hands control back by
    // returnScheme.
    static constexpr const char* checkoutPageUrl = "https://pay.example/checkout";
    static constexpr const char* responseUrl = "https://pay.example/response";
    static constexpr const char* returnScheme = "testkit-return";

    static ScriptedCoreServices& instance();

    // For a desktop port, whose pages come from a server. Between checkouts.
    void setAddresses(std::string checkoutPage, std::string response);
    std::string checkoutPage() const;
    std::string response() const;
    CoreAnswers& answers() { return answers_; }
    // When calls from now on are answered; atOnce: inside the call, as from a cache.
    enum class Timing { inBackground, atOnce, whenTold };
    void setTiming(Timing timing) { timing_ = timing; }
    // The calls that wait to be told, oldest first: answering one by its place in line with the
    // answer in force now, here or by a background task, or never answering it. False when there
    // is none.
    std::vector<CoreCall> waitingCalls() const;
    bool answerCall(std::size_t place = 0, Timing timing = Timing::atOnce);
    bool forgetCall(std::size_t place = 0);
    // Called with each event, each call before its answer is chosen, and each answer just before
    // it is given, on the thread it happens on.
    void onEvent(std::function<void(const Event&)> listener) { onEvent_ = std::move(listener); }
    void onCall(std::function<void(const CoreCall&)> listener) { onCall_ = std::move(listener); }
    void onAnswer(std::function<void(const CoreCall&)> listener) {
        onAnswer_ = std::move(listener);
    }
    // Back to the answers with which a checkout goes well, with nothing recorded, waiting or told.
    void clear();

    // Copies, in order.
    std::vector<Event> events() const;
    std::vector<CoreCall> calls() const;
    // As last told; nullopt: never.
    std::optional<std::string> environmentUrl() const;
    std::optional<std::string> appCode() const;

    void createOrder(double amount, const std::string& currency,
                     const std::vector<platform::Dictionary>& orderLineItems,
                     const std::optional<platform::Dictionary>& user,
                     OrderCompletion completion) override;
    void createShopOrder(const std::string& currency, const std::string& amount,
                         const std::string& productId, bool orderLineItems,
                         const std::string& checkoutExperience, const std::string& paymentMode,
                         const std::string& subPaymentMode,
                         const std::optional<platform::Dictionary>& user,
                         ShopOrderCompletion completion) override;
    void updateOrderDetails(const std::string& token, const std::string& orderId,
                            const std::string& callbackMode, const std::string& referrerPlatform,
                            const std::string& referrerPlatformVersion,
                            OrderCompletion completion) override;
    void getTransactionEnquiry(const std::string& token, const std::string& orderId,
                               const std::string& invoiceId, const std::string& transactionId,
                               EnquiryCompletion completion) override;
    // For the static members of the contract.
    void getUPIAppsList(
        const std::string& token,
        std::function<void(const platform::Result<std::vector<UPIAppsVO>>&)> completion);
    void record(Event event);
    void setEnvironmentUrl(const std::string& url);
    void setAppCode(const std::optional<std::string>& appCode);

  private:
    ScriptedCoreServices() = default;

    template <class T>
    void take(CoreCall call, const std::function<void(const platform::Result<T>&)>& completion,
              platform::Result<T> CoreAnswers::*answer);

    CoreAnswers answers_;
    Timing timing_ = Timing::inBackground;
    struct WaitingCall {
        CoreCall call;
        std::function<void(Timing)> giveBy;
    };
    std::deque<WaitingCall> waiting_;
    std::function<void(const Event&)> onEvent_;
    std::function<void(const CoreCall&)> onCall_;
    std::function<void(const CoreCall&)> onAnswer_;
    mutable std::mutex mutex_;  // guards what follows
    std::vector<Event> events_;
    std::vector<CoreCall> calls_;
    std::string checkoutPage_ = checkoutPageUrl;
    std::string response_ = responseUrl;
    std::optional<std::string> environmentUrl_;
    std::optional<std::string> appCode_;
};

}  // namespace zorvik::testkit
