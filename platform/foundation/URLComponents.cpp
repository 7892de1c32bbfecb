#include "platform/foundation/URLComponents.h"

#include "platform/foundation/Data.h"
#include "platform/foundation/URIReference.h"

namespace zorvik::platform {

namespace {

std::optional<std::string> toOwned(const std::optional<std::string_view>& part) {
    if (!part) return std::nullopt;
    return std::string(*part);
}

char valueOfHexDigit(char digit) {
    if (digit <= '9') return static_cast<char>(digit - '0');
    return static_cast<char>((digit | 0x20) - 'a' + 10);
}

// The text comes from a parsed reference: its escapes are whole.
std::string decoded(std::string_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (text[index] != '%') {
            bytes.push_back(text[index]);
            continue;
        }
        bytes.push_back(static_cast<char>(valueOfHexDigit(text[index + 1]) * 16 +
                                          valueOfHexDigit(text[index + 2])));
        index += 2;
    }
    return isValidUtf8(bytes) ? bytes : std::string(text);
}

void appendEncoded(std::string& text, std::string_view bytes) {
    for (const char character : bytes) {
        const bool isSeparator = character == '&' || character == '=';
        if (!isSeparator && uri::mayStand(character, uri::Place::query)) {
            text.push_back(character);
        } else {
            uri::appendEscaped(text, character);
        }
    }
}

URLQueryItem parseItem(std::string_view text) {
    const std::size_t equals = text.find('=');
    URLQueryItem item{decoded(text.substr(0, equals)), std::nullopt};
    if (equals != std::string_view::npos) item.value = decoded(text.substr(equals + 1));
    return item;
}

}  // namespace

std::string description(const std::vector<URLQueryItem>& items) {
    std::string result = "[";
    for (const URLQueryItem& item : items) {
        if (result.size() > 1) result += ", ";
        result += item.name;
        if (item.value) result.append("=").append(*item.value);
    }
    return result + "]";
}

std::optional<URLComponents> URLComponents::parse(std::string_view text) {
    const uri::Parts parts = uri::split(text);
    if (!uri::isValid(parts)) return std::nullopt;
    URLComponents components;
    components.scheme_ = toOwned(parts.scheme);
    components.authority_ = toOwned(parts.authority);
    components.path_ = std::string(parts.path);
    components.query_ = toOwned(parts.query);
    components.fragment_ = toOwned(parts.fragment);
    return components;
}

std::optional<std::string> URLComponents::host() const {
    if (!authority_) return std::nullopt;
    return std::string(uri::host(*authority_));
}

std::optional<std::vector<URLQueryItem>> URLComponents::queryItems() const {
    if (!query_) return std::nullopt;
    std::vector<URLQueryItem> items;
    if (query_->empty()) return items;
    std::string_view rest = *query_;
    for (;;) {
        const std::size_t end = rest.find('&');
        items.push_back(parseItem(rest.substr(0, end)));
        if (end == std::string_view::npos) return items;
        rest.remove_prefix(end + 1);
    }
}

void URLComponents::setQueryItems(const std::vector<URLQueryItem>& items) {
    std::string query;
    bool isFirst = true;
    for (const URLQueryItem& item : items) {
        if (!isFirst) query.push_back('&');
        isFirst = false;
        appendEncoded(query, item.name);
        if (!item.value) continue;
        query.push_back('=');
        appendEncoded(query, *item.value);
    }
    query_ = std::move(query);
}

std::optional<std::string> URLComponents::string() const {
    if (!authority_ && path_.starts_with("//")) return std::nullopt;
    std::string text;
    if (scheme_) text.append(*scheme_).push_back(':');
    if (authority_) text.append("//").append(*authority_);
    text += path_;
    if (query_) text.append("?").append(*query_);
    if (fragment_) text.append("#").append(*fragment_);
    return text;
}

}  // namespace zorvik::platform
