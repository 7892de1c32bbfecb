#include "platform/foundation/Data.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <sstream>
#include <thread>
#include <vector>

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

TEST(ConsoleTest, ASinkMayPrintReplaceItselfAndWaitForOtherPrinters) {
    std::vector<std::string> first;
    std::vector<std::string> second;
    testing::internal::CaptureStdout();
    setConsoleSink([&](std::string_view line) {
        if (line == "a") std::thread([] { printLine("b"); }).join();
        if (line == "c") setConsoleSink([&](std::string_view next) { second.emplace_back(next); });
        printLine("inside " + std::string(line));
        first.emplace_back(line);
    });
    for (const char* line : {"a", "c", "d"})
        printLine(line);
    setConsoleSink({});
    printLine("e");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "inside b\ninside a\ninside c\ne\n");
    EXPECT_EQ(first, (std::vector<std::string>{"b", "a", "c"}));
    EXPECT_EQ(second, std::vector<std::string>{"d"});
}

TEST(ConsoleTest, SettingASinkWaitsForCallsOfTheFormerOnOtherThreads) {
    std::promise<void> entered;
    std::atomic_bool isReplaced = false;
    std::atomic_bool hasLeft = false;
    setConsoleSink([&](std::string_view line) {
        if (line == "probe") return;
        entered.set_value();
        while (!isReplaced)
            std::thread([] { printLine("probe"); }).join();
        hasLeft = true;
    });
    std::jthread printer([] { printLine("long"); });
    entered.get_future().wait();
    setConsoleSink([&](std::string_view) { isReplaced = true; });
    EXPECT_TRUE(hasLeft);
    setConsoleSink({});
}

}  // namespace
}  // namespace zorvik::platform
