#pragma once

#include <string>

#include "trace/recorder/Log.h"

namespace zorvik::trace {

// The recording as one page of HTML that holds all it needs.
std::string htmlOf(const Log::Contents& contents);

}  // namespace zorvik::trace
