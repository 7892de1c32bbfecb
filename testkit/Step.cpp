#include "testkit/Step.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace zorvik::testkit {

namespace {

using Kind = Step::Kind;

constexpr std::size_t maximumWays = 16;

struct Entry {
    Kind kind;
    int weight;  // how often it comes, in a script of a seed
    std::string_view name;
    std::array<std::string_view, maximumWays> ways;

    std::size_t wayCount() const {
        return static_cast<std::size_t>(std::ranges::find(ways, std::string_view()) - ways.begin());
    }
};

// In the order of the kinds. The ways' places are what StoryPlayer reads.
constexpr Entry entries[] = {
    {Kind::backgroundThread, 0, "background tasks run", {"on a thread of their own"}},
    {Kind::turns, 22, "turns", {"1", "2", "3", "7", "until idle"}},
    {Kind::background, 12, "background task", {"first", "second", "last", "all"}},
    {Kind::time,
     8,
     "seconds pass",
     {"0.1", "0.35", "1", "4.5", "5.5", "61", "1, with nothing run"}},
    {Kind::coreTiming, 3, "core services answer", {"in the background", "at once", "when told"}},
    {Kind::coreResult, 2, "core services", {"succeed", "fail", "know no order"}},
    {Kind::coreAnswer,
     6,
     "held answer",
     {"first", "last", "first, in the background", "first, a failure", "last, a failure", "never"}},
    {Kind::loads,
     3,
     "loads",
     {"finish", "fail before the commit", "fail after the commit", "hang", "hang after the commit",
      "have nothing to show", "go by the bank", "go to a response", "go to a UPI return",
      "pay by themselves", "pay twice", "keep busy"}},
    {Kind::look, 1, "look at", {"the youngest page", "the oldest page"}},
    {Kind::navigate,
     12,
     "page goes to",
     {"a response", "a base64 response", "an unreadable response", "no response", "a bare number",
      "UPI success", "UPI failure", "UPI cancellation", "UPI unknown", "UPI without status",
      "UPI with nothing", "the bank", "processing", "processing with a response", "a fragment"}},
    {Kind::pushState, 1, "page's address becomes", {"processing", "processing with a response"}},
    {Kind::subframe, 2, "sub-frame goes to", {"a response", "UPI failure", "the bank"}},
    {Kind::post,
     6,
     "page posts",
     {"an app that opens", "an app that refuses", "an app that is missing", "an app and no address",
      "an app and a bad address", "a number in the object", "no JSON", "no string",
      "to an unknown name"}},
    {Kind::panel, 1, "page shows", {"an alert", "a confirm panel", "a prompt"}},
    {Kind::processDies, 1, "web process", {"dies"}},
    {Kind::scripts, 3, "scripts", {"answer", "fail", "wait", "answer and pay"}},
    {Kind::scriptAnswer, 3, "waiting script", {"first", "last"}},
    {Kind::activate, 5, "customer", {"comes back"}},
    {Kind::upiApp,
     3,
     "UPI app",
     {"is removed", "is installed", "is slow to open", "opens at last"}},
    {Kind::checkout,
     4,
     "checkout",
     {"with a token", "without a token", "with an unreadable token", "in another window"}},
    {Kind::delegate, 3, "host's delegate", {"is another", "is none", "is released"}},
    {Kind::reaction,
     2,
     "host reacts by",
     {"nothing", "a checkout", "dismissing", "dropping its delegate", "resetting"}},
    {Kind::back, 4, "back", {"by the host", "by the bar", "by a swipe"}},
    {Kind::dismiss, 4, "host dismisses", {"slowly", "at once"}},
    {Kind::window, 1, "window", {"closes", "is lost with its presenter"}},
    {Kind::host,
     3,
     "host",
     {"keeps the screen", "lets go of the screen", "covers the screen", "resets", "initialises"}},
    {Kind::retry, 3, "customer presses", {"Retry"}},
    {Kind::platform, 1, "platform", {"ends", "restarts as another process"}},
};

const Entry& entryOf(Kind kind) {
    return entries[static_cast<std::size_t>(kind)];
}

// Its own generator, for a seed to mean the same everywhere.
class Dice {
  public:
    explicit Dice(std::uint64_t seed) : state_(seed) {}

    std::uint64_t below(std::uint64_t end) {
        state_ += 0x9e3779b97f4a7c15U;
        std::uint64_t mixed = state_;
        mixed = (mixed ^ (mixed >> 30U)) * 0xbf58476d1ce4e5b9U;
        mixed = (mixed ^ (mixed >> 27U)) * 0x94d049bb133111ebU;
        return (mixed ^ (mixed >> 31U)) % end;
    }
    bool oneIn(std::uint64_t count) { return below(count) == 0; }

  private:
    std::uint64_t state_;
};

Step randomStep(Dice& dice) {
    static const int total = [] {
        int sum = 0;
        for (const Entry& entry : entries)
            sum += entry.weight;
        return sum;
    }();
    int place = static_cast<int>(dice.below(static_cast<std::uint64_t>(total)));
    const Entry* chosen = entries;
    while (place >= chosen->weight)
        place -= (chosen++)->weight;
    return {chosen->kind, static_cast<std::uint8_t>(dice.below(chosen->wayCount()))};
}

}  // namespace

std::string textOf(const Step& step) {
    const Entry& entry = entryOf(step.kind);
    return std::string(entry.name) + ": " + std::string(entry.ways[step.way % entry.wayCount()]);
}

std::string textOf(const Script& script) {
    std::string text;
    for (const Step& step : script)
        text.append(textOf(step)).push_back('\n');
    return text;
}

std::optional<Script> scriptOf(std::string_view text) {
    Script script;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        while (!line.empty() && line.front() == ' ')
            line.remove_prefix(1);
        if (line.empty() || line.front() == '#') continue;
        const std::size_t before = script.size();
        for (const Entry& entry : entries) {
            for (std::size_t way = 0; way < entry.wayCount(); ++way) {
                const Step step{entry.kind, static_cast<std::uint8_t>(way)};
                if (script.size() == before && textOf(step) == line) script.push_back(step);
            }
        }
        if (script.size() == before) return std::nullopt;
    }
    return script;
}

Script scriptOf(std::uint64_t seed) {
    Dice dice(seed);
    Script script;
    if (dice.oneIn(16)) script.push_back({Kind::backgroundThread, 0});
    const auto someSteps = [&](std::uint64_t count) {
        for (std::uint64_t left = count; left > 0; --left)
            script.push_back(randomStep(dice));
    };
    const auto anyWay = [&](Kind kind) {
        script.push_back({kind, static_cast<std::uint8_t>(dice.below(entryOf(kind).wayCount()))});
    };
    someSteps(dice.below(3));
    if (dice.oneIn(3)) anyWay(Kind::coreTiming);
    if (dice.oneIn(5)) anyWay(Kind::coreResult);
    if (dice.oneIn(3)) anyWay(Kind::loads);
    if (dice.oneIn(4)) anyWay(Kind::scripts);
    script.push_back({Kind::checkout, 0});
    // Most get as far as the screen; from there on anything may come.
    if (!dice.oneIn(8)) {
        script.push_back({Kind::background, 3});
        script.push_back({Kind::turns, 4});
        script.push_back({Kind::background, 3});
        if (!dice.oneIn(4)) script.push_back({Kind::turns, 4});
    }
    someSteps(dice.below(8));
    if (dice.oneIn(4)) {
        // To a UPI app and back: by its address, or by a mere switch.
        script.push_back({Kind::post, 0});
        script.push_back({Kind::turns, static_cast<std::uint8_t>(2 + dice.below(3))});
        anyWay(Kind::time);
        script.push_back(dice.oneIn(2)
                             ? Step{Kind::activate, 0}
                             : Step{Kind::navigate, static_cast<std::uint8_t>(5 + dice.below(6))});
    }
    someSteps(4 + dice.below(10));
    return script;
}

}  // namespace zorvik::testkit
