#include "examples/common/OrderRecordJSON.h"

namespace zorvik::demo {

using development::OrderRecord;
using development::Payment;
using platform::Array;
using platform::Dictionary;
using platform::Error;
using platform::Result;
using platform::Value;

namespace {

Error unreadable(const std::string& what) {
    return Error{"zorvik.demo", 1, "The back end's answer has no usable " + what};
}

const Value* valueOf(const Dictionary& fields, std::string_view key) {
    const auto found = fields.find(key);
    return found == fields.end() ? nullptr : &found->second;
}

}  // namespace

std::string textOf(const Dictionary& fields, std::string_view key) {
    const Value* value = valueOf(fields, key);
    const std::string* text = value ? value->string() : nullptr;
    return text ? *text : "";
}

Dictionary orderToDictionary(const OrderRecord& order) {
    Array payments;
    for (const Payment& payment : order.payments) {
        payments.emplace_back(Dictionary{{"transaction_id", payment.transactionId},
                                         {"method", payment.method},
                                         {"status", development::text(payment.status)},
                                         {"message", payment.message}});
    }
    Dictionary fields{
        {"order_id", order.orderId},
        {"order_token", order.token},
        {"sub_merchant_id", order.subMerchantId},
        {"amount", development::amountText(order.draft.amountInMinorUnits)},
        {"currency", order.draft.currency},
        {"line_items", order.draft.lineItems},
        {"status", development::text(order.status())},
        {"payments", payments},
    };
    if (order.draft.user) fields["user"] = *order.draft.user;
    return fields;
}

Result<OrderRecord> orderFromDictionary(const Dictionary& fields) {
    OrderRecord order;
    order.orderId = textOf(fields, "order_id");
    order.token = textOf(fields, "order_token");
    order.subMerchantId = textOf(fields, "sub_merchant_id");
    order.draft.currency = textOf(fields, "currency");
    if (order.orderId.empty() || order.token.empty()) return unreadable("order id or token");
    const auto amount = development::minorUnitsFrom(std::string_view(textOf(fields, "amount")));
    if (!amount) return unreadable("amount");
    order.draft.amountInMinorUnits = *amount;
    if (const Value* items = valueOf(fields, "line_items"); items && items->array()) {
        order.draft.lineItems = *items->array();
    }
    if (const Value* user = valueOf(fields, "user"); user && user->dictionary()) {
        order.draft.user = *user->dictionary();
    }
    const Value* payments = valueOf(fields, "payments");
    if (!payments || !payments->array()) return unreadable("list of payments");
    for (const Value& one : *payments->array()) {
        const Dictionary* payment = one.dictionary();
        const auto status =
            payment ? development::paymentStatusFrom(textOf(*payment, "status")) : std::nullopt;
        if (!status) return unreadable("payment");
        order.payments.push_back({textOf(*payment, "transaction_id"), textOf(*payment, "method"),
                                  *status, textOf(*payment, "message")});
    }
    return order;
}

}  // namespace zorvik::demo
