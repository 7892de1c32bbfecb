#include <algorithm>
#include <string>
#include <vector>

#include "fuzz/Target.h"
#include "platform/foundation/Data.h"
#include "platform/foundation/JSONSerialization.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutSDK.h"

namespace zorvik::fuzz {

using platform::JSONSerialization;
using platform::Value;

namespace {

std::vector<std::string> segments(std::string_view token) {
    std::vector<std::string> found(1);
    for (const char character : token) {
        if (character != '.') {
            found.back() += character;
        } else if (!found.back().empty()) {
            found.emplace_back();
        }
    }
    if (found.back().empty()) found.pop_back();
    return found;
}

// The claims themselves, as a token of which nothing else can go wrong.
void checkClaims(std::string_view claims) {
    const std::string token = "h." + platform::base64Encode(claims) + ".s";
    std::string urlSafe = token;
    std::replace(urlSafe.begin(), urlSafe.end(), '+', '-');
    std::replace(urlSafe.begin(), urlSafe.end(), '/', '_');
    const std::string orderId = ZorvikCheckoutSDK::getOrderID(token);
    const std::string merchantId = ZorvikCheckoutSDK::getSubMerchantID(token);
    require(ZorvikCheckoutSDK::getSubMerchantID(urlSafe) == merchantId,
            "the sub-merchant id is read from either alphabet");
    require(urlSafe == token || ZorvikCheckoutSDK::getOrderID(urlSafe).empty(),
            "the order id is read from the standard alphabet alone");

    const auto parsed =
        JSONSerialization::jsonObject(claims, JSONSerialization::ReadingOptions::none);
    const auto* object = parsed ? parsed.value().dictionary() : nullptr;
    const auto textOf = [object](const char* name, bool acceptsIntegers) -> std::string {
        if (object == nullptr || !object->contains(name)) return "";
        const Value& claim = object->at(name);
        if (claim.string() != nullptr) return *claim.string();
        const bool isInteger = claim.integer() != nullptr || claim.unsignedInteger() != nullptr ||
                               (claim.exactNumber() != nullptr && claim.exactNumber()->isInteger());
        return acceptsIntegers && isInteger ? JSONSerialization::data(claim).value() : "";
    };
    require(orderId == textOf("order_id", false), "a string order id is read, nothing else");
    require(merchantId == textOf("sub_merchant_id", true),
            "a string or integer sub-merchant id is read, nothing else");
}

void check(std::string_view input) {
    checkClaims(input);
    const std::string orderId = ZorvikCheckoutSDK::getOrderID(input);
    const std::string merchantId = ZorvikCheckoutSDK::getSubMerchantID(input);
    const auto parts = segments(input);
    if (parts.size() != 3) {
        require(orderId.empty() && merchantId.empty(), "only three segments are a token");
        return;
    }
    const std::string other = ".." + parts[2] + "..." + parts[1] + "." + parts[0];
    require(ZorvikCheckoutSDK::getOrderID(other) == orderId &&
                ZorvikCheckoutSDK::getSubMerchantID(other) == merchantId,
            "only the second segment counts, empty ones never do");
}

const Target target("claims", check);

}  // namespace
}  // namespace zorvik::fuzz
