#pragma once

#include "platform/foundation/URL.h"

namespace zorvik::platform {

// A plain GET of a URL by the protocol's own caching rules. A value; any thread.
struct URLRequest {
    URL url;
    double timeoutInterval = 60;  // seconds without any progress after which the load fails
};

}  // namespace zorvik::platform
