#pragma once

#include "platform/foundation/URL.h"

namespace zorvik::platform {

// A plain GET of a URL. A value; any thread.
struct URLRequest {
    enum class CachePolicy { useProtocolCachePolicy = 0 };

    URL url;
    CachePolicy cachePolicy = CachePolicy::useProtocolCachePolicy;
    double timeoutInterval = 60;  // seconds without any progress after which the load fails
};

}  // namespace zorvik::platform
