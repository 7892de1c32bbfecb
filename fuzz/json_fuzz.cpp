#include <cstdlib>

#include "fuzz/Target.h"
#include "platform/foundation/Data.h"
#include "platform/foundation/JSONSerialization.h"

namespace zorvik::fuzz {

using namespace zorvik::platform;

namespace {

// Of a text that is JSON.
void checkNumber(std::string_view input, const Value& value) {
    const auto number = Value::parseNumber(input);
    const std::string_view digits = "0123456789";
    const bool isAlone = !input.empty() &&
                         (input.front() == '-' || digits.find(input.front()) != digits.npos) &&
                         digits.find(input.back()) != digits.npos;
    require(number.has_value() == isAlone, "a text that begins and ends as a number is one");
    if (!number) return;
    require(value == *number, "a number is read alike alone and in a text");
    if (const ExactNumber* exact = number->exactNumber()) {
        require(exact->text() == input, "what fits no type is kept as written");
    } else if (const double* nearest = number->number()) {
        require(*nearest == std::strtod(std::string(input).c_str(), nullptr),
                "a double is the nearest one");
    }
}

void check(std::string_view input) {
    const auto value =
        JSONSerialization::jsonObject(input, JSONSerialization::ReadingOptions::fragmentsAllowed);
    const auto absent = JSONSerialization::member(input, "\xFF");
    if (!value) {
        require(!absent, "member() accepts no text that jsonObject() refuses");
        require(!Value::parseNumber(input), "every number is a text");
        return;
    }
    require(isValidUtf8(input), "only UTF-8 is accepted");
    checkNumber(input, value.value());

    const auto text = JSONSerialization::data(value.value());
    require(text.isSuccess(), "what was read can be written");
    const auto again = JSONSerialization::jsonObject(
        text.value(), JSONSerialization::ReadingOptions::fragmentsAllowed);
    require(again && again.value() == value.value(), "what was written reads back the same");
    require(JSONSerialization::data(again.value()).value() == text.value(),
            "what reads back the same is written the same");

    const Dictionary* dictionary = value.value().dictionary();
    require(absent.isSuccess() == (dictionary != nullptr), "member() wants an object");
    if (dictionary == nullptr) return;
    require(!absent.value(), "an absent member is absent");
    for (const auto& [key, expected] : *dictionary) {
        const auto member = JSONSerialization::member(input, key);
        require(member && member.value() == expected, "member() agrees with jsonObject()");
        if (dictionary->size() > 8) break;  // long objects would only slow the search down
    }
}

const Target target("json", check);

}  // namespace
}  // namespace zorvik::fuzz
