#pragma once

#include <optional>
#include <string_view>

#include "platform/foundation/Error.h"

namespace zorvik {

// The debug log. In this build its operations write nothing; callers compose their lines all the
// same, so that a build which writes them needs a change here only. Any thread.
class LogUtil {
  public:
    // Read by nothing in this build.
    static inline bool isDebugEnabled = false;

    static void debugLog(std::string_view /*message*/) {}
    static void debugLog(std::string_view /*tag*/, std::string_view /*message*/) {}
    static void warningLog(std::string_view /*tag*/, std::string_view /*message*/) {}
    static void errorLog(std::string_view /*tag*/, std::string_view /*message*/,
                         const std::optional<platform::Error>& /*error*/) {}
};

}  // namespace zorvik
