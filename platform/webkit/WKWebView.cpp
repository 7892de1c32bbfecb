#include "platform/webkit/WKWebView.h"

#include <utility>

#include "platform/runtime/Environment.h"

namespace zorvik::platform {

// Hears the page and tells the delegates. The view outlives each report it is in the middle of.
class WKWebView::Events : public WebPageDelegate {
  public:
    explicit Events(WKWebView& view) : view_(&view) {}

    void detach() { view_ = nullptr; }

    void pageAsksToNavigate(const std::optional<URL>& url,
                            std::function<void(NavigationDecision)> decide) override {
        const auto view = livingView();
        if (!view) return;
        const auto delegate = view->navigationDelegate_.lock();
        if (!delegate) return decide(NavigationDecision::allow);
        WKNavigationAction action;
        action.request.url = url;
        delegate->webViewDecidePolicyFor(
            *view, action, [decide = std::move(decide)](WKNavigationActionPolicy policy) {
                decide(policy == WKNavigationActionPolicy::allow ? NavigationDecision::allow
                                                                 : NavigationDecision::cancel);
            });
    }

    void pageStarted() override {
        tell([](auto& delegate, auto& view) {
            delegate.webViewDidStartProvisionalNavigation(view);
        });
    }
    void pageCommitted() override {
        tell([](auto& delegate, auto& view) { delegate.webViewDidCommit(view); });
    }
    void pageFinished() override {
        tell([](auto& delegate, auto& view) { delegate.webViewDidFinish(view); });
    }
    void pageFailedBeforeCommit(const Error& error) override {
        tell([&](auto& delegate, auto& view) {
            delegate.webViewDidFailProvisionalNavigation(view, error);
        });
    }
    void pageFailedAfterCommit(const Error& error) override {
        tell([&](auto& delegate, auto& view) { delegate.webViewDidFail(view, error); });
    }

    void pagePosted(const std::string& name, const ScriptValue& body) override {
        const auto view = livingView();
        if (!view) return;
        const auto controller = view->attachedController_;
        controller->deliver(name, body);
    }

    void pageAsksWithPanel(const ScriptPanel& panel,
                           std::function<void(ScriptPanelAnswer)> answer) override {
        const auto view = livingView();
        if (!view) return;
        const auto delegate = view->uiDelegate_.lock();
        if (!delegate) return answer({});
        switch (panel.kind) {
            case ScriptPanel::Kind::alert:
                return delegate->webViewRunJavaScriptAlertPanelWithMessage(
                    *view, panel.message, [answer] { answer({}); });
            case ScriptPanel::Kind::confirm:
                return delegate->webViewRunJavaScriptConfirmPanelWithMessage(
                    *view, panel.message, [answer](bool confirmed) {
                        answer({confirmed, std::nullopt});
                    });
            case ScriptPanel::Kind::prompt:
                return delegate->webViewRunJavaScriptTextInputPanelWithPrompt(
                    *view, panel.message, panel.defaultText,
                    [answer](const std::optional<std::string>& text) {
                        answer({text.has_value(), text});
                    });
        }
    }

  private:
    std::shared_ptr<WKWebView> livingView() const {
        return view_ ? std::static_pointer_cast<WKWebView>(view_->weak_from_this().lock())
                     : nullptr;
    }

    template <class Call>
    void tell(const Call& call) const {
        const auto view = livingView();
        if (!view) return;
        if (const auto delegate = view->navigationDelegate_.lock()) call(*delegate, *view);
    }

    WKWebView* view_;
};

WKWebView::WKWebView(Rect frame, WKWebViewConfiguration configuration)
    : UIView(frame),
      configuration_(std::move(configuration)),
      events_(std::make_shared<Events>(*this)) {
    assertMainThread();
    WebPageConfiguration page;
    page.allowsContentJavaScript = configuration_.defaultWebpagePreferences.allowsContentJavaScript;
    page.javaScriptCanOpenWindowsAutomatically =
        configuration_.preferences.javaScriptCanOpenWindowsAutomatically;
    page_ = Environment::webEngine().makePage(page, events_);
    if (!configuration_.userContentController) {
        configuration_.userContentController = std::make_shared<WKUserContentController>();
    }
    attachedController_ = configuration_.userContentController;
    attachedController_->attach(*page_);
}

WKWebView::~WKWebView() {
    events_->detach();
    attachedController_->detach(*page_);
}

void WKWebView::setNavigationDelegate(std::weak_ptr<WKNavigationDelegate> delegate) {
    assertMainThread();
    navigationDelegate_ = std::move(delegate);
}

void WKWebView::setUIDelegate(std::weak_ptr<WKUIDelegate> delegate) {
    assertMainThread();
    uiDelegate_ = std::move(delegate);
}

void WKWebView::load(const URLRequest& request) {
    assertMainThread();
    page_->load(request);
}

void WKWebView::stopLoading() {
    assertMainThread();
    page_->stopLoading();
}

std::optional<URL> WKWebView::url() const {
    assertMainThread();
    return page_->currentUrl();
}

void WKWebView::evaluateJavaScript(const std::string& script, EvaluationCompletion completion) {
    assertMainThread();
    if (!completion) completion = [](const Result<ScriptValue>&) {};
    page_->evaluate(script, std::move(completion));
}

}  // namespace zorvik::platform
