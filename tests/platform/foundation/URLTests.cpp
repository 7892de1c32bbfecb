#include "platform/foundation/URL.h"

#include <gtest/gtest.h>

#include <iterator>
#include <sstream>

#include "platform/foundation/URLComponents.h"

namespace zorvik::platform {
namespace {

using Items = std::vector<URLQueryItem>;

std::vector<std::string> words(const char* text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

TEST(URLTest, TellsSchemeAndHostApart) {
    const struct {
        std::string text;
        std::optional<std::string> scheme;
        std::optional<std::string> host;
    } rows[] = {
        {"HTTPS://user:pw@Shop.Example:8443/p?q#f", "HTTPS", "Shop.Example"},
        {"mailto:a@b.example", "mailto", std::nullopt},
        {"//shop.example:/x", std::nullopt, "shop.example"},
        {"http://[2001:db8::1]:80/", "http", "2001:db8::1"},
    };
    for (const auto& row : rows) {
        const auto url = URL::parse(row.text);
        ASSERT_TRUE(url) << row.text;
        EXPECT_EQ(url->absoluteString(), row.text);
        EXPECT_EQ(url->scheme(), row.scheme) << row.text;
        EXPECT_EQ(url->host(), row.host) << row.text;
        EXPECT_EQ(URLComponents::parse(row.text)->string(), row.text);
    }
}

TEST(URLTest, BracketsHoldAnIPv6AddressOrAFutureOne) {
    for (const std::string& address : words(":: ::1 1:: 1:2:3:4:5:6:7:8 1:2:3:4:5:6:7:: "
                                            "1:2:3:4:5:6:1.2.3.4 ABCD:ef01:: v1f.a:b"))
        EXPECT_TRUE(URL::parse("http://[" + address + "]")) << address;
    for (const std::string& address :
         words(": ::: 1 1::2::3 1:2:3:4:5:6:7 1:2:3:4:5:6:7:8:9 ::1:2:3:4:5:6:7:8 12345:: g:: "
               "::1.2.3 ::1.2.3.256 ::1.2.3.04 1.2.3.4:: :1:: ::1: fe80::1%25eth0 v.a v1. v1 [::]"))
        EXPECT_FALSE(URL::parse("http://[" + address + "]")) << address;
}

TEST(URLTest, RefusesWhatIsNoReference) {
    for (const std::string& text :
         words("http://a/\xC3\xA9 http://a/% http://a/%4 http://a/%4g http://a/< http://a/{b} "
               "http://a/\" http://a/| http://a/\\ http://a/^` http://a/[b] http://a?[b] "
               "http://a#b#c 1a:b :a a_b:c http://a:8x http://a:80:80 http://a@b@c http://[] "
               "http://[::1 http://::1] http://[::1]x http://x[::1] http://\x7F"))
        EXPECT_FALSE(URL::parse(text)) << text;
    EXPECT_FALSE(URL::parse(""));
    EXPECT_FALSE(URL::parse("http://a b"));
}

TEST(URLTest, TakesAnEnginesAddressWithoutLosingAnything) {
    const std::pair<std::string, std::string> rows[] = {
        {"http://a/p?response={\"a\":\"b|c\"}", "http://a/p?response=%7B%22a%22:%22b%7Cc%22%7D"},
        {"http://a/\xC3\xA9 [x]?\\#a#b", "http://a/%C3%A9%20%5Bx%5D?%5C#a%23b"},
        {"http://a/%7b%zz%", "http://a/%7b%zz%"},
    };
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(URL::fromEngine(text).value().absoluteString(), expected);
    }
}

TEST(URLComponentsTest, ReadsTheQueryItemByItem) {
    const std::pair<std::string, std::optional<Items>> rows[] = {
        {"http://h", std::nullopt},
        {"?a&b=", Items{{"a", std::nullopt}, {"b", ""}}},
        {"?a=b=c&a=d#e=2", Items{{"a", "b=c"}, {"a", "d"}}},
        {"?a&&=1&", Items{{"a", {}}, {"", {}}, {"", "1"}, {"", {}}}},
        {"?a%26=%3D%2B+%25", Items{{"a&", "=++%"}}},
        {"?a=%FFz&%41=%00", Items{{"a", "%FFz"}, {"A", std::string(1, '\0')}}},
    };
    for (const auto& [text, items] : rows)
        EXPECT_EQ(URLComponents::parse(text)->queryItems(), items) << text;
}

TEST(URLComponentsTest, SetItemsAreEscapedSoThatTheyReadBackTheSame) {
    auto components = *URLComponents::parse("https://h/checkout?x=1#top");
    const Items items = {{"a&b=c", "d&e=f"},
                         {"-._~!$'()*+,;:@/?", "#[]%\"<>\\^`{|} \n"},
                         {"flag", std::nullopt},
                         {"\xF0\x9F\x92\xB3", ""}};
    components.setQueryItems(items);
    EXPECT_EQ(components.string(),
              "https://h/checkout?a%26b%3Dc=d%26e%3Df&-._~!$'()*+,;:@/?="
              "%23%5B%5D%25%22%3C%3E%5C%5E%60%7B%7C%7D%20%0A&flag&%F0%9F%92%B3=#top");
    EXPECT_EQ(components.queryItems(), items);
}

}  // namespace
}  // namespace zorvik::platform
