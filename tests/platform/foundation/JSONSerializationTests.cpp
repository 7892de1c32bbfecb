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
    };
    for (const auto& [name, text] : rows) {
        EXPECT_FALSE(JSONSerialization::jsonObject(text, Options::fragmentsAllowed)) << name;
        EXPECT_FALSE(JSONSerialization::member(text, "x")) << name;
    }
    for (const char* number : {"+1", ".5", "1.", "-", "--1", "01", "-01e400", "1e", "1e+",
                               "1e400.5", "1,5", "0x10", "NaN", "Infinity", "1e400x", "1_0"}) {
        const std::string object = R"({"a":)"s + number + "}";
        EXPECT_FALSE(JSONSerialization::jsonObject(object, Options::none)) << number;
        EXPECT_FALSE(JSONSerialization::member(object, "x")) << number;
        EXPECT_EQ(Value::parseNumber(number), std::nullopt) << number;
    }
}

TEST(JSONSerializationTest, NumbersAreNeverChangedAndNeverAReasonToRefuse) {
    const std::string zeros(400, '0');
    std::vector<std::pair<std::string, std::string>> rows = {
        // what a double holds
        {"1499.50", "1499.5"},
        {"1e2", "100.0"},
        {"100000000000000000000.0", "1e+20"},
        {"0.1" + zeros, "0.1"},
        {"1" + zeros + "e-400", "1.0"},
        {"0." + zeros + "12E+401", "1.2"},
        {"17976931348623157" + zeros + "e-108", "1.7976931348623157e+308"},
        {"0.5e-323", "5e-324"},
        // zero
        {"-0", "0"},
        {"0e99999999999999999999", "0.0"},
        {"-" + std::string("0.") + zeros + "E-5", "-0.0"},
    };
    // 64 bits and one more, what a double holds as it is written, what it does not (it prints
    // 1844674407370955500.0 as ...520.0).
    for (const std::string& same :
         {"-9223372036854775808"s, "-9223372036854775809"s, "18446744073709551615"s,
          "18446744073709551616"s, "100000000000000000000"s, "-1" + zeros, "0.30000000000000004"s,
          "-0.0"s, "12345678901234567890.123"s, "9007199254740993.0"s, "1844674407370955500.0"s,
          "0.1" + zeros + "1", "4.9e-324"s, "1E400"s, "-1e-400"s, "1e99999999999999999999"s,
          "1e-99999999999999999999"s})
        rows.emplace_back(same, same);
    for (const auto& [text, written] : rows) {
        const auto value = JSONSerialization::jsonObject(text, Options::fragmentsAllowed);
        ASSERT_TRUE(value) << text;
        EXPECT_EQ(Value::parseNumber(text), value.value()) << text;
        EXPECT_EQ(description(value.value()), written);
        EXPECT_EQ(JSONSerialization::data(value.value()).value(), written);
        const auto again = JSONSerialization::jsonObject(written, Options::fragmentsAllowed);
        EXPECT_EQ(again.value(), value.value()) << text;
        const std::string object = R"({"a":[)" + text + R"(],"b":)" + text + "}";
        const Dictionary whole{{"a", Array{value.value()}}, {"b", value.value()}};
        EXPECT_EQ(JSONSerialization::jsonObject(object, Options::none).value(), whole) << text;
        EXPECT_EQ(JSONSerialization::member(object, "b").value(), value.value()) << text;
        EXPECT_EQ(JSONSerialization::member(object, "x").value(), std::nullopt) << text;
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
