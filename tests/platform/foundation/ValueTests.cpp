#include "platform/foundation/Value.h"

#include <gtest/gtest.h>

namespace zorvik::platform {
namespace {

TEST(ValueTest, IntegersOfEqualValueAreEqualWhateverTheirType) {
    EXPECT_EQ(Value(std::uint64_t{42}), Value(short{42}));
    EXPECT_EQ(Value(std::uint64_t{42}).unsignedInteger(), nullptr);
    EXPECT_NE(Value(UINT64_MAX), Value(-1));
    EXPECT_NE(Value(42), Value(42.0));
    EXPECT_NE(Value(true), Value(1));
}

TEST(ValueTest, ReadsAsOneLine) {
    const std::pair<Value, std::string> rows[] = {
        {nullptr, "null"},
        {true, "true"},
        {INT64_MIN, "-9223372036854775808"},
        {UINT64_MAX, "18446744073709551615"},
        {"as \"it\" stands\n", "as \"it\" stands\n"},
        {Array{}, "[]"},
        {Dictionary{}, "[:]"},
        {Array{1, "a", Array{false}}, "[1, \"a\", [false]]"},
        {Dictionary{{"b", Dictionary{}}, {"a", "1"}}, "[\"a\": \"1\", \"b\": [:]]"},
        {Array{"quote \" slash \\ line \n bell \a"},
         "[\"quote \\\" slash \\\\ line \\n bell \\u{7}\"]"},
    };
    for (const auto& [value, text] : rows)
        EXPECT_EQ(description(value), text);
}

TEST(ValueTest, DoublesReadBackTheSame) {
    EXPECT_EQ(description(0.1), "0.1");
    EXPECT_EQ(description(5.0), "5.0");
    EXPECT_EQ(description(-0.0), "-0.0");
    EXPECT_EQ(description(1e300), "1e+300");
    EXPECT_EQ(std::stod(description(0.1 + 0.2)), 0.1 + 0.2);
}

}  // namespace
}  // namespace zorvik::platform
