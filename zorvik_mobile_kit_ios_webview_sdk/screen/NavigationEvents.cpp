#include "core/EventConstants.h"
#include "platform/foundation/Console.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutWebView.h"
#include "zorvik_mobile_kit_ios_webview_sdk/common/CheckoutEvents.h"
#include "zorvik_mobile_kit_ios_webview_sdk/common/Text.h"
#include "zorvik_mobile_kit_ios_webview_sdk/screen/ErrorMessages.h"

namespace zorvik {

using platform::Error;
using platform::printLine;
using platform::WKWebView;

namespace {

std::string urlText(const WKWebView& view) {
    const auto url = view.url();
    return url ? url->absoluteString() : "nil";
}

}  // namespace

void ZorvikCheckoutWebView::webViewDidStartProvisionalNavigation(WKWebView& /*view*/) {}

void ZorvikCheckoutWebView::webViewDidCommit(WKWebView& view) {
    logEvent(EventConstants::URL_INTERCEPTED, {{"url", urlText(view)}});
}

void ZorvikCheckoutWebView::webViewDidFinish(WKWebView& view) {
    hideLoadingState();
    logEvent(EventConstants::WEBVIEW_LOADED, {{"url", urlText(view)}});
    const auto url = view.url();
    if (url && url->absoluteString().find("processing") != std::string::npos) {
        logEvent(EventConstants::REDIRECT_URL_HIT, {{"url", url->absoluteString()}});
    }
    injectUPIApps();
}

void ZorvikCheckoutWebView::webViewDidFail(WKWebView& view, const Error& error) {
    logEvent(EventConstants::WEBVIEW_FAILED,
             {{"url", urlText(view)}, {"error", error.localizedDescription}});
}

void ZorvikCheckoutWebView::webViewDidFailProvisionalNavigation(WKWebView& view,
                                                                const Error& error) {
    spinner->stopAnimating();
    hideLoadingState();
    logEvent(EventConstants::WEBVIEW_FAILED,
             {{"url", urlText(view)}, {"error", error.localizedDescription}});
    showError(error.localizedDescription);
}

void ZorvikCheckoutWebView::webViewRunJavaScriptAlertPanelWithMessage(
    WKWebView& /*view*/, const std::string& message,
    const std::function<void()>& completionHandler) {
    printLine(joined("[WEBVIEW] Alert: ", message));
    completionHandler();
}

void ZorvikCheckoutWebView::webViewRunJavaScriptConfirmPanelWithMessage(
    WKWebView& /*view*/, const std::string& message,
    const std::function<void(bool)>& completionHandler) {
    printLine(joined("[WEBVIEW] Confirm: ", message));
    completionHandler(true);
}

void ZorvikCheckoutWebView::webViewRunJavaScriptTextInputPanelWithPrompt(
    WKWebView& /*view*/, const std::string& prompt, const std::optional<std::string>& defaultText,
    const std::function<void(const std::optional<std::string>&)>& completionHandler) {
    printLine(joined("[WEBVIEW] Prompt: ", prompt));
    completionHandler(defaultText);
}

}  // namespace zorvik
