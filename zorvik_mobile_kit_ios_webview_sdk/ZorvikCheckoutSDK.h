#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/UPIAppsVO.h"
#include "core/ZorvikCheckoutOptions.h"
#include "core/ZorvikCoreApiSDK.h"
#include "platform/foundation/Export.h"
#include "platform/runtime/Guarded.h"
#include "platform/uikit/UIViewController.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutDelegates.h"

namespace zorvik {

class ZorvikCheckoutSDKDelegateObjCProxy;

// The one object a host talks to. Lives for the process; main thread, unless a member says
// otherwise: a call from another thread ends the process with a message that names it. A port must
// be installed before the first use.
//
//     auto& sdk = ZorvikCheckoutSDK::shared();
//     sdk.setDelegate(receiver);
//     sdk.checkout(presenter, options);
class ZORVIK_API ZorvikCheckoutSDK {
  public:
    // Any thread. The first use logs SDK_INITIALIZED.
    static ZorvikCheckoutSDK& shared();

    // Puts everything back to how it was before the first use: no delegate, environment address,
    // app code or bridge. For tests that share a process, and to forget one customer for the next.
    // A checkout under way ends unreported: what it still waits for comes to nothing, an open
    // screen closes without animation within the next turns. References to the shared object stay
    // good; the next use of shared() counts as the first again. The core services keep what they
    // were told.
    static void reset();

    ZorvikCheckoutSDK(const ZorvikCheckoutSDK&) = delete;
    ZorvikCheckoutSDK& operator=(const ZorvikCheckoutSDK&) = delete;

    // The receiver of results, held weakly. A result of the checkout screen goes to the delegate
    // of the moment the checkout started, a failure before the screen to that of its own moment.
    std::shared_ptr<ZorvikCheckoutSDKDelegate> delegate() const;
    // Takes the place of the one before.
    void setDelegate(const std::weak_ptr<ZorvikCheckoutSDKDelegate>& delegate);
    // Takes the delegate away.
    void setDelegate(std::nullptr_t) { setDelegate(std::weak_ptr<ZorvikCheckoutSDKDelegate>()); }

    // The back end's base address, passed on to the core services; absent or empty changes only
    // what is read here.
    const std::optional<std::string>& environmentUrl() const;
    // Called before a checkout starts.
    void setEnvironmentUrl(const std::optional<std::string>& url);

    // Names the host's application in later events; absent or empty keeps an earlier code.
    void initialize(const std::optional<std::string>& appCode);

    // Takes the payment of an order: updates it, lists the UPI apps and presents the checkout
    // screen over the presenter, which is held until then. Returns at once. A failed update or
    // listing reaches the delegate as a failure; without a token nothing but an event comes of it.
    // A null presenter is a programming error and ends the process with a message.
    void checkout(const std::shared_ptr<platform::UIViewController>& presenter,
                  const ZorvikCheckoutOptions& options);

    // Tells the open checkout screen, if any, of a back action of the host's.
    void handleDeviceBackButtonPress();

    // Creates an order on the host's behalf. Any thread. The completion receives the core services'
    // result unchanged, on their thread.
    void createOrder(double amount, const std::string& currency,
                     const std::vector<platform::Dictionary>& orderLineItems,
                     const std::optional<platform::Dictionary>& user,
                     ZorvikCoreApiSDK::OrderCompletion completion);
    // The same for a hosted shop, whose core service has parameters of its own.
    void createShopOrder(const std::string& currency, const std::string& amount,
                         const std::string& productId, bool orderLineItems,
                         const std::string& checkoutExperience, const std::string& paymentMode,
                         const std::string& subPaymentMode,
                         const std::optional<platform::Dictionary>& user,
                         ZorvikCoreApiSDK::ShopOrderCompletion completion);

    // The claim "order_id" of an order token, nothing verified; "" when it cannot be read. Pure;
    // any thread.
    static std::string getOrderID(std::string_view token);
    // The same for "sub_merchant_id".
    static std::string getSubMerchantID(std::string_view token);

  private:
    struct Checkout;

    ZorvikCheckoutSDK() = default;

    static ZorvikCheckoutSDK& instance();
    static void orderUpdateEnded(const Checkout& checkout,
                                 const platform::Result<OrderResponse>& result);
    static void appListEnded(const Checkout& checkout,
                             const platform::Result<std::vector<UPIAppsVO>>& result);
    static void reportFailure(const Checkout& checkout, const std::string& message,
                              const platform::Error& error);
    static void presentScreen(const Checkout& checkout, const std::vector<UPIAppsVO>& apps);

    // Read by the event task of a checkout's start, off the main thread.
    platform::Guarded<std::weak_ptr<ZorvikCheckoutSDKDelegate>> delegate_;
    // The only strong owner of the bridge while a screen is open; kept until the next checkout.
    std::shared_ptr<ZorvikCheckoutSDKDelegateObjCProxy> currentProxy;
    std::weak_ptr<ZorvikCheckoutWebView> currentWebViewController;
    std::optional<std::string> environmentUrl_;
    // How often everything was put back; a checkout begun before is over.
    unsigned resets_ = 0;
    static inline std::optional<std::string> currentAppCode;
};

}  // namespace zorvik
