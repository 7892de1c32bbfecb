#include "platform/foundation/URLComponents.h"

#include <gtest/gtest.h>

namespace zorvik::platform {
namespace {

using Items = std::vector<URLQueryItem>;

TEST(URLComponentsTest, TakesAReferenceApartAndComposesItAgain) {
    for (const std::string text : {"", "https://u@h.example:1/a/b;c?x=1#f", "mailto:a@b", "//h",
                                   "///a", "?", "#", "?#", "a/b", "file:///a", "x://?y"}) {
        const auto components = URLComponents::parse(text);
        ASSERT_TRUE(components) << text;
        EXPECT_EQ(components->string(), text);
    }
    const auto components = URLComponents::parse("https://u@[::1]:1/a%20b?x#f");
    EXPECT_EQ(components->scheme(), "https");
    EXPECT_EQ(components->host(), "::1");
    EXPECT_EQ(components->path(), "/a%20b");
    EXPECT_FALSE(URLComponents::parse("https://h/a b"));
}

TEST(URLComponentsTest, ReadsTheQueryItemByItem) {
    const std::pair<std::string, std::optional<Items>> rows[] = {
        {"http://h", std::nullopt},
        {"http://h?", Items{}},
        {"?a", Items{{"a", std::nullopt}}},
        {"?a=", Items{{"a", ""}}},
        {"?=a", Items{{"", "a"}}},
        {"?a=b=c&a=d", Items{{"a", "b=c"}, {"a", "d"}}},
        {"?a&&b=1&", Items{{"a", {}}, {"", {}}, {"b", "1"}, {"", {}}}},
        {"?a%26=%3D%2B+%25&%C3%A9=%f0%9f%92%b3",
         Items{{"a&", "=++%"}, {"\xC3\xA9", "\xF0\x9F\x92\xB3"}}},
        {"?a=%FFz&%41=%00", Items{{"a", "%FFz"}, {"A", std::string(1, '\0')}}},
        {"?a=1#b=2", Items{{"a", "1"}}},
    };
    for (const auto& [text, items] : rows) {
        EXPECT_EQ(URLComponents::parse(text)->queryItems(), items) << text;
    }
}

TEST(URLComponentsTest, ReplacesTheQueryAndKeepsTheFragment) {
    auto components = *URLComponents::parse("https://h/checkout?x=1#top");
    components.setQueryItems({{"token", "abc"}, {"flag", std::nullopt}, {"empty", ""}});
    EXPECT_EQ(components.string(), "https://h/checkout?token=abc&flag&empty=#top");
    components.setQueryItems({});
    EXPECT_EQ(components.string(), "https://h/checkout?#top");
}

TEST(URLComponentsTest, EscapesItemsSoThatTheyReadBackTheSame) {
    const Items items = {
        {"a&b=c", "d&e=f"},
        {"-._~!$'()*+,;:@/?", "#[]%\"<>\\^`{|} \n"},
        {"\xF0\x9F\x92\xB3", std::string("\0", 1)},
    };
    auto components = *URLComponents::parse("https://h");
    components.setQueryItems(items);
    EXPECT_EQ(components.string(),
              "https://h?a%26b%3Dc=d%26e%3Df&-._~!$'()*+,;:@/?="
              "%23%5B%5D%25%22%3C%3E%5C%5E%60%7B%7C%7D%20%0A&%F0%9F%92%B3=%00");
    EXPECT_EQ(components.queryItems(), items);
}

TEST(URLComponentsTest, DescribesItemsOnOneLine) {
    EXPECT_EQ(description(Items{{"a", "1"}, {"b", {}}, {"c", ""}}), "[a=1, b, c=]");
    EXPECT_EQ(description(Items{}), "[]");
}

}  // namespace
}  // namespace zorvik::platform
