#include "examples/upi_app/PaymentRequest.h"

#include <map>

#include "core/development/OrderBook.h"
#include "platform/foundation/URLComponents.h"

namespace zorvik::demo {

using platform::Error;
using platform::Result;

namespace {

Error unusable(std::string description) {
    return Error{"zorvik.demo.upi", 1, std::move(description)};
}

}  // namespace

Result<PaymentRequest> paymentRequestFrom(std::string_view deepLink) {
    const auto parts = platform::URLComponents::parse(deepLink);
    if (!parts || parts->host() != "pay") return unusable("This link asks for no payment.");
    std::map<std::string, std::string> values;
    for (const auto& item : parts->queryItems().value_or(std::vector<platform::URLQueryItem>())) {
        const bool isNew = values.emplace(item.name, item.value.value_or("")).second;
        if (!isNew) return unusable("This link says \"" + item.name + "\" twice.");
    }
    const PaymentRequest request{values["pn"], values["pa"], values["tr"],
                                 values["tn"], values["am"], values["cu"]};
    if (request.payeeAddress.empty()) return unusable("This link names nobody to pay.");
    if (request.transactionReference.empty()) return unusable("This link has no reference.");
    if (!development::minorUnitsFrom(std::string_view(request.amount))) {
        return unusable("This link names no amount.");
    }
    return request;
}

}  // namespace zorvik::demo
