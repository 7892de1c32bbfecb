#pragma once

#include <cstdio>
#include <cstdlib>

// Ends the run, so that the fuzzer keeps the input, when a property does not hold.
inline void require(bool holds, const char* property) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", property);
    std::abort();
}
