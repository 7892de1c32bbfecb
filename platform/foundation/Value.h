#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/foundation/Export.h"

namespace zorvik::platform {

class Value;
using Array = std::vector<Value>;
using Dictionary = std::map<std::string, Value, std::less<>>;

// A number that neither an integer nor a double holds exactly, kept as it was written:
// "123456789012345678901", "1e400". Equal when written alike. Comes from Value::parseNumber alone;
// zero once moved from.
class ZORVIK_API ExactNumber {
  public:
    ExactNumber(const ExactNumber&) = default;
    ExactNumber(ExactNumber&& other) noexcept { text_.swap(other.text_); }
    ExactNumber& operator=(ExactNumber other) noexcept {
        text_.swap(other.text_);
        return *this;
    }

    // A JSON number.
    const std::string& text() const { return text_; }
    // Written without a fraction and without an exponent.
    bool isInteger() const { return text_.find_first_of(".eE") == std::string::npos; }

    friend bool operator==(const ExactNumber&, const ExactNumber&) = default;

  private:
    friend class Value;
    explicit ExactNumber(std::string_view text) : text_(text) {}

    std::string text_ = "0";
};

// A value of any JSON type. Copied on assignment; any thread.
// An integer is held signed when it fits 64 signed bits, else unsigned, so equal numbers compare
// equal; numbers of different kinds never do.
class ZORVIK_API Value {
  public:
    Value() = default;
    // Out of line: inlined, g++ 12 takes the moved variant for uninitialised.
    Value(const Value&);
    Value(Value&&) noexcept;
    Value& operator=(const Value&);
    Value& operator=(Value&&) noexcept;
    ~Value();
    Value(std::nullptr_t) {}
    Value(bool boolean) : content_(boolean) {}
    template <std::integral T>
    requires(!std::same_as<T, bool>) Value(T integer) : content_(canonical(integer)) {}
    Value(double number) : content_(number) {}
    Value(const char* text) : content_(std::string(text)) {}
    Value(std::string_view text) : content_(std::string(text)) {}
    Value(std::string text) : content_(std::move(text)) {}
    Value(Array array) : content_(std::move(array)) {}
    Value(Dictionary dictionary) : content_(std::move(dictionary)) {}

    // The number a JSON number's text denotes, never changed: an integer when the text is one of up
    // to 64 bits, a double when its description denotes the same number, else an ExactNumber.
    // nullopt for any other text.
    static std::optional<Value> parseNumber(std::string_view text);

    bool isNull() const { return std::holds_alternative<std::nullptr_t>(content_); }
    // The content when it has this type, else nullptr; valid until the value changes.
    const bool* boolean() const { return std::get_if<bool>(&content_); }
    const std::int64_t* integer() const { return std::get_if<std::int64_t>(&content_); }
    const std::uint64_t* unsignedInteger() const { return std::get_if<std::uint64_t>(&content_); }
    const double* number() const { return std::get_if<double>(&content_); }
    const ExactNumber* exactNumber() const { return std::get_if<ExactNumber>(&content_); }
    const std::string* string() const { return std::get_if<std::string>(&content_); }
    const Array* array() const { return std::get_if<Array>(&content_); }
    const Dictionary* dictionary() const { return std::get_if<Dictionary>(&content_); }

    friend bool operator==(const Value&, const Value&) = default;

  private:
    using Content = std::variant<std::nullptr_t, bool, std::int64_t, std::uint64_t, double,
                                 ExactNumber, std::string, Array, Dictionary>;

    template <std::integral T>
    static Content canonical(T integer) {
        if constexpr (std::signed_integral<T>) {
            return static_cast<std::int64_t>(integer);
        } else {
            const auto wide = static_cast<std::uint64_t>(integer);
            if (wide <= static_cast<std::uint64_t>(INT64_MAX)) {
                return static_cast<std::int64_t>(wide);
            }
            return wide;
        }
    }

    Content content_ = nullptr;
};

// Readable one-line forms for console lines: a string unchanged at the top and quoted inside a
// container, ["key": value, ...] for a dictionary ([:] when empty), [a, b] for an array, true and
// false, numbers in their shortest form that reads back the same (a whole double as 5.0), an
// ExactNumber as it was written.
ZORVIK_API std::string description(const Value& value);
ZORVIK_API std::string description(const Dictionary& dictionary);
ZORVIK_API std::string description(double number);
inline const char* description(bool boolean) {
    return boolean ? "true" : "false";
}

}  // namespace zorvik::platform
