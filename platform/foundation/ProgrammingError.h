#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace zorvik::platform {

// Ends the process with a message: for calls that break a contract in a way no answer can mend.
[[noreturn]] inline void endOnProgrammingError(const std::string& message) {
    std::fprintf(stderr, "zorvik: programming error: %s\n", message.c_str());
    std::abort();
}

// Tells on standard error, in one line, of a use that is most likely a mistake; the process goes
// on. The sentence says what is wrong and what to do.
inline void tellOfMisuse(const std::string& sentence) {
    std::fprintf(stderr, "zorvik: misuse: %s\n", sentence.c_str());
}

}  // namespace zorvik::platform
