#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>

// Runs the contract and says of each claim whether the port keeps it. With --gtest_filter=NAME one
// of them is looked at alone, and what it saw is printed.
namespace {

class Verdicts : public testing::EmptyTestEventListener {
  public:
    void OnTestEnd(const testing::TestInfo& test) override {
        std::printf("%-6s %s.%s\n", test.result()->Passed() ? "kept" : "waits",
                    test.test_suite_name(), test.name());
        std::fflush(stdout);
    }
    void OnTestProgramEnd(const testing::UnitTest& program) override {
        std::printf("%d of %d contracts are kept\n", program.successful_test_count(),
                    program.test_to_run_count());
    }
};

}  // namespace

int main(int count, char** arguments) {
    testing::InitGoogleMock(&count, arguments);
    auto& program = *testing::UnitTest::GetInstance();
    auto& listeners = program.listeners();
    const bool isOneTest = testing::GTEST_FLAG(filter).find('*') == std::string::npos;
    if (!isOneTest) {
        const std::unique_ptr<testing::TestEventListener> printer(
            listeners.Release(listeners.default_result_printer()));
    }
    listeners.Append(new Verdicts);  // owned by the list
    const int result = RUN_ALL_TESTS();
    // A filter that names nothing proves nothing.
    return program.test_to_run_count() > 0 ? result : 1;
}
