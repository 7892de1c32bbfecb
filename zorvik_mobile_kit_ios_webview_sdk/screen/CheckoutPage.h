#pragma once

#include <string>
#include <string_view>

#include "platform/foundation/URLRequest.h"

namespace zorvik {

// The hosted checkout page's address without its token placeholder.
std::string checkoutPageAddress();

// How the checkout page is asked for: the protocol's own caching rules, 60 seconds.
platform::URLRequest checkoutPageRequest(const platform::URL& url);

// The script that posts a JSON text, escaped already, to the page as a string message.
std::string postMessageScript(std::string_view escapedJson);

}  // namespace zorvik
