#pragma once

#include <functional>
#include <string_view>

#include "platform/foundation/Export.h"

namespace zorvik::platform {

// Writes one line to the console: standard output unless a sink is set. Any thread; lines never
// mix.
ZORVIK_API void printLine(std::string_view line);

// Sends the lines to a sink instead (an empty function: back to standard output). The sink is
// called on the thread that prints, several threads may call it at once, each thread's lines in
// their order. What it prints itself goes to standard output. Calls of the former sink on other
// threads have ended when this returns, so a sink must not wait for a thread that sets one; set
// from inside a sink, nothing is waited for. Returns the former sink, empty for standard output,
// for one that hands the lines on or steps in for a while only.
ZORVIK_API std::function<void(std::string_view line)> setConsoleSink(
    std::function<void(std::string_view line)> sink);

}  // namespace zorvik::platform
