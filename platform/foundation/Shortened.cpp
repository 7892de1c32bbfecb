#include "platform/foundation/Shortened.h"

#include <algorithm>
#include <array>

namespace zorvik::platform {

namespace {

bool isOneOf(char character, std::string_view characters) {
    return characters.find(character) != std::string_view::npos;
}
bool isDigit(char character) {
    return character >= '0' && character <= '9';
}
bool isAlphanumeric(char character) {
    return isDigit(character) || (character >= 'a' && character <= 'z') ||
           (character >= 'A' && character <= 'Z');
}
bool isOfToken(char character) {
    return isAlphanumeric(character) || isOneOf(character, "+/-_");
}
bool isOfName(char character) {
    return isAlphanumeric(character) || isOneOf(character, "._+-");
}

template <class Predicate>
std::size_t lengthOf(std::string_view text, Predicate isInside) {
    const auto end = std::find_if_not(text.begin(), text.end(), isInside);
    return static_cast<std::size_t>(end - text.begin());
}

// The secret that a text begins with: how long it is, and how much of it may be seen. None: 0.
struct Secret {
    std::size_t length = 0;
    std::size_t shown = 0;
};

// With its padding.
std::size_t base64Length(std::string_view text) {
    const std::size_t length = lengthOf(text, isOfToken);
    return length + lengthOf(text.substr(length), [](char character) { return character == '='; });
}

// Three segments, the second of which is an object in base64.
Secret token(std::string_view text) {
    const std::size_t header = base64Length(text);
    if (header == 0 || !text.substr(header).starts_with('.')) return {};
    const std::string_view claims = text.substr(header + 1);
    const std::size_t length = base64Length(claims);
    constexpr std::string_view afterBrace = "wxyz0123456789+/-_";
    if (length < 12 || claims[0] != 'e' || !isOneOf(claims[1], afterBrace)) return {};
    const std::string_view rest = claims.substr(length);
    const std::size_t signature = rest.starts_with('.') ? base64Length(rest.substr(1)) : 0;
    if (signature == 0) return {};
    return {header + 1 + length + 1 + signature, std::min<std::size_t>(header, 6)};
}

// The name before an "@".
Secret name(std::string_view text) {
    const std::size_t length = lengthOf(text, isOfName);
    const std::string_view rest = text.substr(length);
    if (length == 0 || !(rest.starts_with('@') || rest.starts_with("%40"))) return {};
    return {length, 1};
}

Secret number(std::string_view text) {
    const bool isInternational = text.starts_with('+');
    std::size_t digits = 0;
    std::size_t length = isInternational ? 1 : 0;
    for (std::size_t at = length; at < text.size(); ++at) {
        if (isDigit(text[at])) {
            ++digits;
            length = at + 1;
        } else if (!isInternational || !isOneOf(text[at], " -") || at > length) {
            break;
        }
    }
    return digits < 10 ? Secret() : Secret{length, isInternational ? 3U : 2U};
}

}  // namespace

std::string shortened(std::string_view text) {
    std::string result;
    bool isInsideWord = false;
    while (!text.empty()) {
        // An escape ends a word: what follows it begins one.
        if (text[0] == '%' && text.size() > 2) {
            result.append(text.substr(0, 3));
            text.remove_prefix(3);
            isInsideWord = false;
            continue;
        }
        Secret found;
        if (!isInsideWord) {
            for (const auto reader : std::array{token, name, number}) {
                found = reader(text);
                if (found.length > 0) break;
            }
        }
        if (found.length > 0) {
            result.append(text.substr(0, found.shown)).append("…");
            text.remove_prefix(found.length);
        } else {
            isInsideWord = isAlphanumeric(text[0]) || isOneOf(text[0], "._-");
            result.push_back(text[0]);
            text.remove_prefix(1);
        }
    }
    return result;
}

}  // namespace zorvik::platform
