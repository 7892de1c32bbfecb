#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/Export.h"

namespace zorvik::testkit {

// One step of a checkout's story: what happens, and which of its ways. A plain value; where it has
// nothing to happen to, it does nothing, so any part of a script is a script.
struct Step {
    enum class Kind : std::uint8_t {
        backgroundThread,
        turns,
        background,
        time,
        coreTiming,
        coreResult,
        coreAnswer,
        loads,
        look,
        navigate,
        pushState,
        subframe,
        post,
        panel,
        processDies,
        scripts,
        scriptAnswer,
        activate,
        upiApp,
        checkout,
        delegate,
        reaction,
        back,
        dismiss,
        window,
        host,
        retry,
        platform,
    };

    Kind kind = Kind::turns;
    std::uint8_t way = 0;  // a place in the list of the kind's ways

    friend bool operator==(const Step&, const Step&) = default;
};

using Script = std::vector<Step>;

// "page goes to: bare number", and a line of it each for a script.
ZORVIK_API std::string textOf(const Step& step);
ZORVIK_API std::string textOf(const Script& script);
// The script of such lines; empty ones and those that begin with "#" count for nothing. nullopt
// when one is no step.
ZORVIK_API std::optional<Script> scriptOf(std::string_view text);

// The script of a seed, the same on every machine: a checkout, and what comes in its way.
ZORVIK_API Script scriptOf(std::uint64_t seed);

}  // namespace zorvik::testkit
