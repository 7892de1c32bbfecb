#include <unistd.h>

#include <cstdlib>
#include <iostream>

#include "tests/hostile/HostileCheckout.h"

namespace zorvik::tests {
namespace {

// Milliseconds in which the main thread works without a turn for what is due; checked code takes
// several times as long. What it waits for others besides depends on how busy the machine is.
#ifndef __has_feature
#define __has_feature(name) 0
#endif
#if defined(__SANITIZE_ADDRESS__) || __has_feature(address_sanitizer)
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

    // Whether the window answered; with every other claim about the row.
    static bool play(const Row& row, Ending ending);

  private:
    static bool answered(HostileCheckout& checkout, const char* when) {
        const auto longest = checkout.watch.takeLongest();
        std::cout << "longest turn " << when << ": " << longest.work << " ms of work, "
                  << longest.total << " ms in all\n";
        return longest.work < longestWork && longest.total < longestWait;
    }
};

bool APage::play(const Row& row, Ending ending) {
    alarm(deadline);
    bool hasAnswered = true;
    {
        HostileCheckout checkout;
        checkout.serve("/hostile", row.page);
        if (row.opens == Row::Opens::before) checkout.open();
        if (row.story) row.story(checkout);
        EXPECT_EQ(checkout.isPanelShown(), row.leaves == Leaves::panel);
        EXPECT_EQ(checkout.host->responses().empty(), row.leaves != Leaves::outcome);
        hasAnswered = answered(checkout, "before the end") && hasAnswered;

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
        if (row.leaves == Leaves::outcome) {
            // Each answer that was there before the screen had gone is told.
            EXPECT_THAT(checkout.host->responses(), testing::Each(heard.front()));
        } else {
            EXPECT_EQ(checkout.host->responses(), heard);
        }
        hasAnswered = answered(checkout, "at the end") && hasAnswered;
    }
    HostileCheckout next;
    next.open("/ordinary");
    EXPECT_TRUE(next.waitUntil([&] { return !next.host->responses().empty(); }));
    next.waitForSilence();
    EXPECT_THAT(next.host->responses(), testing::ElementsAre(HostileCheckout::paidOrdinarily()));
    return answered(next, "in the next checkout") && hasAnswered;
}

TEST_P(APage, HarmsNobodyButItself) {
    const auto& [row, ending] = GetParam();
    // A second time where the machine may have been slow: what a page does to the window it does
    // each time.
    const bool hasAnswered = play(row, ending) || HasFailure() || play(row, ending);
    EXPECT_TRUE(hasAnswered || HasFailure()) << "the window did not answer for too long";
}

INSTANTIATE_TEST_SUITE_P(Hostile, APage, testing::ValuesIn(cases()),
                         [](const auto& shown) { return shown.param.name(); });

}  // namespace
}  // namespace zorvik::tests
