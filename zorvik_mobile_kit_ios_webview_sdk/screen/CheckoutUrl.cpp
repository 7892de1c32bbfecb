#include <utility>

#include "core/APIUtils.h"
#include "platform/foundation/URLComponents.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutWebView.h"
#include "zorvik_mobile_kit_ios_webview_sdk/screen/CheckoutPage.h"

namespace zorvik {

using platform::URL;
using platform::URLComponents;
using platform::URLQueryItem;
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

std::string ZorvikCheckoutWebView::buildCheckoutUrl() {
    if (isUrlBuilt && cachedCheckoutUrl) return *cachedCheckoutUrl;
    const auto checkoutOptions = options();
    if (!checkoutOptions.orderToken) return "";

    auto components = URLComponents::parse(checkoutPageAddress());
    std::vector<URLQueryItem> items{{"token", checkoutOptions.orderToken}};
    const auto appendUnlessEmpty = [&items](const char* name,
                                            const std::optional<std::string>& value) {
        if (value && !value->empty()) items.push_back({name, value});
    };
    appendUnlessEmpty("payment_mode", checkoutOptions.paymentModeCode);
    appendUnlessEmpty("bank_code", checkoutOptions.bankCode);
    appendUnlessEmpty("wallet_code", checkoutOptions.walletCode);
    appendUnlessEmpty("payment_flow", checkoutOptions.paymentFlow);
    if (!components) return "";

    components->setQueryItems(items);
    auto url = components->string();
    if (!url) return "";
    cachedCheckoutUrl = std::move(url);
    isUrlBuilt = true;
    return *cachedCheckoutUrl;
}

void ZorvikCheckoutWebView::loadCheckoutUrl() {
    // The page about to load is given the UPI apps again, and its address is that of the options
    // as they are now.
    upiAppsInjected = false;
    cachedCheckoutUrl.reset();
    isUrlBuilt = false;
    const auto url = URL::parse(buildCheckoutUrl());
    if (!url) {
        showError("Invalid checkout URL");
        return;
    }
    if (webView) webView->load(checkoutPageRequest(*url));
}

}  // namespace zorvik
