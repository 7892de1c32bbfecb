#include <array>

#include "core/EventConstants.h"
#include "platform/foundation/Console.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutWebView.h"
#include "zorvik_mobile_kit_ios_webview_sdk/screen/ErrorMessages.h"
#include "zorvik_mobile_kit_ios_webview_sdk/shared/CheckoutEvents.h"
#include "zorvik_mobile_kit_ios_webview_sdk/shared/Text.h"

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

std::string_view errorText(const std::string& message) {
    struct Row {
        std::string_view keyword;
        std::string_view text;
    };
    static constexpr std::array<Row, 3> table{{
        {"network",
         "Network connection issue. Please check your internet connection and try again."},
        {"invalid", "Invalid checkout URL. Please try again or contact support."},
        {"timeout", "Request timed out. Please try again."},
    }};
    const std::string lowered = lowercased(message);
    for (const auto& row : table) {
        if (lowered.find(row.keyword) != std::string::npos) return row.text;
    }
    return "Something went wrong. Please try again.";
}

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
