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

    // A new order over `amount`, in whole units of the currency and their fractions.
    virtual void createOrder(double amount, const std::string& currency,
                             const std::vector<platform::Dictionary>& orderLineItems,
                             const std::optional<platform::Dictionary>& user,
                             OrderCompletion completion) = 0;
    // The same for a hosted shop: here `amount` is a text and `orderLineItems` a flag.
    virtual void createShopOrder(const std::string& currency, const std::string& amount,
                                 const std::string& productId, bool orderLineItems,
                                 const std::string& checkoutExperience,
                                 const std::string& paymentMode, const std::string& subPaymentMode,
                                 const std::optional<platform::Dictionary>& user,
                                 ShopOrderCompletion completion) = 0;
    // Tells the back end where the customer is about to pay. Only its success counts.
    virtual void updateOrderDetails(const std::string& token, const std::string& orderId,
                                    const std::string& callbackMode,
                                    const std::string& referrerPlatform,
                                    const std::string& referrerPlatformVersion,
                                    OrderCompletion completion) = 0;
    // How the payment of an order stands. `transactionId` may be empty; the component passes the
    // order id as invoice id too.
    virtual void getTransactionEnquiry(const std::string& token, const std::string& orderId,
                                       const std::string& invoiceId,
                                       const std::string& transactionId,
                                       EnquiryCompletion completion) = 0;
};

}  // namespace zorvik
