#pragma once

#include <string_view>
#include <vector>

namespace zorvik::fuzz {

// One thing to feed with any bytes, which ends the run where a property does not hold. Made once,
// at namespace scope, by the one source of its name.
struct Target {
    using Check = void (*)(std::string_view input);

    Target(const char* targetName, Check targetCheck) : name(targetName), check(targetCheck) {
        all().push_back(this);
    }
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;

    // Those of this program: the fuzzer's have one, the replay of the tests has all.
    static std::vector<const Target*>& all() {
        static std::vector<const Target*> targets;
        return targets;
    }

    const char* const name;
    const Check check;
};

// Ends the run, so that the fuzzer keeps the input, when a property does not hold.
void require(bool holds, const char* property);

}  // namespace zorvik::fuzz
