#pragma once

#include <string>
#include <utility>

#include "platform/foundation/Error.h"

namespace zorvik::platform::desktop {

// Failures that a desktop port tells itself; the others have its engine's own domains and codes.
enum class WebPageErrorCode {
    timedOut = 1,
    webProcessEnded = 2,
    pageGone = 3,
    noJsonForm = 4,
    invalidScript = 5,
    cancelled = 6,
    scriptFailed = 7,
    unknownScheme = 8,
};

inline Error webPageError(WebPageErrorCode code, std::string text) {
    return {"WebPageError", static_cast<int>(code), std::move(text)};
}

}  // namespace zorvik::platform::desktop
