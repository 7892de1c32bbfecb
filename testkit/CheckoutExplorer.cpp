#include "testkit/CheckoutExplorer.h"

#include <algorithm>
#include <utility>

#include "testkit/story/StoryPlayer.h"
#include "testkit/story/StoryRules.h"

namespace zorvik::testkit {

CheckoutExplorer::CheckoutExplorer(MakeDelegate makeDelegate)
    : makeDelegate_(std::move(makeDelegate)) {}

std::optional<CheckoutExplorer::Failure> CheckoutExplorer::explore(
    std::size_t runs, std::uint64_t seed, const std::function<void(std::uint64_t)>& began) {
    for (const std::uint64_t end = seed + runs; seed < end; ++seed) {
        if (began) began(seed);
        auto failure = replay(scriptOf(seed));
        if (!failure) continue;
        const std::string rule = failure->rule;
        const Script script = shrunk(failure->script, [&](const Script& candidate) {
            const auto again = replay(candidate);
            return again && again->rule == rule;
        });
        // One that does not repeat itself, for a delegate that kept something of former runs,
        // stays as it came.
        if (auto again = replay(script)) failure = std::move(again);
        failure->seed = seed;
        return failure;
    }
    return std::nullopt;
}

std::optional<CheckoutExplorer::Failure> CheckoutExplorer::replay(const Script& script) const {
    std::optional<Failure> failure;
    StoryPlayer player(script, makeDelegate_);
    player.play([&](const Story& story, Story::Moment moment) {
        const auto check = [&](const auto& rule) {
            std::string broken = rule.broken(story, moment);
            if (!broken.empty() && !failure)
                failure = Failure{std::nullopt, rule.name, std::move(broken), script};
        };
        std::ranges::for_each(storyRules(), check);
        std::ranges::for_each(rules_, check);
        return !failure;
    });
    return failure;
}

Script CheckoutExplorer::shrunk(Script script,
                                const std::function<bool(const Script&)>& stillFails) {
    for (std::size_t length = std::max<std::size_t>(script.size() / 2, 1); length > 0;) {
        bool didShrink = false;
        for (std::size_t place = 0; place < script.size();) {
            Script candidate = script;
            const auto first = candidate.begin() + static_cast<std::ptrdiff_t>(place);
            const std::size_t count = std::min(length, script.size() - place);
            candidate.erase(first, first + static_cast<std::ptrdiff_t>(count));
            if (stillFails(candidate)) {
                script = std::move(candidate);
                didShrink = true;
            } else {
                place += length;
            }
        }
        if (length > 1) {
            length /= 2;
        } else if (!didShrink) {
            break;
        }
    }
    return script;
}

std::string textOf(const CheckoutExplorer::Failure& failure) {
    std::string text = "broken: " + failure.rule + "\n  " + failure.broken + '\n';
    if (failure.seed) text += "# seed " + std::to_string(*failure.seed) + '\n';
    return text + textOf(failure.script);
}

}  // namespace zorvik::testkit
