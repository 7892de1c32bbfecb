#pragma once

#include <memory>

#include "platform/foundation/Export.h"
#include "platform/foundation/Value.h"

namespace zorvik {

class ZorvikCheckoutWebView;

// The host's receiver of checkout results. Owned by the host, held weakly; called on the main
// thread.
class ZORVIK_API ZorvikCheckoutSDKDelegate {
  public:
    virtual ~ZorvikCheckoutSDKDelegate() = default;

    // A result of a checkout, success or failure, told apart by its content: a failure of the
    // component's own making holds "error", "order_id", "zorvik_order_id", "token" and
    // "subMerchantId"; everything else is what the checkout page or the enquiry answered. Usually
    // one a checkout; a page that answers twice before the screen has closed gives two.
    virtual void onCheckoutResponse(const platform::Dictionary& data) = 0;
};

// Receives a checkout screen's outcome, on the main thread. Held weakly by the screen.
class ZORVIK_API ZorvikCheckoutWebViewDelegate {
  public:
    virtual ~ZorvikCheckoutWebViewDelegate() = default;

    // The page answered, or the back end confirmed; the payload may tell of a payment that failed.
    virtual void zorvikCheckoutWebViewDidSucceed(
        const std::shared_ptr<ZorvikCheckoutWebView>& screen,
        const platform::Dictionary& payload) = 0;
    // The page's response could not be read, the enquiry failed, or a UPI app told of no payment:
    // "error" says which.
    virtual void zorvikCheckoutWebViewDidFail(const std::shared_ptr<ZorvikCheckoutWebView>& screen,
                                              const platform::Dictionary& payload) = 0;
};

}  // namespace zorvik
