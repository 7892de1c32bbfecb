#pragma once

#include <string>
#include <string_view>

namespace zorvik::platform::desktop {

// The text of a JSON string as an engine writes one. The engines' own conversions to UTF-8 end at
// the first NUL or spoil half a surrogate pair; in JSON both are escaped, and nothing else above
// ASCII is. Such a half, which UTF-8 cannot hold, becomes U+FFFD.
std::string textOfJsonString(std::string_view json);

}  // namespace zorvik::platform::desktop
