#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/foundation/Export.h"

namespace zorvik::platform {

class WKWebView;

// Answers a page's script panels, on the main thread; each completion is called exactly once, and
// the page waits for it. Held weakly. Without a delegate an alert is closed, a confirm answered
// false and a prompt answered with nothing.
class ZORVIK_API WKUIDelegate {
  public:
    virtual ~WKUIDelegate() = default;

    virtual void webViewRunJavaScriptAlertPanelWithMessage(
        WKWebView& webView, const std::string& message,
        const std::function<void()>& completionHandler) = 0;
    virtual void webViewRunJavaScriptConfirmPanelWithMessage(
        WKWebView& webView, const std::string& message,
        const std::function<void(bool)>& completionHandler) = 0;
    virtual void webViewRunJavaScriptTextInputPanelWithPrompt(
        WKWebView& webView, const std::string& prompt,
        const std::optional<std::string>& defaultText,
        const std::function<void(const std::optional<std::string>&)>& completionHandler) = 0;
};

}  // namespace zorvik::platform
