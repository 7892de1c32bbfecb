#include "fuzz/Property.h"
#include "platform/foundation/Data.h"
#include "platform/foundation/JSONSerialization.h"

using namespace zorvik::platform;

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const auto value =
        JSONSerialization::jsonObject(input, JSONSerialization::ReadingOptions::fragmentsAllowed);
    const auto absent = JSONSerialization::member(input, "\xFF");
    if (!value) {
        require(!absent, "member() accepts no text that jsonObject() refuses");
        return 0;
    }
    require(isValidUtf8(input), "only UTF-8 is accepted");

    const auto text = JSONSerialization::data(value.value());
    require(text.isSuccess(), "what was read can be written");
    const auto again = JSONSerialization::jsonObject(
        text.value(), JSONSerialization::ReadingOptions::fragmentsAllowed);
    require(again && again.value() == value.value(), "what was written reads back the same");

    const Dictionary* dictionary = value.value().dictionary();
    require(absent.isSuccess() == (dictionary != nullptr), "member() wants an object");
    if (dictionary == nullptr) return 0;
    require(!absent.value(), "an absent member is absent");
    for (const auto& [key, expected] : *dictionary) {
        const auto member = JSONSerialization::member(input, key);
        require(member && member.value() == expected, "member() agrees with jsonObject()");
        if (dictionary->size() > 8) break;  // long objects would only slow the search down
    }
    return 0;
}
