#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/foundation/Export.h"
#include "platform/foundation/Value.h"

namespace zorvik {

// Records analytics events. Never fails, whatever it is given; any thread, several at once.
class ZORVIK_API EventLoggingUtils {
  public:
    // Events outside a checkout name no order, token or sub-merchant. `additionalData` holds values
    // of any type.
    static void safeLogEvent(std::string_view eventName, const std::optional<std::string>& orderId,
                             const std::optional<std::string>& token,
                             const std::optional<std::string>& subMerchantId,
                             const std::optional<platform::Dictionary>& additionalData,
                             std::string_view sdkVersion) noexcept;
};

// The host's own part of the events.
class ZORVIK_API EventLoggingService {
  public:
    // Makes the host's application code part of all later events. Any thread.
    static void setAppCode(const std::optional<std::string>& appCode);
};

}  // namespace zorvik
