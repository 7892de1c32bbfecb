#pragma once

#include <functional>
#include <string_view>

namespace zorvik::platform {

// Writes one line to the console: standard output unless a sink is set. Any thread; lines never
// mix.
void printLine(std::string_view line);

// Sends the lines to a sink instead (an empty function: back to standard output). The sink is
// called on the thread that prints, one call at a time, and must not print itself.
void setConsoleSink(std::function<void(std::string_view line)> sink);

}  // namespace zorvik::platform
