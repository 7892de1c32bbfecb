#pragma once

#include <optional>
#include <string>
#include <string_view>

// The grammar of RFC 3986, shared by URL and URLComponents and private to this folder.
namespace zorvik::platform::uri {

// The parts of a text by its delimiters alone; views into it. A scheme only counts when it is
// well-formed, else its text is the beginning of the path.
struct Parts {
    std::optional<std::string_view> scheme;
    std::optional<std::string_view> authority;
    std::string_view path;
    std::optional<std::string_view> query;
    std::optional<std::string_view> fragment;
};

// Where a character may stand unescaped.
enum class Place { user, host, path, query, fragment };

Parts split(std::string_view text);
// Whether the parts are those of a URI reference, strictly.
bool isValid(const Parts& parts);
// The host of an authority, without user, port or brackets.
std::string_view host(std::string_view authority);

bool mayStand(char character, Place place);
bool isHexDigit(char character);
// Appends "%" and two upper-case digits.
void appendEscaped(std::string& text, char character);

}  // namespace zorvik::platform::uri
