// A whole checkout on the headless port: a refused order, then a payment on the page. Ends with 0
// when the delegate was told of both, in this order and of nothing else.
#include <platform/headless/HeadlessPlatform.h>
#include <platform/runtime/MainThread.h>
#include <zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckout.h>

#include <cstdio>

using zorvik::platform::Dictionary;
using zorvik::platform::UIViewController;
using zorvik::platform::Value;
using zorvik::platform::headless::HeadlessPlatform;
using zorvik::platform::headless::ScriptedLoad;

namespace {

struct Host : zorvik::ZorvikCheckoutSDKDelegate {
    std::vector<Dictionary> results;
    void onCheckoutResponse(const Dictionary& data) override {
        std::printf("result %s\n", zorvik::platform::description(data).c_str());
        results.push_back(data);
    }
};

}  // namespace

int main() {
    HeadlessPlatform platform;
    std::string loaded;
    platform.web().onLoad([&](const std::string& url) {
        loaded = url;
        return ScriptedLoad{.ending = ScriptedLoad::Ending::finish};
    });
    const auto presenter = zorvik::platform::makeOnMainThread<UIViewController>();
    presenter->setShownByStage(true);
    const auto host = std::make_shared<Host>();
    auto& sdk = zorvik::ZorvikCheckoutSDK::shared();
    sdk.setDelegate(host);

    sdk.checkout(presenter, {.orderToken = "refused"});
    platform.scheduler().settle();
    sdk.checkout(presenter, {.orderToken = "own-token", .bankCode = "HDFL"});
    platform.scheduler().settle();
    platform.web().page().navigate(
        "https://own.example/response?response=%7B%22payload%22%3A%7B%22paid%22%3Atrue%7D%7D");
    platform.scheduler().settle();
    platform.scheduler().advanceBy(1);

    const bool isTold =
        host->results.size() == 2 &&
        host->results[0].at("error") == Value("Failed to update order details: Unknown order") &&
        host->results[1] == Dictionary{{"paid", true}};
    const bool isClosed = !presenter->presentedViewController();
    std::printf("loaded %s, %s\n", loaded.c_str(), isClosed ? "closed" : "open");
    return isTold && isClosed && loaded.ends_with("?token=own-token&bank_code=HDFL") ? 0 : 1;
}
