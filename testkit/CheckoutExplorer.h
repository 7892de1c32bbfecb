#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/Export.h"
#include "testkit/Step.h"
#include "testkit/Story.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutDelegates.h"

namespace zorvik::testkit {

// Plays checkouts in which everything that can come in any order does, and checks after each step
// and at each end that the rules hold: the component's own (docs/reliability.md lists them), and a
// host's. A run comes of its seed alone, so a failure repeats, and its script is shrunk to the few
// steps that still break the same rule. Each run has a headless platform of its own, so no other
// one may be there. One at a time; main thread, that of the first run.
//
//     CheckoutExplorer explorer([] { return std::make_shared<Shop>(); });
//     const auto failure = explorer.explore(10'000, 1);
//     EXPECT_FALSE(failure) << textOf(*failure);
class ZORVIK_API CheckoutExplorer {
  public:
    // Makes a delegate of the kind that is tried out, for each time a story's host sets another.
    using MakeDelegate = std::function<std::shared_ptr<ZorvikCheckoutSDKDelegate>()>;

    // A rule of the host's: what in a story breaks it, "" while it holds.
    struct Rule {
        std::string name;
        std::function<std::string(const Story& story, Story::Moment moment)> broken;
    };

    // A rule that was broken, and by what.
    struct Failure {
        std::optional<std::uint64_t> seed;  // nullopt: of a script that was replayed
        std::string rule;
        std::string broken;  // by what
        Script script;       // after explore: shrunk
    };

    explicit CheckoutExplorer(MakeDelegate makeDelegate = {});

    void addRule(Rule rule) { rules_.push_back(std::move(rule)); }

    // The runs of the seeds from `seed` on, up to the first failure. `began` is told each seed.
    std::optional<Failure> explore(std::size_t runs, std::uint64_t seed,
                                   const std::function<void(std::uint64_t)>& began = {});
    std::optional<Failure> replay(const Script& script) const;

    // The fewest steps found that still fail: none of those left can be dropped alone.
    static Script shrunk(Script script, const std::function<bool(const Script&)>& stillFails);

  private:
    const MakeDelegate makeDelegate_;
    std::vector<Rule> rules_;
};

// The rule, what broke it, the seed and the script, for people to read and to paste into a replay.
ZORVIK_API std::string textOf(const CheckoutExplorer::Failure& failure);

}  // namespace zorvik::testkit
