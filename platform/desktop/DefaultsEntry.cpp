#include "platform/desktop/DefaultsEntry.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "platform/foundation/Data.h"

namespace zorvik::platform::desktop {
namespace {

// The numbers that JSON cannot write are words.
Value numberEntry(double number) {
    if (std::isfinite(number)) return number;
    if (std::isnan(number)) return "nan";
    return number > 0 ? "inf" : "-inf";
}

std::optional<double> numberFrom(const Value& entry) {
    using Limits = std::numeric_limits<double>;
    if (const double* number = entry.number()) return *number;
    if (const std::int64_t* integer = entry.integer()) return static_cast<double>(*integer);
    const std::string* word = entry.string();
    if (word == nullptr) return std::nullopt;
    if (*word == "nan") return Limits::quiet_NaN();
    if (*word == "inf") return Limits::infinity();
    if (*word == "-inf") return -Limits::infinity();
    return std::nullopt;
}

}  // namespace

Value defaultsEntry(const DefaultsValue& value) {
    if (const auto* text = std::get_if<std::string>(&value)) {
        if (isValidUtf8(*text)) return Dictionary{{"string", *text}};
        return Dictionary{{"bytes", base64Encode(*text)}};
    }
    if (const auto* date = std::get_if<Date>(&value)) {
        return Dictionary{{"date", numberEntry(date->secondsSince1970)}};
    }
    if (const auto* number = std::get_if<double>(&value)) {
        return Dictionary{{"number", numberEntry(*number)}};
    }
    return Dictionary{{"boolean", std::get<bool>(value)}};
}

std::optional<DefaultsValue> defaultsValue(const Value& entry) {
    const Dictionary* typed = entry.dictionary();
    if (typed == nullptr || typed->size() != 1) return std::nullopt;
    const auto& [type, content] = *typed->begin();
    if (const std::string* text = content.string(); text != nullptr && type == "string") {
        return *text;
    } else if (text != nullptr && type == "bytes") {
        if (auto bytes = base64Decode(*text)) return *std::move(bytes);
        return std::nullopt;
    }
    if (const bool* boolean = content.boolean(); boolean != nullptr && type == "boolean") {
        return *boolean;
    }
    const auto number = numberFrom(content);
    if (number && type == "date") return Date{*number};
    if (number && type == "number") return *number;
    return std::nullopt;
}

}  // namespace zorvik::platform::desktop
