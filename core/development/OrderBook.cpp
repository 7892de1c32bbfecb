#include "core/development/OrderBook.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "core/development/OrderToken.h"

namespace zorvik::development {

namespace {

using platform::Dictionary;
using platform::Error;
using platform::Result;

constexpr std::int64_t largestAmount = 999'999'999'999;
constexpr std::array statusTexts{"CREATED", "PENDING", "SUCCESS", "FAILED"};

Error refusal(std::string description) {
    return Error{"zorvik.development.orders", 1, std::move(description)};
}

bool isCurrencyCode(std::string_view text) {
    return text.size() == 3 && std::all_of(text.begin(), text.end(), [](char letter) {
               return letter >= 'A' && letter <= 'Z';
           });
}

bool isSettled(PaymentStatus status) {
    return status == PaymentStatus::success || status == PaymentStatus::failed;
}

}  // namespace

std::string_view text(PaymentStatus status) {
    return statusTexts[static_cast<std::size_t>(status)];
}

std::optional<PaymentStatus> paymentStatusFrom(std::string_view text) {
    const auto found = std::find(statusTexts.begin(), statusTexts.end(), text);
    if (found == statusTexts.end()) return std::nullopt;
    return static_cast<PaymentStatus>(found - statusTexts.begin());
}

PaymentStatus OrderRecord::status() const {
    const auto any = [this](PaymentStatus wanted) {
        return std::any_of(payments.begin(), payments.end(),
                           [wanted](const Payment& one) { return one.status == wanted; });
    };
    for (const auto status :
         {PaymentStatus::success, PaymentStatus::pending, PaymentStatus::failed}) {
        if (any(status)) return status;
    }
    return PaymentStatus::created;
}

const Payment* OrderRecord::payment(std::string_view transactionId) const {
    const auto found = std::find_if(
        payments.begin(), payments.end(),
        [transactionId](const Payment& one) { return one.transactionId == transactionId; });
    return found == payments.end() ? nullptr : &*found;
}

Dictionary enquiryFields(const OrderRecord& order, std::string_view transactionId) {
    Dictionary fields{
        {"order_id", order.orderId},
        {"sub_merchant_id", order.subMerchantId},
        {"amount", amountText(order.draft.amountInMinorUnits)},
        {"currency", order.draft.currency},
        {"order", Dictionary{{"status", text(order.status())}}},
    };
    const Payment* told = order.payment(transactionId);
    // Without a known transaction id the payment that decided the order's status is told of.
    if (!told) {
        for (const Payment& payment : order.payments) {
            if (payment.status == order.status()) told = &payment;
        }
    }
    if (told) {
        fields["transaction_id"] = told->transactionId;
        fields["payment_method"] = told->method;
        fields["payment_status"] = text(told->status);
        fields["payment_message"] = told->message;
    }
    return fields;
}

MemoryOrderBook::MemoryOrderBook(std::string subMerchantId)
    : subMerchantId_(std::move(subMerchantId)) {}

Result<OrderRecord> MemoryOrderBook::create(const OrderDraft& draft) {
    if (draft.amountInMinorUnits < 1 || draft.amountInMinorUnits > largestAmount) {
        return refusal("The amount must lie between 0.01 and 9999999999.99");
    }
    if (!isCurrencyCode(draft.currency)) {
        return refusal("The currency must be three capital letters");
    }
    const std::scoped_lock lock(mutex_);
    const std::string digits = std::to_string(++lastNumber_);
    OrderRecord order;
    order.orderId = "ORD-" + std::string(digits.size() < 6 ? 6 - digits.size() : 0, '0') + digits;
    order.subMerchantId = subMerchantId_;
    order.draft = draft;
    order.token = makeOrderToken({{"order_id", order.orderId},
                                  {"sub_merchant_id", subMerchantId_},
                                  {"amount", amountText(draft.amountInMinorUnits)},
                                  {"currency", draft.currency}});
    if (order.token.empty()) return refusal("The sub-merchant id is not UTF-8");
    return orders_[order.orderId] = order;
}

Result<OrderRecord*> MemoryOrderBook::locate(const std::string& token, const std::string& orderId) {
    if (orderId.empty()) return refusal("The order id is empty");
    const auto found = orders_.find(orderId);
    if (found == orders_.end()) return refusal("Unknown order \"" + orderId + "\"");
    if (found->second.token != token) {
        return refusal("The order token does not belong to order \"" + orderId + "\"");
    }
    return &found->second;
}

Result<OrderRecord> MemoryOrderBook::updateDetails(const std::string& token,
                                                   const std::string& orderId,
                                                   const OrderDetails& details) {
    const std::scoped_lock lock(mutex_);
    const auto located = locate(token, orderId);
    if (!located) return located.error();
    located.value()->details = details;
    return *located.value();
}

Result<OrderRecord> MemoryOrderBook::find(const std::string& token, const std::string& orderId) {
    const std::scoped_lock lock(mutex_);
    const auto located = locate(token, orderId);
    if (!located) return located.error();
    return *located.value();
}

Result<OrderRecord> MemoryOrderBook::recordPayment(const std::string& orderId,
                                                   const Payment& payment) {
    if (payment.transactionId.empty()) return refusal("The transaction id is empty");
    if (payment.status == PaymentStatus::created) {
        return refusal("A payment is pending, successful or failed");
    }
    const std::scoped_lock lock(mutex_);
    const auto found = orders_.find(orderId);
    if (found == orders_.end()) return refusal("Unknown order \"" + orderId + "\"");
    OrderRecord& order = found->second;
    const auto known = std::find_if(
        order.payments.begin(), order.payments.end(),
        [&](const Payment& one) { return one.transactionId == payment.transactionId; });
    const bool isKnown = known != order.payments.end();
    if (isKnown && *known == payment) return order;
    if (isKnown && isSettled(known->status)) {
        if (known->status == payment.status) return order;
        return refusal("Transaction \"" + payment.transactionId + "\" is settled as " +
                       std::string(text(known->status)));
    }
    if (order.status() == PaymentStatus::success && payment.status != PaymentStatus::failed) {
        return refusal("Order \"" + orderId + "\" has been paid already");
    }
    if (isKnown) {
        *known = payment;
    } else {
        order.payments.push_back(payment);
    }
    return order;
}

std::optional<std::int64_t> minorUnitsFrom(std::string_view amount) {
    const auto isDigit = [](char character) { return character >= '0' && character <= '9'; };
    const std::size_t point = amount.find('.');
    const std::string_view whole = amount.substr(0, point);
    std::string fraction(point == amount.npos ? "0" : amount.substr(point + 1));
    if (whole.empty() || whole.size() > 10 || fraction.empty() || fraction.size() > 2 ||
        !std::all_of(whole.begin(), whole.end(), isDigit) ||
        !std::all_of(fraction.begin(), fraction.end(), isDigit)) {
        return std::nullopt;
    }
    fraction.resize(2, '0');
    std::int64_t units = 0;
    for (const char digit : std::string(whole) + fraction)
        units = units * 10 + (digit - '0');
    return units == 0 ? std::nullopt : std::optional(units);
}

std::optional<std::int64_t> minorUnitsFrom(double amount) {
    const double units = std::round(amount * 100);
    if (!(units >= 1 && units <= static_cast<double>(largestAmount))) return std::nullopt;
    // Sums of hundredths carry rounding errors far below this; a third decimal lies above it.
    if (std::abs(units / 100 - amount) > 0.0001) return std::nullopt;
    return static_cast<std::int64_t>(units);
}

std::string amountText(std::int64_t minorUnits) {
    const std::string cents = std::to_string(minorUnits % 100);
    return std::to_string(minorUnits / 100) + (cents.size() < 2 ? ".0" : ".") + cents;
}

}  // namespace zorvik::development
