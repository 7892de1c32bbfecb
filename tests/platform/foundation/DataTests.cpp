#include "platform/foundation/Data.h"

#include <gtest/gtest.h>

#include "platform/foundation/Date.h"

namespace zorvik::platform {
namespace {

using namespace std::string_literals;

TEST(Base64Test, EncodesAndDecodesEveryLength) {
    const std::pair<std::string, std::string> rows[] = {
        {"", ""},
        {"f", "Zg=="},
        {"fo", "Zm8="},
        {"foo", "Zm9v"},
        {"foob", "Zm9vYg=="},
        {"fooba", "Zm9vYmE="},
        {"\x00\xFF\xFE\xFB"s, "AP/++w=="},
    };
    for (const auto& [bytes, text] : rows) {
        EXPECT_EQ(base64Encode(bytes), text);
        EXPECT_EQ(base64Decode(text), bytes);
    }
}

TEST(Base64Test, RefusesWhatIsNotTheStandardAlphabetWithPadding) {
    for (const std::string text : {"Z", "Zg", "Zg=", "Zm9vY", "=", "====", "Z===", "Zg==Zg==",
                                   "=g==", "Z=g=", "Zm 9", "Zm9v\n", "-_-_", "Zm\xC3\xA9"}) {
        EXPECT_EQ(base64Decode(text), std::nullopt) << text;
    }
    EXPECT_EQ(base64Decode("Zm\0v"s), std::nullopt);
}

TEST(Utf8Test, TellsWellFormedBytesFromMalformedOnes) {
    for (const std::string bytes :
         {"", "plain", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80",
          "\xEF\xBF\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF", "a\xF0\x9F\x92\xB3z"}) {
        EXPECT_TRUE(isValidUtf8(bytes)) << testing::PrintToString(bytes);
    }
    const std::pair<const char*, std::string> rows[] = {
        {"lone continuation", "\x80"},
        {"overlong two bytes", "\xC0\xAF"},
        {"overlong, the last of them", "\xC1\xBF"},
        {"overlong three bytes", "\xE0\x9F\xBF"},
        {"overlong four bytes", "\xF0\x8F\xBF\xBF"},
        {"surrogate", "\xED\xA0\x80"},
        {"beyond the last code point", "\xF4\x90\x80\x80"},
        {"no lead byte of this kind", "\xF5\x80\x80\x80"},
        {"cut after the lead", "ab\xC3"},
        {"cut in the middle", "\xF0\x9F\x92"},
        {"third byte is no continuation", "\xE2\x82z"},
    };
    for (const auto& [name, bytes] : rows)
        EXPECT_FALSE(isValidUtf8(bytes)) << name;
}

TEST(DateTest, DescribesTimesInUtc) {
    EXPECT_EQ(description(Date{0}), "1970-01-01 00:00:00 +0000");
    EXPECT_EQ(description(Date{951'782'399.75}), "2000-02-28 23:59:59 +0000");
    EXPECT_EQ(description(Date{951'782'400}), "2000-02-29 00:00:00 +0000");
    EXPECT_EQ(description(Date{-0.25}), "1969-12-31 23:59:59 +0000");
    EXPECT_EQ(description(Date{253'402'300'799}), "9999-12-31 23:59:59 +0000");
}

TEST(DateTest, DescribesTimesBeyondTheCalendarAsSeconds) {
    EXPECT_EQ(description(Date{253'402'300'800}), "253402300800.0 seconds since 1970");
    EXPECT_EQ(description(Date{-1e300}), "-1e+300 seconds since 1970");
    EXPECT_EQ(description(Date{std::stod("nan")}), "nan seconds since 1970");
}

}  // namespace
}  // namespace zorvik::platform
