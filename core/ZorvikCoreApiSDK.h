#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "core/OrderRecords.h"
#include "platform/foundation/Error.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/Value.h"

namespace zorvik {

// The back-end calls. Each completes exactly once, later, on a thread of the implementation's
// choice; a failure comes as the Error of the result. May be called on any thread.
class ZORVIK_API ZorvikCoreApiSDK {
  public:
    using OrderCompletion = std::function<void(const platform::Result<OrderResponse>&)>;
    using ShopOrderCompletion = std::function<void(const platform::Result<platform::Dictionary>&)>;
    using EnquiryCompletion =
        std::function<void(const platform::Result<TransactionEnquiryResponse>&)>;

    // The linked implementation's one instance; lives for the process.
    static ZorvikCoreApiSDK& shared();

    virtual ~ZorvikCoreApiSDK() = default;

    virtual void createOrder(double amount, const std::string& currency,
                             const std::vector<platform::Dictionary>& orderLineItems,
                             const std::optional<platform::Dictionary>& user,
                             OrderCompletion completion) = 0;
    virtual void createShopOrder(const std::string& currency, const std::string& amount,
                                 const std::string& productId, bool orderLineItems,
                                 const std::string& checkoutExperience,
                                 const std::string& paymentMode, const std::string& subPaymentMode,
                                 const std::optional<platform::Dictionary>& user,
                                 ShopOrderCompletion completion) = 0;
    virtual void updateOrderDetails(const std::string& token, const std::string& orderId,
                                    const std::string& callbackMode,
                                    const std::string& referrerPlatform,
                                    const std::string& referrerPlatformVersion,
                                    OrderCompletion completion) = 0;
    virtual void getTransactionEnquiry(const std::string& token, const std::string& orderId,
                                       const std::string& invoiceId,
                                       const std::string& transactionId,
                                       EnquiryCompletion completion) = 0;
};

}  // namespace zorvik
