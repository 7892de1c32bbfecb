#include <core/development/DevelopmentCore.h>
#include <platform/qt/QtPlatform.h>
#include <platform/runtime/Environment.h>
#include <zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckout.h>

#include <QApplication>
#include <QMainWindow>
#include <QPushButton>
#include <filesystem>
#include <iostream>

using namespace zorvik;

struct Shop : ZorvikCheckoutSDKDelegate {
    void onCheckoutResponse(const platform::Dictionary& data) override {
        std::cout << "The checkout answered " << platform::description(data) << std::endl;
    }
};

int main(int count, char** arguments) {
    const QApplication application(count, arguments);
    const auto port = platform::qt::QtPlatform::make({.applicationId = "quickstart"});
    if (!port) return 1;
    const auto shop = std::make_shared<Shop>();  // the component holds it weakly
    ZorvikCheckoutSDK::shared().setDelegate(shop);

    development::Configuration core;
    core.webViewViewUrl = "file://" + std::filesystem::absolute("page.html").string();
    core.webViewRespCheckUrl = "https://pay.example/response";
    core.runInBackground = platform::Environment::runInBackground;
    const std::string token =
        core.orderBook->create({.amountInMinorUnits = 149900, .currency = "INR"}).value().token;
    development::DevelopmentCore::shared().configure(core);

    QMainWindow window;
    window.resize(440, 800);
    auto* const button = new QPushButton("Check out");
    button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    window.setCentralWidget(button);
    QObject::connect(button, &QPushButton::clicked, [&] {
        ZorvikCheckoutSDK::shared().checkout(port->presenterFor(&window), {.orderToken = token});
    });
    window.show();
    return QApplication::exec();
}
