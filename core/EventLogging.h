#pragma once

#include <optional>
#include <string>

#include "platform/foundation/Value.h"

namespace zorvik {

// Records analytics events. Never fails, whatever it is given; any thread, several at once.
class EventLoggingUtils {
  public:
    static void safeLogEvent(const std::string& eventName,
                             const std::optional<std::string>& orderId,
                             const std::optional<std::string>& token,
                             const std::optional<std::string>& subMerchantId,
                             const std::optional<platform::Dictionary>& additionalData,
                             const std::string& sdkVersion) noexcept;
};

class EventLoggingService {
  public:
    // Makes the host's application code part of all later events. Any thread.
    static void setAppCode(const std::optional<std::string>& appCode);
};

}  // namespace zorvik
