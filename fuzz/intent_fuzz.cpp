#include <algorithm>
#include <string>

#include "fuzz/Target.h"
#include "platform/foundation/JSONSerialization.h"
#include "platform/foundation/URL.h"
#include "testkit/CheckoutTestKit.h"

namespace zorvik::fuzz {

using platform::DefaultsValue;
using platform::Dictionary;
using platform::JSONSerialization;
using platform::ScriptValue;
using testkit::CheckoutTestKit;

namespace {

// What the page's object says; nullptr for what is none of strings.
const Dictionary* fieldsOf(const platform::Result<platform::Value>& parsed) {
    const Dictionary* fields = parsed ? parsed.value().dictionary() : nullptr;
    if (fields == nullptr) return nullptr;
    const auto isString = [](const auto& field) { return field.second.string() != nullptr; };
    return std::ranges::all_of(*fields, isString) ? fields : nullptr;
}

std::string transactionIdOf(const Dictionary& fields) {
    for (const char* key :
         {"transactionId", "tr", "txnId", "txn_id", "transaction_id", "zorvikTransactionId",
          "pspTransactionId", "upiTransactionId", "merchantTransactionId"}) {
        if (fields.contains(key)) return *fields.at(key).string();
    }
    return "";
}

Dictionary answer(const char* status, const char* message) {
    return {{"sdk_upi_intent_response", status}, {"sdk_transaction_enquiry_response", message}};
}

void check(std::string_view input) {
    CheckoutTestKit kit;
    kit.openCheckout();
    kit.page().post("openUpiIntent", {ScriptValue::Type::string, std::string(input)});
    kit.settle();

    const auto events = kit.events();
    const auto started = [](const auto& event) { return event.name == "UPI_INTENT_STARTED"; };
    const auto event = std::ranges::find_if(events, started);
    require(std::ranges::count_if(events, started) == 1, "a message is logged once");
    require(*event->additionalData.at("parameters").string() == input, "as the page wrote it");

    const auto parsed =
        JSONSerialization::jsonObject(input, JSONSerialization::ReadingOptions::fragmentsAllowed);
    const Dictionary* fields = fieldsOf(parsed);
    require(*event->additionalData.at("transactionId").string() ==
                (fields == nullptr ? "" : transactionIdOf(*fields)),
            "with the id of the first key present");

    const auto& opened = kit.platform().application().openedUrls();
    const auto& record = kit.platform().defaults().entries();
    const auto& answers = kit.messagesToPage();
    if (fields == nullptr || !fields->contains("url") || !fields->contains("package_name")) {
        require(opened.empty() && record.empty() && answers.empty(),
                "an unreadable one does nothing");
        return;
    }
    const std::string& url = *fields->at("url").string();
    const auto address = platform::URL::parse(url);
    const std::string scheme = address ? address->scheme().value_or("") : "";
    const bool opens = scheme == "testkit-opens";
    const bool refuses = scheme == "testkit-refuses";
    const auto expectedOpened =
        opens || refuses ? std::vector<std::string>{url} : std::vector<std::string>();
    require(opened == expectedOpened, "the page's address is opened as it stands");
    require(record.size() == (opens ? 3 : 0), "what was opened is recorded, nothing else");
    if (opens) {
        require(answers.empty(), "the page is told of failures alone");
        require(record.at("current_package_name") ==
                        DefaultsValue(*fields->at("package_name").string()) &&
                    record.at("current_transaction_id") == DefaultsValue(transactionIdOf(*fields)),
                "the record is the page's words");
        return;
    }
    const Dictionary expected = !address  ? answer("unavailable", "Invalid UPI URL")
                                : refuses ? answer("unavailable", "Failed to launch UPI app")
                                          : answer("unregistered", "UPI app not installed");
    require(answers.size() == 1 && answers[0] == expected, "the page is told why, once");
}

const Target target("intent", check);

}  // namespace
}  // namespace zorvik::fuzz
