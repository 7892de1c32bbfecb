#include "testkit/CheckoutExplorer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

#include "platform/headless/HeadlessPlatform.h"
#include "testkit/ScriptedCoreServices.h"

namespace zorvik::testkit {
namespace {

using platform::Dictionary;

// A host that takes a UPI failure for a success.
struct Shop : ZorvikCheckoutSDKDelegate {
    explicit Shop(bool& shipsUnpaid) : shipsUnpaid_(shipsUnpaid) {}
    void onCheckoutResponse(const Dictionary& data) override {
        shipsUnpaid_ = shipsUnpaid_ || data.contains("transaction_id");
    }
    bool& shipsUnpaid_;
};

TEST(CheckoutExplorerTest, AFaultOfTheHostsOwnIsFoundAndShrunkToTheStepsThatBringItAbout) {
    bool shipsUnpaid = false;
    CheckoutExplorer explorer([&] { return std::make_shared<Shop>(shipsUnpaid); });
    EXPECT_FALSE(explorer.explore(20, 1)) << "without a rule of the host's";
    shipsUnpaid = false;
    explorer.addRule({"an unpaid order is not shipped", [&](const Story&, Story::Moment) {
                          return std::exchange(shipsUnpaid, false) ? "it was" : "";
                      }});
    const auto failure = explorer.explore(10'000, 1);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->rule, "an unpaid order is not shipped");
    // A checkout as far as its screen and the failure; each of them is needed.
    EXPECT_LE(failure->script.size(), 7U) << textOf(*failure);
    for (std::size_t place = 0; place < failure->script.size(); ++place) {
        Script less = failure->script;
        less.erase(less.begin() + static_cast<std::ptrdiff_t>(place));
        EXPECT_FALSE(explorer.replay(less)) << "without: " << textOf(failure->script[place]);
    }
    // What is printed can be pasted into a replay.
    const std::string text = textOf(*failure);
    const auto pasted = scriptOf(std::string_view(text).substr(text.find("# seed")));
    ASSERT_TRUE(pasted) << text;
    EXPECT_EQ(*pasted, failure->script);
    const auto again = explorer.replay(*pasted);
    EXPECT_TRUE(again && again->rule == failure->rule);
}

TEST(CheckoutExplorerTest, ASeedIsTheSameRunEachTimeAndReadsBackFromItsText) {
    EXPECT_FALSE(scriptOf("page goes to: the moon"));
    std::string told;
    CheckoutExplorer explorer;
    explorer.addRule({"everything is told", [&](const Story& story, Story::Moment moment) {
                          if (moment == Story::Moment::end) {
                              for (const Happening& one : story.happenings)
                                  told += one.text + description(one.data) + '\n';
                          }
                          return "";
                      }});
    for (std::uint64_t seed = 1; seed <= 60; ++seed) {
        const Script script = scriptOf(seed);
        EXPECT_EQ(scriptOf(textOf(script)), script);
        told.clear();
        EXPECT_FALSE(explorer.replay(script));
        const std::string first = std::exchange(told, {});
        EXPECT_FALSE(explorer.replay(script));
        EXPECT_EQ(told, first) << "seed " << seed;
    }
}

TEST(CheckoutExplorerTest, ACoreServiceIsAnsweredWhenToldWithTheAnswerOfThatMoment) {
    platform::headless::HeadlessPlatform port;
    auto& core = ScriptedCoreServices::instance();
    core.clear();
    core.setTiming(ScriptedCoreServices::Timing::whenTold);
    std::string heard;
    for (const std::string token : {"one ", "two ", "three "})
        core.updateOrderDetails(token, "", "", "", "", [&heard, token](const auto& result) {
            heard += token + (result ? "" : "fails ");
        });
    port.scheduler().settle();
    ASSERT_EQ(core.waitingCalls().size(), 3U);
    core.answers().orderUpdate = platform::Error{"test", 1, "late"};
    EXPECT_TRUE(core.answerCall(1));
    EXPECT_EQ(heard, "two fails ");
    core.answers().orderUpdate = OrderResponse{};
    EXPECT_TRUE(core.answerCall(0, ScriptedCoreServices::Timing::inBackground));
    EXPECT_EQ(heard, "two fails ");
    port.scheduler().settle();
    EXPECT_TRUE(core.forgetCall());
    EXPECT_FALSE(core.forgetCall() || core.answerCall());
    EXPECT_EQ(heard, "two fails one ");
    core.clear();
}

}  // namespace
}  // namespace zorvik::testkit
