#pragma once

#include "platform/foundation/Error.h"

namespace zorvik::platform::gtk {

// Failures that this port tells itself; the others have the engine's own domains and codes.
enum class WebPageErrorCode {
    timedOut = 1,
    webProcessEnded = 2,
    pageGone = 3,
    noJsonForm = 4,
    invalidScript = 5,
};

inline Error webPageError(WebPageErrorCode code, const char* text) {
    return {"WebPageError", static_cast<int>(code), text};
}

}  // namespace zorvik::platform::gtk
