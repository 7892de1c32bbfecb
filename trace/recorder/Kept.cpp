#include "trace/recorder/Kept.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/foundation/Data.h"
#include "platform/foundation/Shortened.h"

namespace zorvik::trace {

using platform::Array;
using platform::Dictionary;
using platform::Value;

namespace {

constexpr int mostDepth = 32;
constexpr std::size_t mostElements = 200;
constexpr std::size_t titleBytes = 240;

// Where a text of UTF-8 may be cut at or before this place.
std::size_t placeToCut(const std::string& text, std::size_t place) {
    while (place > 0 && (static_cast<unsigned char>(text[place]) & 0xC0U) == 0x80U)
        --place;
    return place;
}

}  // namespace

std::string keptText(const std::string& text, std::size_t most) {
    // Shortened before it is cut: half a token would not be known as one.
    std::string kept = platform::shortened(platform::readableText(text));
    if (kept.size() <= most) return kept;
    const std::size_t place = placeToCut(kept, most);
    const std::size_t missing = kept.size() - place;
    kept.resize(place);
    return kept + "… (" + std::to_string(missing) + " bytes more)";
}

std::string keptTitle(const std::string& text) {
    std::string kept = platform::shortened(platform::readableText(text));
    if (kept.size() > titleBytes) {
        kept.resize(placeToCut(kept, titleBytes));
        kept += "…";
    }
    std::ranges::replace(kept, '\n', ' ');
    return kept;
}

Value keptValue(const Value& value, int depth) {
    if (const std::string* text = value.string()) return keptText(*text);
    if (const double* number = value.number(); number && !std::isfinite(*number)) {
        return platform::description(value);
    }
    if (!value.array() && !value.dictionary()) {
        // A telephone number may come as a number.
        const std::string digits = platform::description(value);
        std::string kept = platform::shortened(digits);
        return kept == digits ? value : Value(std::move(kept));
    }
    if (depth == mostDepth) return "…";
    if (const Array* array = value.array()) {
        Array copy;
        for (const Value& element : *array) {
            if (copy.size() == mostElements) {
                copy.emplace_back("… (" + std::to_string(array->size() - mostElements) + " more)");
                break;
            }
            copy.push_back(keptValue(element, depth + 1));
        }
        return copy;
    }
    Dictionary copy;
    for (const auto& [key, element] : *value.dictionary()) {
        if (copy.size() == mostElements) {
            copy["…"] = std::to_string(value.dictionary()->size() - mostElements) + " more";
            break;
        }
        copy[keptTitle(key)] = keptValue(element, depth + 1);
    }
    return copy;
}

std::size_t sizeOf(const Value& value) {
    std::size_t size = sizeof(Value);
    if (const std::string* text = value.string()) return size + text->size();
    if (const Array* array = value.array()) {
        for (const Value& element : *array)
            size += sizeOf(element);
    }
    if (const Dictionary* dictionary = value.dictionary()) {
        for (const auto& [key, element] : *dictionary)
            size += 2 * sizeof(std::string) + key.size() + sizeOf(element);
    }
    return size;
}

}  // namespace zorvik::trace
