#include <string>

#include "core/APIUtils.h"
#include "core/ZorvikUPIAppDetector.h"
#include "platform/foundation/Console.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutWebView.h"
#include "zorvik_mobile_kit_ios_webview_sdk/common/Text.h"

namespace zorvik {

using platform::description;
using platform::printLine;
using platform::WKNavigationActionPolicy;

void ZorvikCheckoutWebView::webViewDecidePolicyFor(platform::WKWebView& /*view*/,
                                                   const platform::WKNavigationAction& action,
                                                   const DecisionHandler& decisionHandler) {
    if (!action.request.url) {
        printLine("[URL INTERCEPT] ❌ No URL found in navigation action");
        decisionHandler(WKNavigationActionPolicy::allow);
        return;
    }
    const std::string& url = action.request.url->absoluteString();
    printLine(joined("[URL INTERCEPT] 🔍 Intercepted URL: ", url));
    printLine("[URL INTERCEPT] 📋 URL type: String");
    // An address is ASCII, so its bytes are its characters.
    printLine(joined("[URL INTERCEPT] 📊 URL length: ", std::to_string(url.size())));

    if (url.find(APIUtils::webViewRespCheckUrl() + "?response=") != std::string::npos) {
        printLine("[URL INTERCEPT] 🎯 Found redirect URL");
        handleWebViewRespCheckUrl(url);
        decisionHandler(WKNavigationActionPolicy::cancel);
        return;
    }

    const bool isReturn = ZorvikUPIAppDetector::isUPIAppReturnURL(url);
    printLine(joined("[UPI RETURN] 🔍 isUPIAppReturnURL called for URL: ", url));
    printLine(joined("[UPI RETURN] 📊 isUPIAppReturnURL result: ", description(isReturn)));
    const bool isReturnByScheme = isUPIAppReturnByScheme(url);
    printLine(joined("[UPI RETURN] 🔍 isUPIAppReturnByScheme called for URL: ", url));
    printLine(
        joined("[UPI RETURN] 📊 isUPIAppReturnByScheme result: ", description(isReturnByScheme)));
    if (isReturn || isReturnByScheme) {
        printLine("[UPI RETURN] 🎯 Detected UPI app return URL!");
        printLine(joined("[UPI RETURN] 🔗 UPI return URL: ", url));
        handleUPIAppReturn(url);
        decisionHandler(WKNavigationActionPolicy::cancel);
        return;
    }

    printLine(joined("[URL INTERCEPT] ✅ Allowing URL to load: ", url));
    decisionHandler(WKNavigationActionPolicy::allow);
}

bool ZorvikCheckoutWebView::isUPIAppReturnByScheme(const std::string& url) const {
    const bool isReturn = ZorvikUPIAppDetector::isUPIAppReturnURL(url);
    printLine(joined("[UPI SCHEME] 🔍 Checking URL scheme: ", url));
    printLine(joined("[UPI SCHEME] 📊 Is UPI return by scheme: ", description(isReturn)));
    return isReturn;
}

}  // namespace zorvik
