#pragma once

#include <string>
#include <string_view>

namespace zorvik {

// What the error panel shows for a message: the first keyword it contains, in any letter case,
// decides.
std::string_view errorText(const std::string& message);

}  // namespace zorvik
