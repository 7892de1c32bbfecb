#pragma once

#include <functional>
#include <string>
#include <vector>

#include "core/UPIAppsVO.h"
#include "platform/foundation/Error.h"
#include "platform/foundation/Export.h"

namespace zorvik {

// The UPI apps of this device, by the linked core services.
class ZORVIK_API ZorvikUPIAppDetector {
  public:
    using Completion = std::function<void(const platform::Result<std::vector<UPIAppsVO>>&)>;

    // Completes exactly once, later, on any thread; no app at all is a success.
    static void getUPIAppsList(const std::string& token, Completion completion);
    // Whether a UPI app hands control back by this address. Pure, immediate; any thread.
    static bool isUPIAppReturnURL(const std::string& url);
};

}  // namespace zorvik
