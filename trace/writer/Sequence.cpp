#include "trace/writer/Sequence.h"

namespace zorvik::trace {

std::string sequenceOf(const Log::Contents&) {
    return "";
}

}  // namespace zorvik::trace
