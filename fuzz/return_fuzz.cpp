#include <map>
#include <string>

#include "fuzz/Target.h"
#include "platform/foundation/URL.h"
#include "platform/foundation/URLComponents.h"
#include "testkit/CheckoutTestKit.h"

namespace zorvik::fuzz {

using platform::Dictionary;
using testkit::CheckoutTestKit;
using Services = testkit::ScriptedCoreServices;

namespace {

using Data = std::map<std::string, std::string>;

std::string transactionIdOf(const Data& data) {
    for (const char* key :
         {"tr", "txnId", "transactionId", "txn_id", "transaction_id", "zorvikTransactionId",
          "pspTransactionId", "upiTransactionId", "merchantTransactionId"}) {
        if (data.contains(key)) return data.at(key);
    }
    return "";
}

Dictionary failure(const std::string& reason, const std::string& transactionId) {
    return {{"error", reason},
            {"order_id", CheckoutTestKit::orderId},
            {"zorvik_order_id", CheckoutTestKit::orderId},
            {"token", CheckoutTestKit::orderToken()},
            {"subMerchantId", CheckoutTestKit::subMerchantId},
            {"transaction_id", transactionId},
            {"zorvik_transaction_id", transactionId}};
}

std::string lowercased(std::string text) {
    for (char& character : text)
        if (character >= 'A' && character <= 'Z') character = static_cast<char>(character + 32);
    return text;
}

void checkSuccess(const CheckoutTestKit& kit, const std::string& transactionId) {
    int enquiries = 0;
    for (const auto& call : kit.core().calls()) {
        if (call.operation != "getTransactionEnquiry") continue;
        ++enquiries;
        require(call.arguments.at("transactionId") == platform::Value(transactionId),
                "the enquiry is for the app's transaction");
    }
    require(enquiries == 1, "an app's success is enquired about once");
    require(kit.lastResponse() == Dictionary{{"payment_status", "SUCCESS"}},
            "the enquiry decides, not the app");
}

void check(std::string_view input) {
    const std::string address = std::string(Services::returnScheme) + ':' + std::string(input);
    // One that holds a redirect is that before it is a return.
    if (address.find(std::string(Services::responseUrl) + "?response=") != std::string::npos)
        return;
    CheckoutTestKit kit;
    kit.openCheckout();
    kit.page().navigate(address);
    kit.settle();
    const std::string seen = platform::URL::fromEngine(address)->absoluteString();
    const auto components = platform::URLComponents::parse(seen);
    if (!components) {
        require(kit.responses().empty() && kit.isScreenOpen(),
                "an unreadable address ends nothing");
        return;
    }
    require(kit.responses().size() == 1, "a return is reported once");
    require(!kit.isScreenOpen(), "a report ends the checkout");
    Data data;
    for (const auto& item :
         components->queryItems().value_or(std::vector<platform::URLQueryItem>())) {
        if (item.value) data[item.name] = *item.value;
        if (!item.value) data.erase(item.name);
    }
    const std::string transactionId = transactionIdOf(data);
    const auto given = data.find("status");
    const std::string status = given == data.end() ? "" : lowercased(given->second);
    if (status == "success" ||
        (given == data.end() && data.contains("tr") && !data["tr"].empty())) {
        checkSuccess(kit, transactionId);
        return;
    }
    std::string reason = "Unknown payment status";
    if (status == "cancelled") reason = "Payment cancelled by user";
    if (status == "failure") {
        reason = data.contains("reason")    ? data["reason"]
                 : data.contains("message") ? data["message"]
                                            : "Payment failed";
    }
    require(kit.lastResponse() == failure(reason, transactionId), "the host gets the app's word");
}

const Target target("return", check);

}  // namespace
}  // namespace zorvik::fuzz
