#pragma once

#include <string>
#include <string_view>

#include "platform/foundation/Export.h"

namespace zorvik::platform {

// The text as it may stand where many can read it: of each order token, of the name in each VPA or
// e-mail address and of each telephone or card number only the beginning is left, followed by "…".
// Tokens are known by their claims; a number has ten digits or more, spaces or dashes after its
// "+" do not end it. In an address's query they may be percent-escaped. Shortening again changes
// nothing. Pure; any thread.
ZORVIK_API std::string shortened(std::string_view text);

}  // namespace zorvik::platform
