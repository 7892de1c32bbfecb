#include "platform/foundation/Data.h"

#include <gtest/gtest.h>

#include <sstream>
#include <thread>

#include "platform/foundation/Console.h"

namespace zorvik::platform {
namespace {

using namespace std::string_literals;

TEST(Base64Test, TakesTheStandardAlphabetWithItsPaddingOnly) {
    const std::pair<std::string, std::string> rows[] = {
        {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"\x00\xFF\xFE\xFB"s, "AP/++w=="},
    };
    for (const auto& [bytes, text] : rows) {
        EXPECT_EQ(base64Encode(bytes), text);
        EXPECT_EQ(base64Decode(text), bytes);
    }
    for (const std::string& text : {"Z"s, "Zg"s, "Zg="s, "Zm9vY"s, "===="s, "Z==="s, "Zg==Zg=="s,
                                    "Z=g="s, "Zm 9"s, "Zm9v\n"s, "-_-_"s, "Zm\0v"s})
        EXPECT_EQ(base64Decode(text), std::nullopt) << text;
}

TEST(Utf8Test, TellsWellFormedBytesFromMalformedOnes) {
    EXPECT_TRUE(isValidUtf8("\xC2\x80 \xED\x9F\xBF \xF4\x8F\xBF\xBF"));
    for (const std::string bytes :
         {"\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF", "\xED\xA0\x80",
          "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "ab\xC3", "\xF0\x9F\x92", "\xE2\x82z"})
        EXPECT_FALSE(isValidUtf8(bytes)) << testing::PrintToString(bytes);
}

TEST(ConsoleTest, LinesOfSeveralThreadsStayWhole) {
    testing::internal::CaptureStdout();
    {
        std::vector<std::jthread> threads;
        for (const char letter : {'a', 'b', 'c', 'd'}) {
            threads.emplace_back([letter] {
                for (int count = 0; count < 500; ++count)
                    printLine(std::string(200, letter));
            });
        }
    }
    std::istringstream output(testing::internal::GetCapturedStdout());
    int whole = 0;
    for (std::string line; std::getline(output, line);)
        whole += line == std::string(200, line.front());
    EXPECT_EQ(whole, 4 * 500);
}

}  // namespace
}  // namespace zorvik::platform
