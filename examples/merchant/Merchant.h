#pragma once

#include <memory>
#include <optional>
#include <string>

#include "examples/merchant/AutomaticCustomer.h"
#include "examples/merchant/Desktop.h"
#include "examples/merchant/Scenario.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutDelegates.h"

namespace zorvik::demo {

struct MerchantOptions {
    std::string backendUrl;
    std::string pngFolder;
    std::string orderFile;  // remembers the open order, for a merchant that was killed
    const Scenario* scenario = nullptr;
    bool hasAutomaticCustomer = false;
    bool resumesOrder = false;  // checks out the remembered order instead of a new one
};

// The shop: a basket, a checkout, its result. The desktop outlives it. Main thread only.
class Merchant : public ZorvikCheckoutSDKDelegate, public std::enable_shared_from_this<Merchant> {
  public:
    static std::shared_ptr<Merchant> open(Desktop& desktop, MerchantOptions options);

    // Until the story ended or the window was closed; with an automatic customer, two minutes at
    // most. True when the host was called.
    bool run();

    void onCheckoutResponse(const platform::Dictionary& data) override;

  private:
    Merchant(Desktop& desktop, MerchantOptions options);

    void configureCore();
    void pay();
    void checkOut(const std::string& token);
    void rememberOrder(const std::string& token) const;
    std::string rememberedOrder() const;
    // False when the window shows nothing yet.
    bool savePng(const std::string& name);
    void setFault(const std::string& fault, bool isOn, std::function<void()> done);
    std::vector<Step> stepsOfCustomer() const;
    void startCustomer(std::vector<Step> steps);

    Desktop& desktop_;
    const MerchantOptions options_;
    std::unique_ptr<AutomaticCustomer> customer_;
    unsigned hostCalls_ = 0;
    std::optional<std::string> stuckAt_;
};

}  // namespace zorvik::demo
