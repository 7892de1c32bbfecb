#pragma once

#include <concepts>
#include <optional>
#include <string_view>

#include "platform/foundation/Error.h"
#include "platform/foundation/Export.h"

namespace zorvik {

// The debug log. In this build its operations write nothing. Any thread.
class ZORVIK_API LogUtil {
  public:
    // Read by nothing in this build.
    static inline bool isDebugEnabled = false;

    static void debugLog(std::string_view /*message*/) {}
    // For a line that costs something to compose: only a build that writes it calls `compose`.
    template <std::invocable Compose>
    static void debugLog(const Compose& /*compose*/) {}
    static void debugLog(std::string_view /*tag*/, std::string_view /*message*/) {}
    static void warningLog(std::string_view /*tag*/, std::string_view /*message*/) {}
    static void errorLog(std::string_view /*tag*/, std::string_view /*message*/,
                         const std::optional<platform::Error>& /*error*/) {}
};

}  // namespace zorvik
