#pragma once

#include <cstddef>

namespace zorvik::tests {

// Sources of GLib's main loop, timers of every library included. Qt runs on the same loop on Linux.
std::size_t eventSources();

}  // namespace zorvik::tests
