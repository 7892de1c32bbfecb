#pragma once

#include <optional>
#include <string>

namespace zorvik {

// What the host wants checked out. A value, copied on assignment.
struct ZorvikCheckoutOptions {
    // header.claims.signature, from the merchant's back end
    std::optional<std::string> orderToken = std::nullopt;
    std::optional<std::string> walletCode = std::nullopt;
    std::optional<std::string> paymentFlow = std::nullopt;
    // A preselected payment method, with its bank code.
    std::optional<std::string> paymentModeCode = std::nullopt;
    std::optional<std::string> bankCode = std::nullopt;
};

}  // namespace zorvik
