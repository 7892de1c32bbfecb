#include "platform/foundation/URL.h"

#include <gtest/gtest.h>

#include <sstream>

namespace zorvik::platform {
namespace {

std::string inBrackets(const std::string& address) {
    return std::string("http://[").append(address).append("]");
}

TEST(URLTest, TellsSchemeAndHostApart) {
    struct Row {
        std::string text;
        std::optional<std::string> scheme;
        std::optional<std::string> host;
    };
    const Row rows[] = {
        {"https://user:pw@shop.example:8443/p?q#f", "https", "shop.example"},
        {"HTTPS://Shop.Example", "HTTPS", "Shop.Example"},
        {"upi://pay?pa=a@b&am=1.00", "upi", "pay"},
        {"file:///tmp/a", "file", ""},
        {"mailto:a@b.example", "mailto", std::nullopt},
        {"a+b-c.1:", "a+b-c.1", std::nullopt},
        {"//shop.example:/x", std::nullopt, "shop.example"},
        {"/a:b//c", std::nullopt, std::nullopt},
        {"./a:b", std::nullopt, std::nullopt},
        {"?q", std::nullopt, std::nullopt},
        {"#", std::nullopt, std::nullopt},
        {"http://[2001:db8::1]:80/", "http", "2001:db8::1"},
        {"http://[v1f.a:b]", "http", "v1f.a:b"},
        {"http://a?b@c:x/d", "http", "a"},
        {"http://ex%C3%A9.example/", "http", "ex%C3%A9.example"},
    };
    for (const Row& row : rows) {
        const auto url = URL::parse(row.text);
        ASSERT_TRUE(url) << row.text;
        EXPECT_EQ(url->absoluteString(), row.text);
        EXPECT_EQ(url->scheme(), row.scheme) << row.text;
        EXPECT_EQ(url->host(), row.host) << row.text;
    }
}

TEST(URLTest, BracketsHoldAnIPv6AddressOrAFutureOne) {
    std::istringstream good(
        ":: ::1 1:: 1:2:3:4:5:6:7:8 1:2:3:4:5:6:7:: ::2:3:4:5:6:7:8 1:2:3:4:5:6:1.2.3.4 "
        "::255.255.255.255 a::b:0.0.0.0 ABCD:ef01:: v1f.a:b");
    for (std::string address; good >> address;) {
        EXPECT_TRUE(URL::parse(inBrackets(address))) << address;
    }
    std::istringstream bad(
        ": ::: 1 1::2::3 1:2:3:4:5:6:7 1:2:3:4:5:6:7:8:9 ::1:2:3:4:5:6:7:8 1:2:3:4:5:6:7:1.2.3.4 "
        "12345:: g:: ::1.2.3 ::1.2.3.256 ::1.2.3.04 ::1.2.3.4:5 1.2.3.4:: ::1.2.3.4.5 ::1.2.3. "
        ":1:: "
        "::1: fe80::1%25eth0 v.a v1. v1 vg.a v1.% [::]");
    for (std::string address; bad >> address;) {
        EXPECT_FALSE(URL::parse(inBrackets(address))) << address;
    }
    EXPECT_FALSE(URL::parse(inBrackets("")));
}

TEST(URLTest, RefusesWhatIsNoReference) {
    for (const std::string text : {"",
                                   " ",
                                   "http://a b",
                                   "http://a/\xC3\xA9",
                                   "http://a/%",
                                   "http://a/%4",
                                   "http://a/%4g",
                                   "http://a/<",
                                   "http://a/{b}",
                                   "http://a/\"",
                                   "http://a/|",
                                   "http://a/\\",
                                   "http://a/^`",
                                   "http://a/\n",
                                   "http://a/[b]",
                                   "http://a?[b]",
                                   "http://a#b#c",
                                   "1a:b",
                                   ":a",
                                   "a_b:c",
                                   "http://a:8x",
                                   "http://a:80:80",
                                   "http://a@b@c",
                                   "http://[::1",
                                   "http://::1]",
                                   "http://[::1]x",
                                   "http://x[::1]",
                                   "http://\x7F"}) {
        EXPECT_FALSE(URL::parse(text)) << text;
    }
    EXPECT_FALSE(URL::parse(std::string_view("http://a/\0", 10)));
}

TEST(URLTest, TakesAnEnginesAddressWithoutLosingAnything) {
    const std::pair<std::string, std::string> rows[] = {
        {"http://a/p?response={\"a\":\"b|c\"}", "http://a/p?response=%7B%22a%22:%22b%7Cc%22%7D"},
        {"http://a/\xC3\xA9 [x]?\\#a#b", "http://a/%C3%A9%20%5Bx%5D?%5C#a%23b"},
        {"http://a/%7b%zz%", "http://a/%7b%zz%"},
        {"http://u@[::1]:80/", "http://u@[::1]:80/"},
        {"about:blank", "about:blank"},
        {"data:text/html,<b>", "data:text/html,%3Cb%3E"},
    };
    for (const auto& [text, expected] : rows) {
        const auto url = URL::fromEngine(text);
        ASSERT_TRUE(url) << text;
        EXPECT_EQ(url->absoluteString(), expected);
        EXPECT_EQ(URL::fromEngine(expected), url);
    }
    EXPECT_EQ(URL::fromEngine("http://a@b@c/%zz")->host(), "c");
    EXPECT_FALSE(URL::fromEngine(""));
}

}  // namespace
}  // namespace zorvik::platform
