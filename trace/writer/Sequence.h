#pragma once

#include <string>

#include "trace/recorder/Log.h"

namespace zorvik::trace {

// What passed between the parts of a checkout as a sequence diagram: one SVG that needs no font and
// no other file, light or dark as its reader has it.
std::string sequenceOf(const Log::Contents& contents);

}  // namespace zorvik::trace
