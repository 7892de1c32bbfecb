#pragma once

#include <memory>
#include <utility>

#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutDelegates.h"

namespace zorvik {

// The bridge from one checkout's screen to the host: logs the payment status, hands the payload to
// the host unchanged, once for each report, and closes the screen. Owned by the facade as its
// current proxy; main thread.
class ZorvikCheckoutSDKDelegateObjCProxy final : public ZorvikCheckoutWebViewDelegate {
  public:
    explicit ZorvikCheckoutSDKDelegateObjCProxy(std::weak_ptr<ZorvikCheckoutSDKDelegate> delegate)
        : delegate_(std::move(delegate)) {}

    // Any thread.
    bool hasDelegate() const { return !delegate_.expired(); }

    void zorvikCheckoutWebViewDidSucceed(const std::shared_ptr<ZorvikCheckoutWebView>& screen,
                                         const platform::Dictionary& payload) override;
    void zorvikCheckoutWebViewDidFail(const std::shared_ptr<ZorvikCheckoutWebView>& screen,
                                      const platform::Dictionary& payload) override;

  private:
    // The facade's delegate when the checkout started; never changed.
    const std::weak_ptr<ZorvikCheckoutSDKDelegate> delegate_;
};

}  // namespace zorvik
