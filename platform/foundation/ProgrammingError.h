#pragma once

#include <cstdio>
#include <cstdlib>

namespace zorvik::platform {

// Ends the process with a message: for calls that break a contract in a way no answer can mend.
[[noreturn]] inline void endOnProgrammingError(const char* message) {
    std::fprintf(stderr, "zorvik: programming error: %s\n", message);
    std::abort();
}

}  // namespace zorvik::platform
