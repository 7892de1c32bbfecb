#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/foundation/Export.h"
#include "platform/foundation/URLRequest.h"
#include "platform/services/WebEngine.h"
#include "platform/uikit/UIView.h"
#include "platform/webkit/WKNavigationDelegate.h"
#include "platform/webkit/WKUIDelegate.h"
#include "platform/webkit/WKWebViewConfiguration.h"

namespace zorvik::platform {

// A view that shows web pages of the installed port's engine. See UIView for owner and thread.
class ZORVIK_API WKWebView : public UIView {
  public:
    using EvaluationCompletion = std::function<void(const Result<ScriptValue>&)>;

    WKWebView(Rect frame, WKWebViewConfiguration configuration);
    ~WKWebView() override;

    WKWebViewConfiguration& configuration() { return configuration_; }
    // Both held weakly; an empty pointer takes the delegate away.
    void setNavigationDelegate(std::weak_ptr<WKNavigationDelegate> delegate);
    void setUIDelegate(std::weak_ptr<WKUIDelegate> delegate);

    // Never reports inside the call. A load under way fails as cancelled first.
    void load(const URLRequest& request);
    void stopLoading();
    // The address asked for while a load of the host's is under way, else that of the page shown;
    // nullopt before the first load and after the web process died.
    std::optional<URL> url() const;
    // The completion runs exactly once, later, on the main thread, with the script's value or an
    // error, also when the page or this view is gone by then.
    void evaluateJavaScript(const std::string& script, EvaluationCompletion completion);

    // The engine's page behind the view, for the port's stage to show. Lives as long as the view.
    WebPage& page() { return page_->enginePage(); }

  private:
    class Events;

    WKWebViewConfiguration configuration_;
    std::shared_ptr<WKUserContentController> attachedController_;  // whatever the host does above
    std::weak_ptr<WKNavigationDelegate> navigationDelegate_;
    std::weak_ptr<WKUIDelegate> uiDelegate_;
    std::shared_ptr<Events> events_;
    std::unique_ptr<WebPage> page_;
};

}  // namespace zorvik::platform
