#include <cstddef>
#include <cstdio>
#include <cstdlib>

#include "fuzz/Target.h"

void zorvik::fuzz::require(bool holds, const char* property) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", property);
    std::abort();
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    zorvik::fuzz::Target::all().front()->check({reinterpret_cast<const char*>(data), size});
    return 0;
}
