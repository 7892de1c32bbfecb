#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/Error.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/Value.h"

namespace zorvik::development {

enum class PaymentStatus { created, pending, success, failed };

// "CREATED", "PENDING", "SUCCESS", "FAILED", and back (nullopt for any other text).
ZORVIK_API std::string_view text(PaymentStatus status);
ZORVIK_API std::optional<PaymentStatus> paymentStatusFrom(std::string_view text);

// One attempt to pay an order, told apart by its transaction id.
struct Payment {
    std::string transactionId;
    std::string method;  // free text: "UPI", "CARD", "BANK"
    PaymentStatus status = PaymentStatus::pending;
    std::string message = {};  // the bank's words, may be empty

    friend bool operator==(const Payment&, const Payment&) = default;
};

// What an order is made from. Amounts are whole hundredths of the currency's unit.
struct OrderDraft {
    std::int64_t amountInMinorUnits = 0;
    std::string currency;  // three capital letters
    platform::Array lineItems = {};
    std::optional<platform::Dictionary> user = std::nullopt;
};

// Where the host's merchant wants to hear of the order.
struct OrderDetails {
    std::string callbackMode;
    std::string referrerPlatform;
    std::string referrerPlatformVersion;
};

// An order as the book holds it. A value.
struct ZORVIK_API OrderRecord {
    std::string orderId;
    std::string token;
    std::string subMerchantId;
    OrderDraft draft;
    std::optional<OrderDetails> details;  // of the last update
    std::vector<Payment> payments;        // in the order of the attempts

    // Paid once any payment succeeded; else pending while one is, else failed once one failed.
    PaymentStatus status() const;
    const Payment* payment(std::string_view transactionId) const;
};

// An enquiry's whole answer: "order_id", "amount" (such as "1499.00"), "currency",
// "sub_merchant_id", "order" with its "status", and, when a payment is told of, its
// "transaction_id", "payment_method", "payment_status" and "payment_message".
ZORVIK_API platform::Dictionary enquiryFields(const OrderRecord& order,
                                              std::string_view transactionId);

// The back end's orders. Any thread, several calls at once; calls may take as long as a network
// does. Every refusal is an Error whose description says what was wrong.
class ZORVIK_API OrderBook {
  public:
    virtual ~OrderBook() = default;

    virtual platform::Result<OrderRecord> create(const OrderDraft& draft) = 0;
    virtual platform::Result<OrderRecord> updateDetails(const std::string& token,
                                                        const std::string& orderId,
                                                        const OrderDetails& details) = 0;
    virtual platform::Result<OrderRecord> find(const std::string& token,
                                               const std::string& orderId) = 0;
    // The first word on a new transaction id, or news of one that is pending. Repeating what is
    // known changes nothing; contradicting a settled payment or paying a paid order is refused.
    virtual platform::Result<OrderRecord> recordPayment(const std::string& orderId,
                                                        const Payment& payment) = 0;
};

// Keeps the orders as long as it lives.
class ZORVIK_API MemoryOrderBook : public OrderBook {
  public:
    explicit MemoryOrderBook(std::string subMerchantId = "SM-1001");

    platform::Result<OrderRecord> create(const OrderDraft& draft) override;
    platform::Result<OrderRecord> updateDetails(const std::string& token,
                                                const std::string& orderId,
                                                const OrderDetails& details) override;
    platform::Result<OrderRecord> find(const std::string& token,
                                       const std::string& orderId) override;
    platform::Result<OrderRecord> recordPayment(const std::string& orderId,
                                                const Payment& payment) override;

  private:
    platform::Result<OrderRecord*> locate(const std::string& token, const std::string& orderId);

    std::mutex mutex_;
    const std::string subMerchantId_;
    std::uint64_t lastNumber_ = 0;
    std::map<std::string, OrderRecord> orders_;  // by order id
};

// Money as people write it: "1499", "1499.5" or "1499.00", nothing else. nullopt for anything
// that is no amount of whole hundredths between 0.01 and 9,999,999,999.99.
ZORVIK_API std::optional<std::int64_t> minorUnitsFrom(std::string_view amount);
ZORVIK_API std::optional<std::int64_t> minorUnitsFrom(double amount);
// "1499.00"
ZORVIK_API std::string amountText(std::int64_t minorUnits);

}  // namespace zorvik::development
