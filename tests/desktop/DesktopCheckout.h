#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/development/DevelopmentCore.h"
#include "core/development/EventSink.h"
#include "platform/gtk/GtkPlatform.h"
#include "platform/webkit/WKWebView.h"
#include "tests/support/RawServer.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutSDK.h"

namespace zorvik::tests {

// A host with a window, the real engine, the development core and a server of checkout pages.
// Writes down what the host receives, the events and the console.
class DesktopCheckout : public ZorvikCheckoutSDKDelegate,
                        public std::enable_shared_from_this<DesktopCheckout> {
  public:
    static std::shared_ptr<DesktopCheckout> make(const std::string& checkoutUrl = "");
    ~DesktopCheckout() override;

    void onCheckoutResponse(const platform::Dictionary& data) override;

    // Says where the checkout page is from now on, and which apps there are.
    void configure(const std::string& checkoutUrl,
                   std::vector<development::DevelopmentUPIApp> apps = {});
    // Creates an order and checks it out; returns once the screen is presented.
    void checkout();
    bool waitFor(const std::function<bool()>& condition) {
        return platform->runUntil(condition, 20);
    }
    // Lets the main loop turn for a while, for what must not happen.
    void goOnFor(double seconds) {
        platform->runUntil([] { return false; }, seconds);
    }
    bool waitForEvent(const std::string& name, std::size_t times = 1);

    // The value of a script in the checkout page, as text; "error: ..." when it fails.
    std::string evaluated(const std::string& script);
    void payWith(const std::string& response);  // goes to the response address, as written

    bool isScreenOpen() const { return presenter->presentedViewController() != nullptr; }
    // The first view of a type on the open screen, in the order of the tree.
    template <class View>
    std::shared_ptr<View> find() const {
        return std::dynamic_pointer_cast<View>(
            find(*presenter->presentedViewController()->view(),
                 [](platform::UIView& view) { return dynamic_cast<View*>(&view); }));
    }

    std::vector<std::string> eventNames() const;
    std::size_t countOf(const std::string& eventName) const;

    RawServer server;
    std::vector<std::string> console;
    std::unique_ptr<platform::gtk::GtkPlatform> platform;
    GtkWindow* window = nullptr;
    std::shared_ptr<platform::UIViewController> presenter;
    std::shared_ptr<development::MemoryEventSink> events =
        std::make_shared<development::MemoryEventSink>();
    std::vector<platform::Dictionary> results;
    std::string orderId;
    std::string token;

  private:
    static std::shared_ptr<platform::UIView> find(
        platform::UIView& root, const std::function<platform::UIView*(platform::UIView&)>& match);
};

}  // namespace zorvik::tests
