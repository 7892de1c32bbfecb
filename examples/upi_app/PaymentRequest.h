#pragma once

#include <string>
#include <string_view>

#include "platform/foundation/Error.h"

namespace zorvik::demo {

// What a UPI deep link asks for. A value.
struct PaymentRequest {
    std::string payeeName;
    std::string payeeAddress;
    std::string transactionReference;
    std::string note;
    std::string amount;    // "1499.00"
    std::string currency;  // "INR"
};

// An Error, in words for the customer, for a link that does not ask for exactly one payment.
platform::Result<PaymentRequest> paymentRequestFrom(std::string_view deepLink);

}  // namespace zorvik::demo
