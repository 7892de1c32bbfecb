#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "platform/foundation/Data.h"
#include "platform/foundation/JSONSerialization.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutSDK.h"

namespace zorvik {

using platform::JSONSerialization;
using platform::Value;

namespace {

// The second of exactly three segments; empty segments do not count.
std::optional<std::string_view> claimsSegment(std::string_view token) {
    std::string_view claims;
    int segments = 0;
    for (std::size_t start = 0; start <= token.size();) {
        const std::size_t end = std::min(token.find('.', start), token.size());
        if (end > start) {
            ++segments;
            if (segments == 2) claims = token.substr(start, end - start);
            if (segments > 3) return std::nullopt;
        }
        start = end + 1;
    }
    if (segments != 3) return std::nullopt;
    return claims;
}

// Three "=" are added where the length asks for them, and then refused by the decoder: no base64
// text has such a length.
void pad(std::string& segment) {
    const std::size_t remainder = segment.size() % 4;
    if (remainder != 0) segment.append(4 - remainder, '=');
}

std::optional<Value> claim(const std::string& segment, std::string_view name) {
    const auto bytes = platform::base64Decode(segment);
    if (!bytes) return std::nullopt;
    auto member = JSONSerialization::member(*bytes, name);
    if (!member) return std::nullopt;
    return std::move(member).value();
}

}  // namespace

std::string ZorvikCheckoutSDK::getOrderID(std::string_view token) {
    const auto claims = claimsSegment(token);
    if (!claims) return "";
    std::string segment(*claims);
    pad(segment);
    const auto orderId = claim(segment, "order_id");
    if (!orderId || orderId->string() == nullptr) return "";
    return *orderId->string();
}

std::string ZorvikCheckoutSDK::getSubMerchantID(std::string_view token) {
    const auto claims = claimsSegment(token);
    if (!claims) return "";
    std::string segment(*claims);
    // Unlike the order id, the sub-merchant id is also read from URL-safe segments.
    std::replace(segment.begin(), segment.end(), '-', '+');
    std::replace(segment.begin(), segment.end(), '_', '/');
    pad(segment);
    const auto subMerchantId = claim(segment, "sub_merchant_id");
    if (!subMerchantId) return "";
    if (const auto* text = subMerchantId->string()) return *text;
    if (const auto* integer = subMerchantId->integer()) return std::to_string(*integer);
    if (const auto* integer = subMerchantId->unsignedInteger()) return std::to_string(*integer);
    if (const auto* number = subMerchantId->exactNumber(); number && number->isInteger()) {
        return number->text();
    }
    return "";
}

}  // namespace zorvik
