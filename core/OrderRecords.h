#pragma once

#include <optional>
#include <string>

#include "platform/foundation/Value.h"

namespace zorvik {

// The answer to an order creation or update. A value; an answer with every field empty is a
// success all the same.
struct OrderResponse {
    std::optional<std::string> orderId = std::nullopt;
    std::optional<std::string> orderToken = std::nullopt;
    std::optional<std::string> status = std::nullopt;
};

// An order as the back end reports it.
struct Order {
    std::optional<std::string> status = std::nullopt;
};

// The answer to a transaction enquiry. A value.
struct TransactionEnquiryResponse {
    std::optional<Order> order = std::nullopt;
    platform::Dictionary fields = {};  // the whole response as the back end gave it

    // What the host receives after a UPI app reported success.
    const platform::Dictionary& toDictionary() const { return fields; }
};

}  // namespace zorvik
