#pragma once

#include <optional>
#include <string>

namespace zorvik {

// What the host wants checked out. A value, copied on assignment. All but the token is passed on to
// the checkout page, for a payment method that is chosen already; absent and empty are the same.
struct ZorvikCheckoutOptions {
    // header.claims.signature, from the merchant's back end. No checkout without it.
    std::optional<std::string> orderToken = std::nullopt;
    std::optional<std::string> walletCode = std::nullopt;
    std::optional<std::string> paymentFlow = std::nullopt;
    std::optional<std::string> paymentModeCode = std::nullopt;
    std::optional<std::string> bankCode = std::nullopt;
};

}  // namespace zorvik
