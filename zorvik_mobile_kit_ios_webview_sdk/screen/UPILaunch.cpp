#include "core/EventConstants.h"
#include "platform/foundation/Console.h"
#include "platform/runtime/Clock.h"
#include "platform/runtime/UserDefaults.h"
#include "platform/uikit/UIApplication.h"
#include "zorvik_mobile_kit_ios_webview_sdk/LogUtil.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutWebView.h"
#include "zorvik_mobile_kit_ios_webview_sdk/common/CheckoutEvents.h"
#include "zorvik_mobile_kit_ios_webview_sdk/common/Text.h"
#include "zorvik_mobile_kit_ios_webview_sdk/screen/TransactionIds.h"
#include "zorvik_mobile_kit_ios_webview_sdk/screen/TransactionRecord.h"

namespace zorvik {

using platform::currentDate;
using platform::description;
using platform::printLine;
using platform::UIApplication;
using platform::UserDefaults;

void ZorvikCheckoutWebView::handleUPIIntent(
    const platform::WKScriptMessage& message,
    const std::optional<std::map<std::string, std::string>>& fields) {
    if (message.body.type != platform::ScriptValue::Type::string) {
        printLine("[UPI INTENT] Invalid message format - expected string");
        return;
    }
    if (!fields) {
        printLine("[UPI INTENT] Failed to parse JSON from message body");
        return;
    }
    const auto url = fields->find("url");
    const auto packageName = fields->find("package_name");
    if (url == fields->end() || packageName == fields->end()) {
        printLine("[UPI INTENT] Missing required fields: url or packagename");
        return;
    }
    launchUPIApp(packageName->second, url->second,
                 transactionId(*fields, messageTransactionIdKeys));
}

void ZorvikCheckoutWebView::launchUPIApp(const std::string& packageName, const std::string& upiUrl,
                                         const std::string& transactionId) {
    LogUtil::debugLog([&] { return joined("📱 Package name: ", packageName); });
    LogUtil::debugLog([&] { return joined("🔗 UPI URL: ", upiUrl); });
    LogUtil::debugLog([&] { return joined("🔢 Transaction ID: ", transactionId); });
    LogUtil::debugLog([&] { return joined("📱 Launch attempt at: ", description(currentDate())); });
    const auto url = platform::URL::parse(upiUrl);
    if (!url) {
        LogUtil::debugLog([&] { return joined("❌ Invalid UPI URL: ", upiUrl); });
        logEvent(EventConstants::EXCEPTION_THROWN, {{"error", "Invalid UPI URL"}});
        sendUPIResponse("unavailable", "Invalid UPI URL");
        return;
    }
    printLine("[UPI LAUNCH] ✅ URL created successfully");
    printLine(joined("[UPI LAUNCH] 🔍 URL scheme: ", url->scheme().value_or("nil")));
    printLine(joined("[UPI LAUNCH] 🔍 URL host: ", url->host().value_or("nil")));
    const bool canOpen = UIApplication::shared().canOpenURL(*url);
    printLine(joined("[UPI LAUNCH] 📱 Can open URL: ", description(canOpen)));
    if (!canOpen) {
        printLine("[UPI LAUNCH] ❌ UPI app not installed");
        sendUPIResponse("unregistered", "UPI app not installed");
        return;
    }
    printLine("[UPI LAUNCH] ✅ UPI app is installed, launching...");
    UIApplication::shared().open(
        *url, [screen = weakSelf(), packageName, transactionId](bool opened) {
            if (opened) {
                printLine("[UPI LAUNCH] ✅ UPI app launched successfully!");
                printLine("[UPI LAUNCH] 📱 App will go to background");
                // A screen that was torn down meanwhile leaves no record behind.
                if (const auto controller = screen.lock(); controller && controller->webView) {
                    controller->storeTransactionDetails(transactionId, packageName);
                }
            } else {
                printLine("[UPI LAUNCH] ❌ Failed to launch UPI app");
                if (const auto controller = screen.lock()) {
                    controller->sendUPIResponse("unavailable", "Failed to launch UPI app");
                }
            }
        });
}

void ZorvikCheckoutWebView::storeTransactionDetails(const std::string& transactionId,
                                                    const std::string& packageName) {
    printLine("[TRANSACTION STORE] 🚀 Storing transaction details for UPI app return tracking!");
    printLine(joined("[TRANSACTION STORE] 📱 Package name: ", packageName));
    printLine(joined("[TRANSACTION STORE] 🔢 Transaction ID: ", transactionId));
    printLine(joined("[TRANSACTION STORE] 📱 Stored at: ", description(currentDate())));
    auto& defaults = UserDefaults::standard();
    defaults.set(transactionId, TransactionRecord::transactionId);
    defaults.set(packageName, TransactionRecord::packageName);
    defaults.set(currentDate(), TransactionRecord::startTime);
    printLine("[TRANSACTION STORE] ✅ Transaction details stored successfully");
    printLine("[TRANSACTION STORE] 📊 Ready to detect UPI app return");
}

}  // namespace zorvik
