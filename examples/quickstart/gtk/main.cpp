#include <core/development/DevelopmentCore.h>
#include <gtk/gtk.h>
#include <platform/gtk/GtkPlatform.h>
#include <platform/runtime/Environment.h>
#include <zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckout.h>

#include <filesystem>
#include <iostream>

using namespace zorvik;

struct Shop : ZorvikCheckoutSDKDelegate {
    std::shared_ptr<platform::UIViewController> presenter;
    std::string token;
    void onCheckoutResponse(const platform::Dictionary& data) override {
        std::cout << "The checkout answered " << platform::description(data) << std::endl;
    }
};

void pay(Shop* shop) {
    ZorvikCheckoutSDK::shared().checkout(shop->presenter, {.orderToken = shop->token});
}

void leave(platform::gtk::GtkPlatform* port) {
    port->quit();
}

int main() {
    const auto port = platform::gtk::GtkPlatform::make({.applicationId = "quickstart"});
    if (!port) return 1;
    const auto orders = std::make_shared<development::MemoryOrderBook>();
    development::DevelopmentCore::shared().configure(
        {.webViewViewUrl = "file://" + std::filesystem::absolute("page.html").string(),
         .webViewRespCheckUrl = "https://pay.example/response",
         .runInBackground = platform::Environment::runInBackground,
         .orderBook = orders});
    const auto shop = std::make_shared<Shop>();  // the component holds it weakly
    ZorvikCheckoutSDK::shared().setDelegate(shop);
    shop->token = orders->create({.amountInMinorUnits = 149900, .currency = "INR"}).value().token;

    auto* const window = GTK_WINDOW(gtk_window_new());
    GtkWidget* button = gtk_button_new_with_label("Check out");
    gtk_window_set_child(window, button);
    g_signal_connect_swapped(button, "clicked", G_CALLBACK(pay), shop.get());
    g_signal_connect_swapped(window, "destroy", G_CALLBACK(leave), port.get());
    shop->presenter = port->presenterFor(window);
    gtk_window_present(window);
    port->run();
}
