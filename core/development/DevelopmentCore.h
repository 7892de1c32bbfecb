#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/UPIAppsVO.h"
#include "core/ZorvikCoreApiSDK.h"
#include "core/development/EventSink.h"
#include "core/development/OrderBook.h"
#include "platform/foundation/Export.h"

namespace zorvik::development {

// A UPI app to offer, and the scheme of the addresses by which it hands control back.
struct DevelopmentUPIApp {
    UPIAppsVO record;
    // Without "://"; may be empty when the app never returns by address.
    std::string returnScheme = {};
};

// A call that can be made to fail.
enum class Operation {
    createOrder,
    createShopOrder,
    updateOrderDetails,
    getUPIAppsList,
    getTransactionEnquiry,
};

// What the development core answers with. A value.
struct Configuration {
    // As APIUtils gives them.
    std::string webViewViewUrl;
    std::string webViewRespCheckUrl;
    std::vector<DevelopmentUPIApp> upiApps = {};
    // Runs a task away from the caller, later. Required: without it the core counts as not
    // configured.
    std::function<void(std::function<void()>)> runInBackground;
    std::shared_ptr<EventSink> eventSink = nullptr;  // none: events are dropped
    std::shared_ptr<OrderBook> orderBook = std::make_shared<MemoryOrderBook>();
};

// The core services for development: addresses and UPI apps as configured, orders from a book,
// events to a sink. Link it in place of the real services. Any thread. Before it is configured
// every call completes with an Error, events are dropped and the addresses are empty.
class ZORVIK_API DevelopmentCore : public ZorvikCoreApiSDK {
  public:
    static DevelopmentCore& shared();

    // Replaces the whole configuration and ends failures on demand. Calls already made keep to
    // what was in force when they were made. The host's application code stays.
    void configure(Configuration configuration);

    // From now on the operation fails with this Error; nullopt: it works again.
    void failOn(Operation operation, std::optional<platform::Error> error);

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
    DevelopmentCore() = default;
};

}  // namespace zorvik::development
