#include "platform/foundation/Value.h"

#include <charconv>
#include <cstdio>

namespace zorvik::platform {

Value::Value(const Value&) = default;
Value::Value(Value&&) noexcept = default;
Value& Value::operator=(const Value&) = default;
Value& Value::operator=(Value&&) noexcept = default;
Value::~Value() = default;

namespace {

// One line whatever the text holds.
std::string quoted(std::string_view text) {
    std::string result = "\"";
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (character == '"' || character == '\\') {
            result.push_back('\\');
            result.push_back(character);
        } else if (character == '\n') {
            result += "\\n";
        } else if (character == '\r') {
            result += "\\r";
        } else if (character == '\t') {
            result += "\\t";
        } else if (byte < 0x20 || byte == 0x7F) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u{%X}", static_cast<unsigned>(byte));
            result += escape;
        } else {
            result.push_back(character);
        }
    }
    result.push_back('"');
    return result;
}

std::string nested(const Value& value) {
    return value.string() != nullptr ? quoted(*value.string()) : description(value);
}

std::string description(const Array& array) {
    std::string result = "[";
    for (const Value& element : array) {
        if (result.size() > 1) result += ", ";
        result += nested(element);
    }
    return result + "]";
}

}  // namespace

std::string description(const Value& value) {
    if (const bool* boolean = value.boolean()) return description(*boolean);
    if (const std::int64_t* integer = value.integer()) return std::to_string(*integer);
    if (const std::uint64_t* integer = value.unsignedInteger()) return std::to_string(*integer);
    if (const double* number = value.number()) return description(*number);
    if (const std::string* text = value.string()) return *text;
    if (const Array* array = value.array()) return description(*array);
    if (const Dictionary* dictionary = value.dictionary()) return description(*dictionary);
    return "null";
}

std::string description(const Dictionary& dictionary) {
    if (dictionary.empty()) return "[:]";
    std::string result = "[";
    for (const auto& [key, value] : dictionary) {
        if (result.size() > 1) result += ", ";
        result += quoted(key) + ": " + nested(value);
    }
    return result + "]";
}

std::string description(double number) {
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, number).ptr;
    std::string result(text, end);
    // A whole number keeps its point, so that it does not read as an integer.
    if (result.find_first_not_of("-0123456789") == std::string::npos) result += ".0";
    return result;
}

}  // namespace zorvik::platform
