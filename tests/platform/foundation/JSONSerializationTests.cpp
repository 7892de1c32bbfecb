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
    while (count-- > 0)
        result += text;
    return result;
}

TEST(JSONSerializationTest, ReadsEveryKindOfValueAloneAndAsAMember) {
    const std::pair<std::string, Value> rows[] = {
        {" null ", nullptr},
        {"18446744073709551615", UINT64_MAX},
        {R"("a\u0000\ud83d\udcb3\/")", "a\0\xF0\x9F\x92\xB3/"s},
        {R"([1,[],{"a":{"b":[null]}}])",
         Array{1, Array{}, Dictionary{{"a", Dictionary{{"b", Array{nullptr}}}}}}},
        {R"({"a":1,"b":{"a":2},"a":[3],"":4})",
         Dictionary{{"", 4}, {"a", Array{3}}, {"b", Dictionary{{"a", 2}}}}},
    };
    for (const auto& [text, value] : rows) {
        const auto result = JSONSerialization::jsonObject(text, Options::fragmentsAllowed);
        ASSERT_TRUE(result) << text << ": " << result.error().localizedDescription;
        EXPECT_EQ(result.value(), value) << text;
        const bool isContainer = value.array() || value.dictionary();
        EXPECT_EQ(bool(JSONSerialization::jsonObject(text, Options::none)), isContainer) << text;
        const std::string object = R"({"b":{"a":1},"a":[{"a":2}],"a":)" + text + ",\"c\":[3]}";
        EXPECT_EQ(JSONSerialization::member(object, "a").value(), value) << object;
        EXPECT_EQ(bool(JSONSerialization::member(text, "x")), value.dictionary() != nullptr);
    }
}

TEST(JSONSerializationTest, RefusesWhatIsNotOneJsonText) {
    const std::pair<const char*, std::string> rows[] = {
        {"text after the value", "{} x"},
        {"a NUL after the value", "{}\0"s},
        {"a byte-order mark", "\xEF\xBB\xBF{}"},
        {"a string that is not UTF-8", "{\"a\":\"\xFF\"}"},
        {"a key that is not UTF-8", "{\"\xC3\":1}"},
        {"an integer beyond unsigned 64 bits", "{\"a\":18446744073709551616}"},
        {"an integer beyond signed 64 bits", "{\"a\":-9223372036854775809}"},
        {"a number beyond a double", "{\"a\":1e400}"},
    };
    for (const auto& [name, text] : rows) {
        EXPECT_FALSE(JSONSerialization::jsonObject(text, Options::fragmentsAllowed)) << name;
        EXPECT_FALSE(JSONSerialization::member(text, "x")) << name;
    }
}

TEST(JSONSerializationTest, NestingEndsAtTheMaximumDepth) {
    const std::string deepest = repeated("[", 512) + repeated("]", 512);
    const auto value = JSONSerialization::jsonObject(deepest, Options::none);
    ASSERT_TRUE(value);
    EXPECT_EQ(JSONSerialization::data(value.value()).value(), deepest);
    EXPECT_FALSE(JSONSerialization::data(Array{value.value()}));
    EXPECT_FALSE(JSONSerialization::jsonObject("[" + deepest + "]", Options::none));
    EXPECT_FALSE(JSONSerialization::jsonObject(repeated("{\"a\":", 100'000), Options::none));
    // The depth counts where nothing is kept too.
    EXPECT_FALSE(JSONSerialization::member(R"({"b":)" + deepest + "}", "a"));
}

TEST(JSONSerializationTest, WritesWhatReadsBackTheSameAndRefusesWhatJsonCannotHold) {
    const Value value = Dictionary{
        {"numbers", Array{INT64_MIN, UINT64_MAX, 5.0, -0.0, 0.1, 5e-324}},
        {"quote\"", Array{"\\ / \b\n\x01 \xF0\x9F\x92\xB3", nullptr, Dictionary{}, Array{}}},
    };
    const auto text = JSONSerialization::data(value);
    EXPECT_EQ(text.value().find_first_of("\n "), text.value().find(" /")) << text.value();
    EXPECT_EQ(JSONSerialization::jsonObject(text.value(), Options::none).value(), value);
    for (const Value& bad : {Value(std::numeric_limits<double>::infinity()), Value(std::nan("")),
                             Value(Array{"\xFF"}), Value(Dictionary{{"\xED\xA0\x80", 1}})})
        EXPECT_FALSE(JSONSerialization::data(bad)) << description(bad);
}

}  // namespace
}  // namespace zorvik::platform
