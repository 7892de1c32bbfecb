#include <unistd.h>

#include <cstdlib>
#include <iostream>

#include "tests/hostile/HostileCheckout.h"

namespace zorvik::tests {
namespace {

// Milliseconds in which the main thread works without a turn for what is due; checked code takes
// several times as long. What it waits for others besides depends on how busy the machine is.
#if defined(__SANITIZE_ADDRESS__)
constexpr double longestWork = 1000;
#else
constexpr double longestWork = 100;
#endif
constexpr double longestWait = 1000;
// Seconds for a row; ends the program when its own deadlines are never asked, since the main thread
// is held up.
constexpr unsigned deadline = 150;

enum class Ending { finished, dismissed };
struct Case {
    Row row;
    Ending ending;

    std::string name() const {
        return std::string(row.name) + (ending == Ending::finished ? "_Finished" : "_Dismissed");
    }
    friend std::ostream& operator<<(std::ostream& stream, const Case& shown) {
        return stream << shown.name();
    }
};

// At length every page meets both endings; otherwise they take turns.
std::vector<Case> cases() {
    const bool isAtLength = std::getenv("ZORVIK_HOSTILE_AT_LENGTH") != nullptr;
    std::vector<Case> cases;
    for (const auto& rows : {messageRows(), navigationRows(), processRows(), textRows()}) {
        for (const Row& row : rows) {
            if (row.runs == Row::Runs::atLength && !isAtLength) continue;
            const bool canFinish = row.leaves != Leaves::nothing;
            const bool canBeDismissed = row.leaves != Leaves::outcome;
            const bool isEven = cases.size() % 2 == 0;
            if (canFinish && (isAtLength || isEven || !canBeDismissed))
                cases.push_back({row, Ending::finished});
            if (canBeDismissed && (isAtLength || !isEven || !canFinish))
                cases.push_back({row, Ending::dismissed});
        }
    }
    return cases;
}

class APage : public testing::TestWithParam<Case> {
  protected:
    static void TearDownTestSuite() {
        HostileCheckout::endWorld();
        alarm(0);
    }

    void expectStall(HostileCheckout& checkout, const char* when) {
        const auto longest = checkout.watch.takeLongest();
        EXPECT_LT(longest.work, longestWork) << "work of the main thread, " << when;
        EXPECT_LT(longest.total, longestWait) << "work and waiting, " << when;
        std::cout << "longest turn " << when << ": " << longest.work << " ms of work, "
                  << longest.total << " ms in all\n";
    }
};

TEST_P(APage, HarmsNobodyButItself) {
    const auto& [row, ending] = GetParam();
    alarm(deadline);
    {
        HostileCheckout checkout;
        checkout.serve("/hostile", row.page);
        if (row.opens == Row::Opens::before) checkout.open();
        if (row.story) row.story(checkout);
        ASSERT_EQ(checkout.isPanelShown(), row.leaves == Leaves::panel);
        EXPECT_EQ(checkout.host->responses().empty(), row.leaves != Leaves::outcome);
        expectStall(checkout, "before the end");

        std::vector<Dictionary> heard;
        if (row.leaves == Leaves::outcome) {
            heard = {HostileCheckout::paid()};
        } else if (ending == Ending::dismissed) {
            checkout.dismiss();
        } else if (row.leaves == Leaves::panel) {
            checkout.retry();
            heard = {HostileCheckout::paidOrdinarily()};
        } else {
            checkout.pay();
            heard = {HostileCheckout::paid()};
        }
        checkout.waitForSilence();
        EXPECT_EQ(checkout.host->responses(), heard);
        expectStall(checkout, "at the end");
    }
    HostileCheckout next;
    next.open("/ordinary");
    EXPECT_TRUE(next.waitUntil([&] { return !next.host->responses().empty(); }));
    next.waitForSilence();
    EXPECT_THAT(next.host->responses(), testing::ElementsAre(HostileCheckout::paidOrdinarily()));
    expectStall(next, "in the next checkout");
}

INSTANTIATE_TEST_SUITE_P(Hostile, APage, testing::ValuesIn(cases()),
                         [](const auto& shown) { return shown.param.name(); });

}  // namespace
}  // namespace zorvik::tests
