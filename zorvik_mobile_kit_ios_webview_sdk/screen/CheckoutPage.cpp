#include "zorvik_mobile_kit_ios_webview_sdk/screen/CheckoutPage.h"

#include "core/APIUtils.h"
#include "zorvik_mobile_kit_ios_webview_sdk/common/Text.h"

namespace zorvik {

using platform::URL;
using platform::URLRequest;

std::string checkoutPageAddress() {
    constexpr std::string_view placeholder = "?token=%@";
    std::string address = APIUtils::webViewViewUrl();
    for (auto at = address.find(placeholder); at != std::string::npos;
         at = address.find(placeholder, at)) {
        address.erase(at, placeholder.size());
    }
    return address;
}

URLRequest checkoutPageRequest(const URL& url) {
    return {url, 60};
}

std::string postMessageScript(std::string_view escapedJson) {
    return joined("window.postMessage('", escapedJson, "', '*');");
}

}  // namespace zorvik
