#include <core/development/DevelopmentCore.h>
#include <gtk/gtk.h>
#include <platform/foundation/Shortened.h>
#include <platform/gtk/GtkPlatform.h>
#include <platform/runtime/Environment.h>
#include <zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckout.h>

#include <filesystem>

using namespace zorvik;

struct Shop : ZorvikCheckoutSDKDelegate {
    std::shared_ptr<platform::UIViewController> presenter;
    std::string token;
    void onCheckoutResponse(const platform::Dictionary& data) override {
        g_print("The checkout answered %s\n",
                platform::shortened(platform::description(data)).c_str());
    }
};

void pay(Shop* shop) {
    ZorvikCheckoutSDK::shared().checkout(shop->presenter, {.orderToken = shop->token});
}

int main() {
    const auto port = platform::gtk::GtkPlatform::make({.applicationId = "quickstart"});
    if (!port) return 1;
    const auto shop = std::make_shared<Shop>();  // the component holds it weakly
    ZorvikCheckoutSDK::shared().setDelegate(shop);

    development::Configuration core;
    core.webViewViewUrl = "file://" + std::filesystem::absolute("page.html").string();
    core.webViewRespCheckUrl = "https://pay.example/response";
    core.runInBackground = platform::Environment::runInBackground;
    shop->token =
        core.orderBook->create({.amountInMinorUnits = 149900, .currency = "INR"}).value().token;
    development::DevelopmentCore::shared().configure(core);

    auto* const window = GTK_WINDOW(gtk_window_new());
    gtk_window_set_child(window, gtk_button_new_with_label("Check out"));
    g_signal_connect_swapped(gtk_window_get_child(window), "clicked", G_CALLBACK(pay), shop.get());
    const auto leave = +[](platform::gtk::GtkPlatform* open) { open->quit(); };
    g_signal_connect_swapped(window, "destroy", G_CALLBACK(leave), port.get());
    shop->presenter = port->presenterFor(window);
    gtk_window_present(window);
    port->run();
}
