#include "platform/foundation/Console.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace zorvik::platform {
namespace {

constexpr int threadCount = 4;
constexpr int linesEach = 500;

void printFromThreads() {
    std::vector<std::thread> threads;
    for (int index = 0; index < threadCount; ++index) {
        threads.emplace_back([index] {
            const std::string line(200, static_cast<char>('a' + index));
            for (int count = 0; count < linesEach; ++count)
                printLine(line);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

bool isWhole(const std::string& line) {
    return line.size() == 200 && line.find_first_not_of(line.front()) == std::string::npos;
}

TEST(ConsoleTest, LinesOfSeveralThreadsNeverMix) {
    testing::internal::CaptureStdout();
    printFromThreads();
    std::istringstream output(testing::internal::GetCapturedStdout());
    int count = 0;
    for (std::string line; std::getline(output, line); ++count)
        EXPECT_TRUE(isWhole(line)) << line;
    EXPECT_EQ(count, threadCount * linesEach);
}

TEST(ConsoleTest, ASinkGetsEveryLineOneCallAtATime) {
    testing::internal::CaptureStdout();
    int count = 0;
    setConsoleSink([&count](std::string_view line) { count += isWhole(std::string(line)); });
    printFromThreads();
    setConsoleSink({});
    printLine("back on standard output");
    EXPECT_EQ(count, threadCount * linesEach);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "back on standard output\n");
}

}  // namespace
}  // namespace zorvik::platform
