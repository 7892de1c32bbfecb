#include <core/development/DevelopmentCore.h>
#include <platform/foundation/Shortened.h>
#include <platform/headless/HeadlessPlatform.h>
#include <platform/runtime/Environment.h>
#include <platform/runtime/MainThread.h>
#include <zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckout.h>

#include <iostream>

using namespace zorvik;

struct Shop : ZorvikCheckoutSDKDelegate {
    void onCheckoutResponse(const platform::Dictionary& data) override {
        std::cout << "The checkout answered " << platform::shortened(platform::description(data))
                  << std::endl;
    }
};

int main() {
    development::Configuration core;
    core.webViewViewUrl = "https://pay.example/checkout";
    core.webViewRespCheckUrl = "https://pay.example/response";
    core.runInBackground = platform::Environment::runInBackground;
    const auto order = core.orderBook->create({.amountInMinorUnits = 149900, .currency = "INR"});
    development::DevelopmentCore::shared().configure(core);

    platform::headless::HeadlessPlatform port;
    port.web().onLoad([](const std::string&) { return platform::headless::ScriptedLoad(); });
    const auto presenter = platform::makeOnMainThread<platform::UIViewController>();
    presenter->setShownByStage(true);

    const auto shop = std::make_shared<Shop>();  // the component holds it weakly
    ZorvikCheckoutSDK::shared().setDelegate(shop);
    ZorvikCheckoutSDK::shared().checkout(presenter, {.orderToken = order.value().token});
    port.scheduler().settle();  // the order is updated, the screen opens, its page loads

    port.web().page().navigate(
        "https://pay.example/response?response={\"payload\":{\"paid\":true}}");
    port.scheduler().settle();
}
