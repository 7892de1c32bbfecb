#include <algorithm>

#include "fuzz/Target.h"
#include "platform/foundation/Data.h"
#include "platform/foundation/URL.h"
#include "platform/foundation/URLComponents.h"

namespace zorvik::fuzz {

using namespace zorvik::platform;

namespace {

bool isHexDigit(char character) {
    return std::string_view("0123456789abcdefABCDEF").find(character) != std::string_view::npos;
}

// Whether every character is one RFC 3986 knows and every "%" begins an escape.
bool satisfiesCharacterRules(std::string_view text) {
    constexpr std::string_view allowed =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._~:/?#[]@!$&'()*+,;=%";
    if (text.find_first_not_of(allowed) != std::string_view::npos) return false;
    for (std::size_t at = text.find('%'); at != std::string_view::npos;
         at = text.find('%', at + 1)) {
        if (text.size() - at < 3 || !isHexDigit(text[at + 1]) || !isHexDigit(text[at + 2])) {
            return false;
        }
    }
    return std::count(text.begin(), text.end(), '#') <= 1;
}

void checkComponents(URLComponents components, std::string_view input) {
    require(components.string() == input, "a parsed text composes to itself");
    const auto items = components.queryItems();
    require(items.has_value() == (input.substr(0, input.find('#')).find('?') != input.npos),
            "a query is what follows the question mark");
    if (!items) return;
    components.setQueryItems(*items);
    const auto text = components.string();
    require(text && URLComponents::parse(*text), "a composed text parses");
    require(URLComponents::parse(*text)->queryItems() == items, "items survive being composed");
}

// Any bytes at all can be a query item.
void checkItem(std::string_view input) {
    auto components = *URLComponents::parse("https://shop.example/a#b");
    const std::string name(input.substr(0, input.size() / 2));
    const std::string value(input.substr(input.size() / 2));
    components.setQueryItems({{name, value}});
    const auto composed = URLComponents::parse(*components.string());
    require(composed.has_value(), "a composed text parses");
    const auto items = *composed->queryItems();
    require(items.size() == 1 && items[0].value.has_value(), "an item stays one item");
    require(!isValidUtf8(name) || items[0].name == name, "a name reads back the same");
    require(!isValidUtf8(value) || items[0].value == value, "a value reads back the same");
}

void check(std::string_view input) {
    const auto url = URL::parse(input);
    const auto components = URLComponents::parse(input);
    require(url.has_value() == (components.has_value() && !input.empty()),
            "both parsers accept the same texts");
    if (url) {
        require(satisfiesCharacterRules(input), "a URL keeps the character rules");
        require(url->host() == components->host(), "both parsers find the same host");
        require(url->scheme() == components->scheme(), "both parsers find the same scheme");
    }
    if (components) checkComponents(*components, input);

    const auto repaired = URL::fromEngine(input);
    require(repaired.has_value() == !input.empty(), "only the empty text is no engine's address");
    if (repaired) {
        require(URL::fromEngine(repaired->absoluteString()) == repaired, "a repair is complete");
        require(!url || repaired == url, "a URL needs no repair");
    }

    checkItem(input);
}

const Target target("url", check);

}  // namespace
}  // namespace zorvik::fuzz
