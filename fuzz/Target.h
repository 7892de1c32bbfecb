#pragma once

#include <string_view>

namespace zorvik::fuzz {

// Defined once by each target: given every input, it ends the run where a property does not hold.
void check(std::string_view input);

// Ends the run, so that the fuzzer keeps the input, when a property does not hold.
void require(bool holds, const char* property);

}  // namespace zorvik::fuzz
