#include "platform/foundation/URIReference.h"

#include <algorithm>
#include <cstddef>

namespace zorvik::platform::uri {

namespace {

bool isLetter(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

bool isOneOf(char character, std::string_view characters) {
    return characters.find(character) != std::string_view::npos;
}

bool isScheme(std::string_view text) {
    return !text.empty() && isLetter(text.front()) &&
           std::all_of(text.begin(), text.end(), [](char character) {
               return isLetter(character) || isDigit(character) || isOneOf(character, "+-.");
           });
}

// Only characters that may stand there, and whole percent-escapes.
bool isWellFormed(std::string_view text, Place place) {
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (text[index] == '%') {
            if (text.size() - index < 3 || !isHexDigit(text[index + 1]) ||
                !isHexDigit(text[index + 2])) {
                return false;
            }
            index += 2;
        } else if (!mayStand(text[index], place)) {
            return false;
        }
    }
    return true;
}

bool isIPv4Address(std::string_view text) {
    for (int octets = 1;; ++octets) {
        const std::string_view octet = text.substr(0, text.find('.'));
        const bool isNumber =
            !octet.empty() && octet.size() <= 3 && std::all_of(octet.begin(), octet.end(), isDigit);
        if (!isNumber || (octet.size() > 1 && octet.front() == '0')) return false;
        if (octet.size() == 3 && octet > "255") return false;
        text.remove_prefix(octet.size());
        if (text.empty()) return octets == 4;
        text.remove_prefix(1);
    }
}

// The 16-bit groups of one side of "::" (an IPv4 address at the very end counts for two); nullopt
// when it is malformed.
std::optional<int> countGroups(std::string_view text, bool mayEndInIPv4) {
    if (text.empty()) return 0;
    for (int count = 1;; ++count) {
        const std::size_t colon = text.find(':');
        const std::string_view group = text.substr(0, colon);
        if (colon == std::string_view::npos && mayEndInIPv4 && isIPv4Address(group)) {
            return count + 1;
        }
        if (group.empty() || group.size() > 4 ||
            !std::all_of(group.begin(), group.end(), isHexDigit)) {
            return std::nullopt;
        }
        if (colon == std::string_view::npos) return count;
        text.remove_prefix(colon + 1);
    }
}

bool isIPv6Address(std::string_view text) {
    const std::size_t gap = text.find("::");
    if (gap == std::string_view::npos) return countGroups(text, true) == 8;
    const std::optional<int> before = countGroups(text.substr(0, gap), false);
    const std::optional<int> after = countGroups(text.substr(gap + 2), true);
    return before && after && *before + *after <= 7;
}

// "v", hexadecimal digits, ".", characters
bool isFutureAddress(std::string_view text) {
    if (text.empty() || !isOneOf(text.front(), "vV")) return false;
    const std::size_t point = text.find('.');
    if (point == std::string_view::npos || point < 2 || point + 1 == text.size()) return false;
    const std::string_view version = text.substr(1, point - 1);
    const std::string_view address = text.substr(point + 1);
    return std::all_of(version.begin(), version.end(), isHexDigit) &&
           std::all_of(address.begin(), address.end(),
                       [](char character) { return mayStand(character, Place::user); });
}

struct Authority {
    std::optional<std::string_view> user;
    std::string_view host;  // with its brackets
    std::optional<std::string_view> port;
};

Authority splitAuthority(std::string_view text) {
    Authority result;
    if (const std::size_t at = text.rfind('@'); at != std::string_view::npos) {
        result.user = text.substr(0, at);
        text.remove_prefix(at + 1);
    }
    // The colons of an address in brackets are its own.
    const std::size_t bracket = text.starts_with('[') ? text.find(']') : std::string_view::npos;
    const std::size_t colon = text.find(':', bracket == std::string_view::npos ? 0 : bracket);
    result.host = text.substr(0, colon);
    if (colon != std::string_view::npos) result.port = text.substr(colon + 1);
    return result;
}

bool isValidAuthority(std::string_view text) {
    const Authority authority = splitAuthority(text);
    if (authority.user && !isWellFormed(*authority.user, Place::user)) return false;
    if (authority.port && !std::all_of(authority.port->begin(), authority.port->end(), isDigit)) {
        return false;
    }
    if (!authority.host.starts_with('[')) return isWellFormed(authority.host, Place::host);
    if (authority.host.size() < 2 || !authority.host.ends_with(']')) return false;
    const std::string_view address = authority.host.substr(1, authority.host.size() - 2);
    return isIPv6Address(address) || isFutureAddress(address);
}

}  // namespace

Parts split(std::string_view text) {
    Parts parts;
    if (const std::size_t hash = text.find('#'); hash != std::string_view::npos) {
        parts.fragment = text.substr(hash + 1);
        text = text.substr(0, hash);
    }
    if (const std::size_t mark = text.find('?'); mark != std::string_view::npos) {
        parts.query = text.substr(mark + 1);
        text = text.substr(0, mark);
    }
    if (const std::size_t colon = text.find(':');
        colon != std::string_view::npos && isScheme(text.substr(0, colon))) {
        parts.scheme = text.substr(0, colon);
        text.remove_prefix(colon + 1);
    }
    if (text.starts_with("//")) {
        const std::size_t slash = text.find('/', 2);
        parts.authority = text.substr(2, slash == std::string_view::npos ? slash : slash - 2);
        text.remove_prefix(2 + parts.authority->size());
    }
    parts.path = text;
    return parts;
}

bool isValid(const Parts& parts) {
    if (parts.authority && !isValidAuthority(*parts.authority)) return false;
    if (!isWellFormed(parts.path, Place::path)) return false;
    if (parts.query && !isWellFormed(*parts.query, Place::query)) return false;
    if (parts.fragment && !isWellFormed(*parts.fragment, Place::fragment)) return false;
    // A colon in the first segment of a relative path would read as the end of a scheme.
    const std::string_view firstSegment = parts.path.substr(0, parts.path.find('/'));
    return parts.scheme || parts.authority || firstSegment.find(':') == std::string_view::npos;
}

std::string_view host(std::string_view authority) {
    std::string_view result = splitAuthority(authority).host;
    if (result.starts_with('[') && result.ends_with(']')) {
        result = result.substr(1, result.size() - 2);
    }
    return result;
}

bool mayStand(char character, Place place) {
    const bool isEverywhere =
        isLetter(character) || isDigit(character) || isOneOf(character, "-._~!$&'()*+,;=");
    if (isEverywhere) return true;
    switch (place) {
        case Place::user:
            return character == ':';
        case Place::host:
            return false;
        case Place::path:
            return isOneOf(character, ":@/");
        case Place::query:
        case Place::fragment:
            return isOneOf(character, ":@/?");
    }
    return false;
}

bool isHexDigit(char character) {
    return isDigit(character) || (character >= 'a' && character <= 'f') ||
           (character >= 'A' && character <= 'F');
}

void appendEscaped(std::string& text, char character) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned char>(character);
    text.push_back('%');
    text.push_back(digits[byte >> 4]);
    text.push_back(digits[byte & 0xF]);
}

}  // namespace zorvik::platform::uri
