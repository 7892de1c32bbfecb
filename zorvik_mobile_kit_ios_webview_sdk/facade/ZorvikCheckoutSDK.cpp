#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutSDK.h"

#include <atomic>
#include <utility>

#include "core/APIUtils.h"
#include "core/EventConstants.h"
#include "core/EventLogging.h"
#include "core/ZorvikUPIAppDetector.h"
#include "platform/foundation/ProgrammingError.h"
#include "platform/runtime/DispatchQueue.h"
#include "platform/runtime/Environment.h"
#include "platform/runtime/MainThread.h"
#include "zorvik_mobile_kit_ios_webview_sdk/LogUtil.h"
#include "zorvik_mobile_kit_ios_webview_sdk/SDKVersion.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutWebView.h"
#include "zorvik_mobile_kit_ios_webview_sdk/common/CheckoutEvents.h"
#include "zorvik_mobile_kit_ios_webview_sdk/common/ErrorPayload.h"
#include "zorvik_mobile_kit_ios_webview_sdk/common/Text.h"
#include "zorvik_mobile_kit_ios_webview_sdk/facade/ZorvikCheckoutSDKDelegateObjCProxy.h"

namespace zorvik {

using platform::Array;
using platform::Dictionary;
using platform::DispatchQueue;
using platform::Error;
using platform::requireMainThread;
using platform::Result;
using platform::UIViewController;
using platform::Value;

namespace {

std::atomic<bool> isFirstUseLogged = false;

std::string printed(const std::optional<std::string>& text) {
    return text.value_or("nil");
}

std::string printed(const ZorvikCheckoutOptions& options) {
    return joined("orderToken: ", printed(options.orderToken),
                  ", walletCode: ", printed(options.walletCode),
                  ", paymentFlow: ", printed(options.paymentFlow),
                  ", paymentModeCode: ", printed(options.paymentModeCode),
                  ", bankCode: ", printed(options.bankCode));
}

std::string version() {
    return std::string(SDKVersion::version);
}

Array appNames(const std::vector<UPIAppsVO>& apps) {
    Array names;
    names.reserve(apps.size());
    for (const auto& app : apps) {
        names.emplace_back(app.upiAppName.value_or("Unknown"));
    }
    return names;
}

}  // namespace

// What the completions of one checkout carry from step to step, held strongly.
struct ZorvikCheckoutSDK::Checkout {
    std::string orderId;
    std::string token;
    ZorvikCheckoutOptions options;
    std::shared_ptr<ZorvikCheckoutSDKDelegateObjCProxy> proxy;
    std::shared_ptr<UIViewController> presenter;
    unsigned resets;  // the facade's when it began

    bool isOver() const { return resets != instance().resets_; }
};

ZorvikCheckoutSDK& ZorvikCheckoutSDK::instance() {
    // Never destroyed, so that completions that arrive while the process ends still find it.
    static auto& facade = *new ZorvikCheckoutSDK;
    return facade;
}

ZorvikCheckoutSDK& ZorvikCheckoutSDK::shared() {
    if (!isFirstUseLogged.exchange(true)) {
        inBackground([] {
            logEventWithoutOrder(EventConstants::SDK_INITIALIZED,
                                 {{"platform", "ios"}, {"sdk_version", version()}});
        });
    }
    return instance();
}

void ZorvikCheckoutSDK::reset() {
    requireMainThread("ZorvikCheckoutSDK::reset");
    ZorvikCheckoutSDK& facade = instance();
    const auto screen = facade.currentWebViewController.lock();
    facade.delegate_.set({});
    facade.currentProxy.reset();
    facade.currentWebViewController.reset();
    facade.environmentUrl_.reset();
    currentAppCode.reset();
    ++facade.resets_;
    isFirstUseLogged = false;
    // By way of its presenter, which takes away what stands on the screen as well.
    UIViewController* const presenter = screen ? screen->presentingViewController() : nullptr;
    if (presenter != nullptr && platform::Environment::isInstalled()) presenter->dismiss(false);
}

std::shared_ptr<ZorvikCheckoutSDKDelegate> ZorvikCheckoutSDK::delegate() const {
    requireMainThread("ZorvikCheckoutSDK::delegate");
    return delegate_.get().lock();
}

void ZorvikCheckoutSDK::setDelegate(const std::weak_ptr<ZorvikCheckoutSDKDelegate>& delegate) {
    requireMainThread("ZorvikCheckoutSDK::setDelegate");
    delegate_.set(delegate);
}

const std::optional<std::string>& ZorvikCheckoutSDK::environmentUrl() const {
    requireMainThread("ZorvikCheckoutSDK::environmentUrl");
    return environmentUrl_;
}

void ZorvikCheckoutSDK::setEnvironmentUrl(const std::optional<std::string>& url) {
    requireMainThread("ZorvikCheckoutSDK::setEnvironmentUrl");
    environmentUrl_ = url;
    if (url && !url->empty()) APIUtils::setZorvikTechUrl(*url);
}

void ZorvikCheckoutSDK::initialize(const std::optional<std::string>& appCode) {
    requireMainThread("ZorvikCheckoutSDK::initialize");
    LogUtil::debugLog(
        [&] { return joined("🚀 Initializing WebView SDK with appCode: ", printed(appCode)); });
    const bool isProvided = appCode && !appCode->empty();
    if (isProvided) {
        currentAppCode = appCode;
        EventLoggingService::setAppCode(appCode);
    }
    inBackground([isProvided] {
        logEventWithoutOrder(
            EventConstants::SDK_INITIALIZED,
            {{"platform", "ios"}, {"sdk_version", version()}, {"app_code_provided", isProvided}});
    });
}

void ZorvikCheckoutSDK::checkout(const std::shared_ptr<UIViewController>& presenter,
                                 const ZorvikCheckoutOptions& options) {
    requireMainThread("ZorvikCheckoutSDK::checkout");
    if (!presenter) {
        platform::endOnProgrammingError(
            "checkout was called without a presenter; pass the view controller of a window that "
            "is on the screen");
    }
    const auto hostDelegate = delegate();
    const auto proxy = std::make_shared<ZorvikCheckoutSDKDelegateObjCProxy>(hostDelegate);
    currentProxy = proxy;
    LogUtil::debugLog([&] {
        return joined("🔗 Created proxy with delegate: ",
                      platform::description(hostDelegate != nullptr));
    });
    LogUtil::debugLog([&] { return joined("checkout called with options: ", printed(options)); });
    LogUtil::debugLog([&] {
        return joined("🔗 Main delegate is nil: ", platform::description(hostDelegate == nullptr));
    });
    LogUtil::debugLog([&] {
        return joined("🔗 Proxy delegate is nil: ", platform::description(!proxy->hasDelegate()));
    });

    // The two flags are read when the task runs: a host may set its delegate late, or drop it. The
    // task owns neither the bridge nor, for a moment, the host's delegate.
    inBackground([this, proxy = std::weak_ptr(proxy), token = options.orderToken,
                  appCode = currentAppCode.value_or("not_set")] {
        const auto bridge = proxy.lock();
        logCheckoutEvent(EventConstants::CHECKOUT_INITIATED, token,
                         {{"delegate_present", !delegate_.get().expired()},
                          {"proxy_delegate_present", bridge && bridge->hasDelegate()},
                          {"app_code", appCode}});
    });

    if (!options.orderToken) {
        inBackground([] {
            logEventWithoutOrder(EventConstants::EXCEPTION_THROWN,
                                 {{"error", "No orderToken provided"}});
        });
        return;
    }

    Checkout checkout{
        getOrderID(*options.orderToken), *options.orderToken, options, proxy, presenter, resets_};
    LogUtil::debugLog([&] { return joined("📋 Extracted Order ID: ", checkout.orderId); });
    ZorvikCoreApiSDK::shared().updateOrderDetails(
        checkout.token, checkout.orderId, "callback_mobile", "ios", version(),
        [checkout](const Result<OrderResponse>& result) {
            DispatchQueue::main().async([checkout, result] { orderUpdateEnded(checkout, result); });
        });
}

void ZorvikCheckoutSDK::orderUpdateEnded(const Checkout& checkout,
                                         const Result<OrderResponse>& result) {
    if (checkout.isOver()) return;
    if (!result) {
        reportFailure(checkout, "Failed to update order details: ", result.error());
        return;
    }
    logCheckoutEvent(EventConstants::UPDATE_ORDER_PAYLOAD, checkout.token,
                     {{"callback_mode", "callback_mobile"}, {"platform_type", "ios"}});
    ZorvikUPIAppDetector::getUPIAppsList(
        checkout.token, [checkout](const Result<std::vector<UPIAppsVO>>& list) {
            DispatchQueue::main().async([checkout, list] { appListEnded(checkout, list); });
        });
}

void ZorvikCheckoutSDK::appListEnded(const Checkout& checkout,
                                     const Result<std::vector<UPIAppsVO>>& result) {
    if (checkout.isOver()) return;
    if (!result) {
        reportFailure(checkout, "Failed to get UPI apps: ", result.error());
        return;
    }
    const auto& apps = result.value();
    LogUtil::debugLog([&] {
        return joined("📱 UPI Apps detected: ", platform::description(Value(appNames(apps))));
    });
    logCheckoutEvent(EventConstants::UPI_APPS_LISTED, checkout.token,
                     {{"upi_apps_count", apps.size()}, {"upi_apps", appNames(apps)}});
    presentScreen(checkout, apps);
}

void ZorvikCheckoutSDK::reportFailure(const Checkout& checkout, const std::string& message,
                                      const Error& error) {
    LogUtil::debugLog([&] { return joined("❌ ", message, error.localizedDescription); });
    logCheckoutEvent(EventConstants::EXCEPTION_THROWN, checkout.token,
                     {{"error", error.localizedDescription}});
    if (const auto hostDelegate = instance().delegate()) {
        hostDelegate->onCheckoutResponse(
            errorPayload(message + error.localizedDescription, checkout.token));
    }
}

void ZorvikCheckoutSDK::presentScreen(const Checkout& checkout,
                                      const std::vector<UPIAppsVO>& apps) {
    const auto screen = ZorvikCheckoutWebView::initWithOptions(checkout.options, apps);
    screen->setDelegate(checkout.proxy);
    instance().currentWebViewController = screen;
    LogUtil::debugLog([&] {
        return joined("🔗 Webview delegate set: ",
                      platform::description(screen->delegate() != nullptr));
    });
    checkout.presenter->present(screen, true);
}

void ZorvikCheckoutSDK::handleDeviceBackButtonPress() {
    requireMainThread("ZorvikCheckoutSDK::handleDeviceBackButtonPress");
    inBackground([] {
        logEventWithoutOrder(EventConstants::BACK_BUTTON_PRESSED,
                             {{"source", "device_back_button"}, {"platform", "ios"}});
    });
    if (const auto screen = currentWebViewController.lock()) {
        screen->handleDeviceBackButtonPress();
    }
}

}  // namespace zorvik
