#include <algorithm>
#include <string>

#include "fuzz/Target.h"
#include "platform/foundation/Data.h"
#include "platform/foundation/JSONSerialization.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutSDK.h"

namespace zorvik::fuzz {

using platform::JSONSerialization;
using platform::Value;

namespace {

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
    // Only the second of three segments counts, empty ones never do.
    const std::string token(input);
    const auto isSame = [&](const std::string& other) {
        return ZorvikCheckoutSDK::getOrderID(other) == ZorvikCheckoutSDK::getOrderID(token) &&
               ZorvikCheckoutSDK::getSubMerchantID(other) ==
                   ZorvikCheckoutSDK::getSubMerchantID(token);
    };
    require(isSame("..." + token + ".."), "empty segments never count");
    require(ZorvikCheckoutSDK::getOrderID(token + ".a.b.c").empty() ||
                token.find_first_not_of('.') == token.npos,
            "only three segments are a token");
}

const Target target("claims", check);

}  // namespace
}  // namespace zorvik::fuzz
