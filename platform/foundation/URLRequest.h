#pragma once

#include "platform/foundation/URL.h"

namespace zorvik::platform {

// A plain GET of a URL by the protocol's own caching rules, which fails once nothing has moved for
// its time-out. A value; any thread.
struct URLRequest {
    URL url;
    double timeoutInterval = 60;  // seconds without any progress; not above 0: 60
};

}  // namespace zorvik::platform
