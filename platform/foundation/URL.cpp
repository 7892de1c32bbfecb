#include "platform/foundation/URL.h"

#include "platform/foundation/URIReference.h"

namespace zorvik::platform {

namespace {

// "%" stays even where no escape follows: what the page said is not to be changed.
void appendRepaired(std::string& text, std::string_view part, uri::Place place) {
    for (const char character : part) {
        if (character == '%' || uri::mayStand(character, place)) {
            text.push_back(character);
        } else {
            uri::appendEscaped(text, character);
        }
    }
}

// An authority keeps its delimiters where they stand.
void appendRepairedAuthority(std::string& text, std::string_view authority) {
    for (const char character : authority) {
        if (character == '%' || character == '@' || character == '[' || character == ']' ||
            uri::mayStand(character, uri::Place::user)) {
            text.push_back(character);
        } else {
            uri::appendEscaped(text, character);
        }
    }
}

}  // namespace

std::optional<URL> URL::parse(std::string_view text) {
    if (text.empty() || !uri::isValid(uri::split(text))) return std::nullopt;
    return URL(std::string(text));
}

std::optional<URL> URL::fromEngine(std::string_view text) {
    if (text.empty()) return std::nullopt;
    const uri::Parts parts = uri::split(text);
    std::string repaired;
    repaired.reserve(text.size());
    if (parts.scheme) repaired.append(*parts.scheme).push_back(':');
    if (parts.authority) {
        repaired += "//";
        appendRepairedAuthority(repaired, *parts.authority);
    }
    appendRepaired(repaired, parts.path, uri::Place::path);
    if (parts.query) {
        repaired.push_back('?');
        appendRepaired(repaired, *parts.query, uri::Place::query);
    }
    if (parts.fragment) {
        repaired.push_back('#');
        appendRepaired(repaired, *parts.fragment, uri::Place::fragment);
    }
    return URL(std::move(repaired));
}

std::optional<std::string> URL::scheme() const {
    const uri::Parts parts = uri::split(text_);
    if (!parts.scheme) return std::nullopt;
    return std::string(*parts.scheme);
}

std::optional<std::string> URL::host() const {
    const uri::Parts parts = uri::split(text_);
    if (!parts.authority) return std::nullopt;
    return std::string(uri::host(*parts.authority));
}

}  // namespace zorvik::platform
