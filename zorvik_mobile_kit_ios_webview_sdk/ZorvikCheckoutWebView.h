#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/OrderRecords.h"
#include "core/UPIAppsVO.h"
#include "core/ZorvikCheckoutOptions.h"
#include "platform/foundation/Export.h"
#include "platform/runtime/Guarded.h"
#include "platform/uikit/UIActivityIndicatorView.h"
#include "platform/uikit/UIButton.h"
#include "platform/uikit/UILabel.h"
#include "platform/uikit/UIViewController.h"
#include "platform/webkit/WKWebView.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutDelegates.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikShimmerView.h"

namespace zorvik {

// The full-screen checkout: a web view on the hosted checkout page, a skeleton until the page is
// there, an error panel with Retry, the way out to a UPI app and back. Made by the facade or a
// host, owned by the controller that presents it. Main thread, unless a member says otherwise; it
// may be released on any thread. Reports to its delegate and does not close itself.
class ZORVIK_API ZorvikCheckoutWebView : public platform::UIViewController,
                                         public platform::WKNavigationDelegate,
                                         public platform::WKUIDelegate,
                                         public platform::WKScriptMessageHandler {
  public:
    // Main thread, with a port installed. Present it full screen; its view loads the page.
    static std::shared_ptr<ZorvikCheckoutWebView> initWithOptions(
        const ZorvikCheckoutOptions& options, const std::optional<std::vector<UPIAppsVO>>& upiApps);
    ~ZorvikCheckoutWebView() override;

    // A copy. Read on any thread, written on the main one; each load takes them as they are then.
    ZorvikCheckoutOptions options() const { return options_.get(); }
    void setOptions(const ZorvikCheckoutOptions& options) { options_.set(options); }
    // What the page is given to choose from; absent: nothing is given.
    const std::optional<std::vector<UPIAppsVO>>& upiApps() const { return upiApps_; }
    void setUpiApps(std::optional<std::vector<UPIAppsVO>> apps) { upiApps_ = std::move(apps); }
    // The receiver of the outcome, held weakly.
    std::shared_ptr<ZorvikCheckoutWebViewDelegate> delegate() const { return delegate_.lock(); }
    void setDelegate(const std::weak_ptr<ZorvikCheckoutWebViewDelegate>& delegate) {
        delegate_ = delegate;
    }

    // Tells the page of a device back; the page decides what comes of it.
    void handleDeviceBackButtonPress();
    // Actions for a navigation bar's back button and a swipe, should a host install one.
    void backButtonTapped();
    void swipeBackDetected();

    void viewDidLoad() override;
    void viewWillDisappear(bool animated) override;
    void viewDidDisappear(bool animated) override;

    void webViewDecidePolicyFor(platform::WKWebView& view,
                                const platform::WKNavigationAction& action,
                                const DecisionHandler& decisionHandler) override;
    void webViewDidStartProvisionalNavigation(platform::WKWebView& view) override;
    void webViewDidCommit(platform::WKWebView& view) override;
    void webViewDidFinish(platform::WKWebView& view) override;
    void webViewDidFail(platform::WKWebView& view, const platform::Error& error) override;
    void webViewDidFailProvisionalNavigation(platform::WKWebView& view,
                                             const platform::Error& error) override;

    void webViewRunJavaScriptAlertPanelWithMessage(
        platform::WKWebView& view, const std::string& message,
        const std::function<void()>& completionHandler) override;
    void webViewRunJavaScriptConfirmPanelWithMessage(
        platform::WKWebView& view, const std::string& message,
        const std::function<void(bool)>& completionHandler) override;
    void webViewRunJavaScriptTextInputPanelWithPrompt(
        platform::WKWebView& view, const std::string& prompt,
        const std::optional<std::string>& defaultText,
        const std::function<void(const std::optional<std::string>&)>& completionHandler) override;

    void userContentControllerDidReceive(platform::WKUserContentController& controller,
                                         const platform::WKScriptMessage& message) override;

  private:
    using TransactionData = std::map<std::string, std::string>;
    struct UPIFailureKind;

    template <class T, class... Arguments>
    friend std::shared_ptr<T> platform::makeOnMainThread(Arguments&&...);
    friend class ZorvikCheckoutSDKDelegateObjCProxy;  // reads _extractedTransactionId

    ZorvikCheckoutWebView(const ZorvikCheckoutOptions& options,
                          const std::optional<std::vector<UPIAppsVO>>& upiApps);

    std::shared_ptr<ZorvikCheckoutWebView> self();
    std::weak_ptr<ZorvikCheckoutWebView> weakSelf();
    // Logs an event of this checkout now. Any thread.
    void logEvent(std::string_view eventName, const platform::Dictionary& additionalData) const;

    // The page's address; nullopt before a load, after the web process died and without a web view.
    std::optional<platform::URL> currentUrl() const;
    void reportFailureNextTurn(const platform::Dictionary& payload);
    void reportFailure(const platform::Dictionary& payload);

    // Layout and loading state
    void setupShimmerView();
    void setupWebView();
    void setupSpinner();
    void setupErrorView();
    void showWebView();
    void hideLoadingState();
    void showError(const std::string& message);
    void retryTapped();
    void cleanup();
    void cleanupIfDismissed();

    // Checkout URL
    std::string buildCheckoutUrl();
    void loadCheckoutUrl();

    // Navigation policy
    bool isUPIAppReturnByScheme(const std::string& url) const;

    // Page bridge
    void injectUPIApps();
    void sendUPIResponse(const std::string& status, const std::string& message);

    // UPI launch
    // `fields`: the message's body, read once, for a page may post megabytes.
    void handleUPIIntent(const platform::WKScriptMessage& message,
                         const std::optional<std::map<std::string, std::string>>& fields);
    void launchUPIApp(const std::string& packageName, const std::string& upiUrl,
                      const std::string& transactionId);
    void storeTransactionDetails(const std::string& transactionId, const std::string& packageName);

    // UPI status
    void handleUPISuccess(const TransactionData& data);
    void handleUPIFailure(const TransactionData& data);
    void handleUPICancellation(const TransactionData& data);
    void handleUPIUnknown(const TransactionData& data);
    void transactionEnquiryEnded(const platform::Result<TransactionEnquiryResponse>& result);
    void reportUPIFailure(const UPIFailureKind& kind, const std::string& reason,
                          const std::string& transactionId, const TransactionData& data);
    static std::string getOrderID(const std::string& token);

    // App return
    void appDidBecomeActive();
    void checkProcessingURLForResponse();
    void handleUPIAppReturn(const std::string& url);
    void handleUPIBackNavigation();

    // Payment response
    void handleWebViewRespCheckUrl(const std::string& url);
    void processPaymentResponse(const std::string& response);
    void handleParsedResponse(const platform::Dictionary& data);

    // Back navigation
    void insertJSToWebview(bool isDeviceBackPressed);
    void handleBackAction(const std::string& line, const std::string& source);
    void handleDeviceBackPressed();
    std::string buildBrowserBackURL(const std::string& currentUrl, const std::string& expectedUrl);
    void handleUpiIntentBack();
    void postUpiIntentBack(const platform::Result<TransactionEnquiryResponse>& result);

    // Read by event tasks on the background queue.
    platform::Guarded<ZorvikCheckoutOptions> options_;
    std::optional<std::vector<UPIAppsVO>> upiApps_;
    std::weak_ptr<ZorvikCheckoutWebViewDelegate> delegate_;
    // Taken from a UPI status callback; what the result bridge falls back on.
    std::string _extractedTransactionId;
    std::shared_ptr<platform::WKWebView> webView;
    // Whether the page of this load has been given the UPI apps.
    bool upiAppsInjected = false;
    const std::shared_ptr<ZorvikShimmerView> shimmerView;
    const std::shared_ptr<platform::UIActivityIndicatorView> spinner;
    const std::shared_ptr<platform::UIView> errorView;
    const std::shared_ptr<platform::UILabel> errorLabel;
    const std::shared_ptr<platform::UIButton> retryButton;
    std::optional<std::string> cachedCheckoutUrl;
    // Whether cachedCheckoutUrl is that of the current load.
    bool isUrlBuilt = false;
};

}  // namespace zorvik
