#include <optional>
#include <string>

#include "fuzz/Target.h"
#include "platform/foundation/Data.h"
#include "platform/foundation/JSONSerialization.h"
#include "platform/foundation/URL.h"
#include "platform/foundation/URLComponents.h"
#include "testkit/CheckoutTestKit.h"

namespace zorvik::fuzz {

using platform::Dictionary;
using platform::JSONSerialization;
using platform::URLComponents;
using testkit::CheckoutTestKit;
using Services = testkit::ScriptedCoreServices;

namespace {

std::optional<Dictionary> payloadOf(std::string_view json) {
    const auto parsed =
        JSONSerialization::jsonObject(json, JSONSerialization::ReadingOptions::fragmentsAllowed);
    if (!parsed) return std::nullopt;
    const auto* object = parsed.value().dictionary();
    if (object == nullptr || !object->contains("payload")) return Dictionary();
    const auto* payload = object->at("payload").dictionary();
    return payload == nullptr ? Dictionary() : *payload;
}

Dictionary failure(const char* message) {
    return {{"error", message},
            {"order_id", CheckoutTestKit::orderId},
            {"zorvik_order_id", CheckoutTestKit::orderId},
            {"token", CheckoutTestKit::orderToken()},
            {"subMerchantId", CheckoutTestKit::subMerchantId}};
}

Dictionary expectedFor(const std::string& address) {
    const auto components = URLComponents::parse(address);
    if (!components) return failure("Invalid payment response");
    for (const auto& item :
         components->queryItems().value_or(std::vector<platform::URLQueryItem>())) {
        if (item.name != "response") continue;
        if (!item.value) break;
        if (auto payload = payloadOf(*item.value)) return *payload;
        const auto bytes = platform::base64Decode(*item.value);
        const auto payload = bytes ? payloadOf(*bytes) : std::nullopt;
        return payload ? *payload : failure("Invalid response format");
    }
    return failure("Invalid payment response");
}

std::string addressWith(std::string_view response) {
    auto components = *URLComponents::parse(Services::responseUrl);
    components.setQueryItems({{"response", std::string(response)}});
    return *components.string();
}

// The first byte says whether the rest is the query as it stands, a response, or one in base64.
void check(std::string_view input) {
    if (input.empty()) return;
    const std::string_view text = input.substr(1);
    const std::string start = std::string(Services::responseUrl) + "?response=";
    const std::string address = input[0] == 'r'   ? addressWith(text)
                                : input[0] == 'b' ? addressWith(platform::base64Encode(text))
                                                  : start + std::string(text);
    CheckoutTestKit kit;
    kit.openCheckout();
    kit.page().navigate(address);
    kit.settle();
    const std::string seen = platform::URL::fromEngine(address)->absoluteString();
    require(kit.responses().size() == 1, "a redirect is reported once");
    require(kit.lastResponse() == expectedFor(seen), "the host gets what the page answered");
    require(!kit.isScreenOpen(), "a report ends the checkout");
    require(kit.platform().web().pages().empty(), "a checkout that ended leaves no page");
    require(kit.platform().scheduler().pendingCount() == 0, "and nothing to run");
}

const Target target("redirect", check);

}  // namespace
}  // namespace zorvik::fuzz
