#pragma once

#include <string>

#include "platform/foundation/Export.h"

namespace zorvik {

// The service addresses of the linked core services, asked for afresh each time. Main thread.
struct ZORVIK_API APIUtils {
    // The hosted checkout page; may hold the placeholder "?token=%@".
    static std::string webViewViewUrl();
    // Where the checkout page goes to hand back a payment response.
    static std::string webViewRespCheckUrl();
    // The base address of the back end, set before a checkout starts.
    static void setZorvikTechUrl(const std::string& url);
};

}  // namespace zorvik
