#include "platform/foundation/JSONSerialization.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace zorvik::platform {
namespace {

using namespace std::string_literals;
using Options = JSONSerialization::ReadingOptions;

std::string repeated(std::string_view text, std::size_t count) {
    std::string result;
    for (std::size_t index = 0; index < count; ++index)
        result += text;
    return result;
}

std::string nestedArrays(std::size_t depth) {
    return repeated("[", depth) + repeated("]", depth);
}

TEST(JSONSerializationTest, ReadsEveryKindOfValue) {
    const std::pair<std::string, Value> rows[] = {
        {" null ", nullptr},
        {"true", true},
        {"-0", 0},
        {"9223372036854775808", std::uint64_t{9223372036854775808U}},
        {"18446744073709551615", UINT64_MAX},
        {"-9223372036854775808", INT64_MIN},
        {"4.0", 4.0},
        {"1E2", 100.0},
        {"-0.0e-9999", -0.0},
        {R"("a\u0000\ud83d\udcb3\/")", "a\0\xF0\x9F\x92\xB3/"s},
        {"\"\xF0\x9F\x92\xB3\"", "\xF0\x9F\x92\xB3"},
        {R"([1,[],{"a":{"b":[null]}}])",
         Array{1, Array{}, Dictionary{{"a", Dictionary{{"b", Array{nullptr}}}}}}},
        {R"({"a":1,"b":{"a":2},"a":[3],"":4})",
         Dictionary{{"", 4}, {"a", Array{3}}, {"b", Dictionary{{"a", 2}}}}},
    };
    for (const auto& [text, value] : rows) {
        const auto result = JSONSerialization::jsonObject(text, Options::fragmentsAllowed);
        ASSERT_TRUE(result) << text << ": " << result.error().localizedDescription;
        EXPECT_EQ(result.value(), value) << text;
    }
}

TEST(JSONSerializationTest, RefusesWhatIsNotOneJsonText) {
    const std::pair<const char*, std::string> rows[] = {
        {"nothing", ""},
        {"white space", " \n"},
        {"text after the value", "{} x"},
        {"a second value", "{}{}"},
        {"a NUL after the value", "{}\0"s},
        {"what a NUL would hide", "{}\0 garbage"s},
        {"a byte-order mark", "\xEF\xBB\xBF{}"},
        {"a comment", "[1 /* one */]"},
        {"a comma at the end", "[1,]"},
        {"a single quote", "{'a':1}"},
        {"a key without quotes", "{a:1}"},
        {"no value", "{\"a\":}"},
        {"unfinished", "[1,{\"a\":\"b"},
        {"a leading zero", "[01]"},
        {"a bare point", "[.5]"},
        {"not a number", "[NaN]"},
        {"a control character in a string", "[\"a\nb\"]"},
        {"a lone surrogate", R"(["\ud83d"])"},
        {"a string that is not UTF-8", "[\"\xFF\"]"},
        {"a key that is not UTF-8", "{\"\xC3\":1}"},
        {"an overlong form", "[\"\xC0\xAF\"]"},
        {"an integer beyond unsigned 64 bits", "[18446744073709551616]"},
        {"an integer beyond signed 64 bits", "[-9223372036854775809]"},
        {"a number beyond a double", "[1e400]"},
        {"a number below a double", "[-1.5e-400]"},
    };
    for (const auto& [name, text] : rows) {
        EXPECT_FALSE(JSONSerialization::jsonObject(text, Options::fragmentsAllowed)) << name;
        EXPECT_FALSE(JSONSerialization::member(text, "a")) << name;
    }
}

TEST(JSONSerializationTest, WantsAContainerAtTheTopUnlessFragmentsAreAllowed) {
    for (const std::string text : {"1", "\"a\"", "null", "false", "1.5"}) {
        EXPECT_FALSE(JSONSerialization::jsonObject(text, Options::none)) << text;
    }
    EXPECT_TRUE(JSONSerialization::jsonObject("[]", Options::none));
    EXPECT_TRUE(JSONSerialization::jsonObject("{}", Options::none));
}

TEST(JSONSerializationTest, NestingEndsAtTheMaximumDepth) {
    const std::string deepest = nestedArrays(JSONSerialization::maximumDepth);
    const auto value = JSONSerialization::jsonObject(deepest, Options::none);
    ASSERT_TRUE(value);
    ASSERT_TRUE(JSONSerialization::data(value.value()));
    EXPECT_EQ(JSONSerialization::data(value.value()).value(), deepest);
    EXPECT_FALSE(JSONSerialization::data(Array{value.value()}));

    EXPECT_FALSE(JSONSerialization::jsonObject(nestedArrays(513), Options::none));
    EXPECT_FALSE(JSONSerialization::jsonObject(nestedArrays(100'000), Options::none));
    EXPECT_FALSE(JSONSerialization::jsonObject(repeated("{\"a\":", 100'000), Options::none));
    // The depth counts where nothing is kept too.
    EXPECT_FALSE(JSONSerialization::member(R"({"b":)" + deepest + "}", "a"));
}

TEST(JSONSerializationTest, ReadsALargeDocument) {
    const std::string text = R"({"list":[)" + repeated(R"({"id":12345678},)", 150'000) + "{}]}";
    const auto value = JSONSerialization::jsonObject(text, Options::none);
    ASSERT_TRUE(value);
    EXPECT_EQ(value.value().dictionary()->at("list").array()->size(), 150'001U);
}

TEST(JSONSerializationTest, MemberFindsTheTopLevelKeyAlone) {
    const std::string text =
        R"({"b":{"a":1},"a":{"a":[2,{"c":3}],"a":{"x":[]}},"c":[{"a":4}],"d":null})";
    const std::pair<std::string, std::optional<Value>> rows[] = {
        {"a", Dictionary{{"a", Dictionary{{"x", Array{}}}}}},
        {"c", Array{Dictionary{{"a", 4}}}},
        {"d", Value(nullptr)},
        {"x", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& [key, value] : rows) {
        const auto result = JSONSerialization::member(text, key);
        ASSERT_TRUE(result) << key;
        EXPECT_EQ(result.value(), value) << key;
    }
    EXPECT_EQ(JSONSerialization::member(R"({"a":[1],"b":0,"a":"last"})", "a").value(), "last");
    for (const std::string other : {"[]", "[{\"a\":1}]", "1", "null"}) {
        EXPECT_FALSE(JSONSerialization::member(other, "a")) << other;
    }
    EXPECT_FALSE(JSONSerialization::member(R"({"a":1,"b":})", "a"));
}

TEST(JSONSerializationTest, WritesCompactTextThatReadsBackTheSame) {
    const Value value = Dictionary{
        {"quote\"", "\\ / \b\n\r\t\x01 \x7F \xF0\x9F\x92\xB3"},
        {"numbers", Array{INT64_MIN, UINT64_MAX, 5.0, -0.0, 0.1, 1e300, 5e-324}},
        {"empty", Array{Array{}, Dictionary{}, "", nullptr, false}},
    };
    const auto text = JSONSerialization::data(value);
    ASSERT_TRUE(text);
    EXPECT_EQ(text.value(),
              "{\"empty\":[[],{},\"\",null,false],"
              "\"numbers\":[-9223372036854775808,18446744073709551615,5.0,-0.0,0.1,1e+300,5e-324],"
              "\"quote\\\"\":\"\\\\ / \\u0008\\n\\r\\t\\u0001 \x7F \xF0\x9F\x92\xB3\"}");
    EXPECT_EQ(JSONSerialization::jsonObject(text.value(), Options::none).value(), value);
}

TEST(JSONSerializationTest, RefusesToWriteWhatJsonCannotHold) {
    EXPECT_FALSE(JSONSerialization::data(Array{std::numeric_limits<double>::infinity()}));
    EXPECT_FALSE(JSONSerialization::data(std::nan("")));
    EXPECT_FALSE(JSONSerialization::data(Dictionary{{"a", "\xFF"}}));
    EXPECT_FALSE(JSONSerialization::data(Dictionary{{"\xED\xA0\x80", 1}}));
}

}  // namespace
}  // namespace zorvik::platform
