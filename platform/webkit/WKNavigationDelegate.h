#pragma once

#include <functional>
#include <optional>

#include "platform/foundation/Error.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/URL.h"

namespace zorvik::platform {

class WKWebView;

enum class WKNavigationActionPolicy { cancel, allow };

// A navigation somebody wants to make.
struct WKNavigationAction {
    // Where to; no address when the engine named none.
    struct Request {
        std::optional<URL> url;
    };
    Request request;
};

// Decides about and hears of a web view's navigations, on the main thread. Held weakly. Without a
// delegate every navigation is allowed.
class ZORVIK_API WKNavigationDelegate {
  public:
    using DecisionHandler = std::function<void(WKNavigationActionPolicy)>;

    virtual ~WKNavigationDelegate() = default;

    // Before each navigation, of sub-frames too. The handler is called once, now or later; dropping
    // it unanswered cancels the navigation.
    virtual void webViewDecidePolicyFor(WKWebView& webView, const WKNavigationAction& action,
                                        const DecisionHandler& decisionHandler) = 0;
    virtual void webViewDidStartProvisionalNavigation(WKWebView& webView) = 0;
    virtual void webViewDidCommit(WKWebView& webView) = 0;
    virtual void webViewDidFinish(WKWebView& webView) = 0;
    // After the commit, respectively before it.
    virtual void webViewDidFail(WKWebView& webView, const Error& error) = 0;
    virtual void webViewDidFailProvisionalNavigation(WKWebView& webView, const Error& error) = 0;
};

}  // namespace zorvik::platform
