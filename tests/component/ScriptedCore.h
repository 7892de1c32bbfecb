#pragma once

#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "core/UPIAppsVO.h"
#include "core/ZorvikCoreApiSDK.h"
#include "platform/foundation/Value.h"

namespace zorvik {

// An order token with the claims "order-7" and "sub-3" that every reader can read.
const std::string& plainToken();

// The core services as a test wants them: every call and event is recorded as a line of text (the
// plain token as TOKEN), every answer is what the test set. The youngest one is the one the
// component finds. Main thread, but for events and the answers.
class ScriptedCore : public ZorvikCoreApiSDK {
  public:
    ScriptedCore();
    ~ScriptedCore() override;
    static ScriptedCore& current();

    std::string webViewViewUrl = "https://pay.example/checkout?token=%@";
    std::string webViewRespCheckUrl = "https://pay.example/check";
    std::string returnPrefix = "shopreturn://";  // of the addresses by which UPI apps return
    int returnQuestions = 0;
    std::vector<std::string> techUrls;  // as assigned
    std::vector<std::optional<std::string>> appCodes;

    platform::Result<OrderResponse> updateAnswer = OrderResponse{};
    platform::Result<std::vector<UPIAppsVO>> appsAnswer = std::vector<UPIAppsVO>{};
    platform::Result<TransactionEnquiryResponse> enquiryAnswer = TransactionEnquiryResponse{};
    platform::Result<OrderResponse> orderAnswer = OrderResponse{};
    platform::Result<platform::Dictionary> shopOrderAnswer = platform::Dictionary{};

    // Answers wait for answerNext instead of coming from a background task.
    bool holdsAnswers = false;
    bool answerNext();           // on this thread
    bool answerNextOnAThread();  // on one of its own, which has ended on return

    // name(argument, ...)
    std::vector<std::string> takeCalls();
    // NAME ["key": value, ...] for an event of the plain token's checkout; the three ids stand
    // behind the name where they are others, as do "none" and a version that is not the current
    // one.
    std::vector<std::string> events() const;
    std::vector<std::string> takeEvents();

    void record(const std::string& event);
    void call(const std::string& name, const std::vector<platform::Value>& arguments,
              std::function<void()> answer);

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

  private:
    std::vector<std::string> calls_;
    std::deque<std::function<void()>> held_;
    mutable std::mutex mutex_;
    std::vector<std::string> events_;
};

}  // namespace zorvik
