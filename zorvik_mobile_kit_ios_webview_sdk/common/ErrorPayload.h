#pragma once

#include <optional>
#include <string>

#include "platform/foundation/Value.h"

namespace zorvik {

// The failure dictionary the host receives: the message, the order token ("" when absent) and the
// ids read from it.
platform::Dictionary errorPayload(const std::string& message,
                                  const std::optional<std::string>& orderToken);

}  // namespace zorvik
