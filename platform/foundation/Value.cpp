#include "platform/foundation/Value.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <limits>
#include <utility>

namespace zorvik::platform {

Value::Value(const Value&) = default;
Value::Value(Value&&) noexcept = default;
Value& Value::operator=(const Value&) = default;
Value& Value::operator=(Value&&) noexcept = default;
Value::~Value() = default;

namespace {

// A decimal number, 0.DIGITS times ten to the exponent. Without digits it is zero.
struct Decimal {
    bool isNegative = false;
    std::string digits;  // neither the first nor the last is a zero
    std::int64_t exponent = 0;

    friend bool operator==(const Decimal&, const Decimal&) = default;
};

// The parts of a JSON number.
struct NumberText {
    bool isNegative = false;
    std::string_view whole;
    std::string_view fraction;  // empty when there is none
    std::int64_t exponent = 0;
    bool isInteger = true;  // neither a fraction nor an exponent was written

    static std::optional<NumberText> parse(std::string_view text);
    Decimal decimal() const;
};

std::optional<NumberText> NumberText::parse(std::string_view text) {
    const auto take = [&text](char character) {
        const bool isNext = text.starts_with(character);
        if (isNext) text.remove_prefix(1);
        return isNext;
    };
    const auto takeDigits = [&text] {
        const std::string_view digits =
            text.substr(0, std::min(text.find_first_not_of("0123456789"), text.size()));
        text.remove_prefix(digits.size());
        return digits;
    };
    NumberText number;
    number.isNegative = take('-');
    number.whole = takeDigits();
    if (number.whole.empty()) return std::nullopt;
    if (number.whole.size() > 1 && number.whole.front() == '0') return std::nullopt;
    if (take('.')) {
        number.isInteger = false;
        number.fraction = takeDigits();
        if (number.fraction.empty()) return std::nullopt;
    }
    if (take('e') || take('E')) {
        number.isInteger = false;
        const bool isNegative = take('-');
        if (!isNegative) take('+');
        const std::string_view digits = takeDigits();
        if (digits.empty()) return std::nullopt;
        // Far beyond the length of any text and far from overflowing when such a length is added.
        constexpr std::int64_t limit = INT64_MAX / 4;
        std::int64_t exponent = 0;
        const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), exponent);
        if (read.ec != std::errc{}) exponent = limit;
        number.exponent = std::min(exponent, limit) * (isNegative ? -1 : 1);
    }
    if (!text.empty()) return std::nullopt;
    return number;
}

Decimal NumberText::decimal() const {
    std::string digits;
    digits.reserve(whole.size() + fraction.size());
    digits.append(whole).append(fraction);
    const std::size_t first = digits.find_first_not_of('0');
    if (first == std::string::npos) return {isNegative, {}, 0};
    digits.erase(digits.find_last_not_of('0') + 1);
    digits.erase(0, first);
    const auto point = static_cast<std::int64_t>(whole.size()) - static_cast<std::int64_t>(first);
    return {isNegative, std::move(digits), point + exponent};
}

// The double whose printed form denotes the same number as the text, nullopt when there is none.
std::optional<double> exactDouble(std::string_view text, const NumberText& parts) {
    double number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    // No two decimals of up to 15 digits have the same nearest double.
    if (parts.exponent == 0 && text.size() <= std::numeric_limits<double>::digits10) return number;
    const std::string printed = description(number);
    const auto printedParts = NumberText::parse(printed);
    if (!printedParts || printedParts->decimal() != parts.decimal()) return std::nullopt;
    return number;
}

template <class T>
std::optional<T> integerOf(std::string_view text) {
    T integer = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), integer);
    if (read.ec != std::errc{} || read.ptr != text.data() + text.size()) return std::nullopt;
    return integer;
}

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

std::optional<Value> Value::parseNumber(std::string_view text) {
    const auto parts = NumberText::parse(text);
    if (!parts) return std::nullopt;
    if (parts->isInteger) {
        if (const auto integer = integerOf<std::int64_t>(text)) return *integer;
        if (const auto integer = integerOf<std::uint64_t>(text)) return *integer;
    } else if (const auto number = exactDouble(text, *parts)) {
        return *number;
    }
    Value value;
    value.content_ = ExactNumber(text);
    return value;
}

std::string description(const Value& value) {
    if (const bool* boolean = value.boolean()) return description(*boolean);
    if (const std::int64_t* integer = value.integer()) return std::to_string(*integer);
    if (const std::uint64_t* integer = value.unsignedInteger()) return std::to_string(*integer);
    if (const double* number = value.number()) return description(*number);
    if (const ExactNumber* number = value.exactNumber()) return number->text();
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
