#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutWebView.h"

#include <utility>

#include "core/EventConstants.h"
#include "platform/foundation/Console.h"
#include "platform/runtime/DispatchQueue.h"
#include "platform/runtime/Environment.h"
#include "platform/runtime/MainThread.h"
#include "platform/runtime/NotificationCenter.h"
#include "platform/runtime/UserDefaults.h"
#include "platform/uikit/UIApplication.h"
#include "zorvik_mobile_kit_ios_webview_sdk/common/CheckoutEvents.h"
#include "zorvik_mobile_kit_ios_webview_sdk/common/Text.h"
#include "zorvik_mobile_kit_ios_webview_sdk/screen/ErrorMessages.h"
#include "zorvik_mobile_kit_ios_webview_sdk/screen/IntentMessage.h"
#include "zorvik_mobile_kit_ios_webview_sdk/screen/TransactionRecord.h"

namespace zorvik {

using platform::Dictionary;
using platform::DispatchQueue;
using platform::makeOnMainThread;
using platform::NotificationCenter;
using platform::NSLayoutConstraint;
using platform::printLine;
using platform::UIActivityIndicatorView;
using platform::UIApplication;
using platform::UIButton;
using platform::UIColor;
using platform::UILabel;
using platform::UIView;
using platform::UserDefaults;
using platform::WKWebView;

namespace {

// Pins a view to the root's safe area, and at the bottom to the given anchor.
void pinToSafeArea(UIView& view, UIView& root, const platform::NSLayoutAnchor& bottom) {
    NSLayoutConstraint::activate({
        view.topAnchor().constraintEqualTo(root.safeAreaLayoutGuide().topAnchor),
        view.leadingAnchor().constraintEqualTo(root.leadingAnchor()),
        view.trailingAnchor().constraintEqualTo(root.trailingAnchor()),
        view.bottomAnchor().constraintEqualTo(bottom),
    });
}

}  // namespace

std::shared_ptr<ZorvikCheckoutWebView> ZorvikCheckoutWebView::initWithOptions(
    const ZorvikCheckoutOptions& options, const std::optional<std::vector<UPIAppsVO>>& upiApps) {
    return makeOnMainThread<ZorvikCheckoutWebView>(options, upiApps);
}

ZorvikCheckoutWebView::ZorvikCheckoutWebView(const ZorvikCheckoutOptions& options,
                                             const std::optional<std::vector<UPIAppsVO>>& upiApps)
    : options_(options),
      upiApps_(upiApps),
      shimmerView(ZorvikShimmerView::initWithFrame()),
      spinner(makeOnMainThread<UIActivityIndicatorView>(UIActivityIndicatorView::Style::large)),
      errorView(makeOnMainThread<UIView>()),
      errorLabel(makeOnMainThread<UILabel>()),
      retryButton(makeOnMainThread<UIButton>()) {
    setModalPresentationStyle(platform::UIModalPresentationStyle::fullScreen);
}

ZorvikCheckoutWebView::~ZorvikCheckoutWebView() {
    // A screen may outlive the port it was made on; there is nothing to clean up then.
    if (platform::Environment::isInstalled()) cleanup();
}

std::shared_ptr<ZorvikCheckoutWebView> ZorvikCheckoutWebView::self() {
    return std::static_pointer_cast<ZorvikCheckoutWebView>(shared_from_this());
}

std::weak_ptr<ZorvikCheckoutWebView> ZorvikCheckoutWebView::weakSelf() {
    return self();
}

void ZorvikCheckoutWebView::logEvent(std::string_view eventName,
                                     const Dictionary& additionalData) const {
    logCheckoutEvent(eventName, options().orderToken, additionalData);
}

std::optional<platform::URL> ZorvikCheckoutWebView::currentUrl() const {
    return webView ? webView->url() : std::nullopt;
}

void ZorvikCheckoutWebView::reportFailureNextTurn(const Dictionary& payload) {
    DispatchQueue::main().async([screen = weakSelf(), payload] {
        if (const auto controller = screen.lock()) controller->reportFailure(payload);
    });
}

void ZorvikCheckoutWebView::reportFailure(const Dictionary& payload) {
    if (const auto receiver = delegate()) receiver->zorvikCheckoutWebViewDidFail(self(), payload);
}

void ZorvikCheckoutWebView::viewDidLoad() {
    UIViewController::viewDidLoad();
    view()->setBackgroundColor(UIColor::white());
    setupShimmerView();
    setupWebView();
    setupSpinner();
    setupErrorView();
    webView->setHidden(true);
    shimmerView->showShimmer();
    loadCheckoutUrl();
    // The fixed text, not the address: the address holds the token.
    logEvent(EventConstants::WEBVIEW_LAUNCH, {{"url", "checkout_url"}});
    NotificationCenter::defaultCenter().addObserver(weakSelf(),
                                                    &ZorvikCheckoutWebView::appDidBecomeActive,
                                                    UIApplication::didBecomeActiveNotification);
}

void ZorvikCheckoutWebView::setupShimmerView() {
    shimmerView->setTranslatesAutoresizingMaskIntoConstraints(false);
    shimmerView->setHidden(true);
    view()->addSubview(shimmerView);
    pinToSafeArea(*shimmerView, *view(), view()->safeAreaLayoutGuide().bottomAnchor);
}

void ZorvikCheckoutWebView::setupWebView() {
    platform::WKPreferences preferences;
    platform::WKWebpagePreferences pagePreferences;
    pagePreferences.allowsContentJavaScript = true;
    preferences.javaScriptCanOpenWindowsAutomatically = true;
    platform::WKWebViewConfiguration configuration;
    configuration.defaultWebpagePreferences = pagePreferences;
    configuration.preferences = preferences;

    webView = makeOnMainThread<WKWebView>(platform::Rect{}, configuration);
    webView->setTranslatesAutoresizingMaskIntoConstraints(false);
    webView->setUIDelegate(weakSelf());
    webView->setNavigationDelegate(weakSelf());
    webView->configuration().userContentController->add(weakSelf(), std::string(intentMessageName));
    view()->addSubview(webView);
    pinToSafeArea(*webView, *view(), view()->safeAreaLayoutGuide().bottomAnchor);
}

void ZorvikCheckoutWebView::setupSpinner() {
    spinner->setTranslatesAutoresizingMaskIntoConstraints(false);
    spinner->setHidesWhenStopped(true);
    view()->addSubview(spinner);
    NSLayoutConstraint::activate({
        spinner->centerXAnchor().constraintEqualTo(view()->centerXAnchor()),
        spinner->centerYAnchor().constraintEqualTo(view()->centerYAnchor()),
    });
}

void ZorvikCheckoutWebView::setupErrorView() {
    errorView->setBackgroundColor(UIColor::white());
    errorView->setHidden(true);
    errorView->setTranslatesAutoresizingMaskIntoConstraints(false);
    view()->addSubview(errorView);
    // Down to the very bottom, past the safe area, so that nothing shows below the panel.
    pinToSafeArea(*errorView, *view(), view()->bottomAnchor());

    errorLabel->setText("Something went wrong.");
    errorLabel->setTextAlignment(platform::NSTextAlignment::center);
    errorLabel->setNumberOfLines(0);
    errorLabel->setTranslatesAutoresizingMaskIntoConstraints(false);
    errorView->addSubview(errorLabel);

    retryButton->setTitle("Retry");
    retryButton->setTitleColor(UIColor::systemBlue());
    retryButton->setTarget(weakSelf(), &ZorvikCheckoutWebView::retryTapped);
    retryButton->setTranslatesAutoresizingMaskIntoConstraints(false);
    errorView->addSubview(retryButton);

    NSLayoutConstraint::activate({
        errorLabel->centerXAnchor().constraintEqualTo(errorView->centerXAnchor()),
        errorLabel->centerYAnchor().constraintEqualTo(errorView->centerYAnchor(), -20),
        errorLabel->leadingAnchor().constraintEqualTo(errorView->leadingAnchor(), 24),
        errorLabel->trailingAnchor().constraintEqualTo(errorView->trailingAnchor(), -24),
        retryButton->topAnchor().constraintEqualTo(errorLabel->bottomAnchor(), 16),
        retryButton->centerXAnchor().constraintEqualTo(errorView->centerXAnchor()),
    });
}

void ZorvikCheckoutWebView::hideLoadingState() {
    shimmerView->hideShimmer([screen = weakSelf()] {
        if (const auto controller = screen.lock()) controller->showWebView();
    });
}

void ZorvikCheckoutWebView::showWebView() {
    if (!webView) return;
    webView->setHidden(false);
    webView->setAlpha(0);
    UIView::animate(0.3, [this] { webView->setAlpha(1); });
}

void ZorvikCheckoutWebView::showError(const std::string& message) {
    spinner->stopAnimating();
    errorLabel->setText(std::string(errorText(message)));
    errorView->setHidden(false);
}

void ZorvikCheckoutWebView::retryTapped() {
    errorView->setHidden(true);
    loadCheckoutUrl();
}

void ZorvikCheckoutWebView::cleanup() {
    shimmerView->stopShimmerAnimation();
    if (webView) {
        webView->stopLoading();
        auto& content = *webView->configuration().userContentController;
        content.removeAllUserScripts();
        content.removeAllContentRuleLists();
        content.removeScriptMessageHandler(std::string(intentMessageName));
        webView->setUIDelegate({});
        webView->setNavigationDelegate({});
    }
    webView = nullptr;
    NotificationCenter::defaultCenter().removeObserver(this);
    UserDefaults::standard().removeObjects(
        {TransactionRecord::keys.begin(), TransactionRecord::keys.end()});
    upiAppsInjected = false;
}

void ZorvikCheckoutWebView::viewWillDisappear(bool animated) {
    UIViewController::viewWillDisappear(animated);
    printLine("[VIEW LIFECYCLE] 🚀 viewWillDisappear called");
    cleanupIfDismissed();
}

void ZorvikCheckoutWebView::viewDidDisappear(bool animated) {
    UIViewController::viewDidDisappear(animated);
    printLine("[VIEW LIFECYCLE] 🚀 viewDidDisappear called");
    cleanupIfDismissed();
}

void ZorvikCheckoutWebView::cleanupIfDismissed() {
    const bool isDismissed = isBeingDismissed() || isMovingFromParent();
    printLine(
        joined("[VIEW LIFECYCLE] 📊 Is being dismissed: ", platform::description(isDismissed)));
    if (isDismissed) {
        printLine("[VIEW LIFECYCLE] 🧹 Performing cleanup due to dismissal");
        cleanup();
    } else {
        // The page, the registration and the transaction record stay for the return from a UPI app.
        printLine("[VIEW LIFECYCLE] ⏸️ Skipping cleanup - might be UPI app return");
    }
}

}  // namespace zorvik
