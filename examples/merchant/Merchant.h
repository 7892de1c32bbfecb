#pragma once

#include <memory>
#include <string>

#include "examples/merchant/Desktop.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutDelegates.h"

namespace zorvik::demo {

// The shop as it takes a payment: all that an application of yours would need. The desktop outlives
// it. Main thread only.
class Merchant : public ZorvikCheckoutSDKDelegate, public std::enable_shared_from_this<Merchant> {
  public:
    // The file remembers the open order for a shop that is ended in the middle of a payment.
    Merchant(Desktop& desktop, std::string orderFile)
        : desktop_(desktop), orderFile_(std::move(orderFile)) {}

    void setUp();   // once, before the first payment
    void pay();     // the basket's button
    void resume();  // checks out the remembered order instead of a new one
    void goBack();  // Escape, the back key
    bool isCheckoutOpen() const;

    void onCheckoutResponse(const platform::Dictionary& data) override;

  private:
    void checkOut(const std::string& token);
    std::string rememberedOrder() const;
    void remember(const std::string& token) const;

    Desktop& desktop_;
    const std::string orderFile_;
};

}  // namespace zorvik::demo
