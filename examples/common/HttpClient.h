#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/foundation/Error.h"
#include "platform/foundation/Value.h"

namespace zorvik::demo {

// Sends one request to the demonstration's back end and waits for its JSON answer (five seconds
// without any progress at most). An answer other than 2xx is an Error with the back end's own
// words. Any thread but the one that draws.
platform::Result<platform::Dictionary> exchange(
    const std::string& method, const std::string& url,
    const std::optional<platform::Dictionary>& body = std::nullopt);

// Escapes every character but the unreserved ones, for one query value or path segment.
std::string percentEncoded(std::string_view text);

}  // namespace zorvik::demo
