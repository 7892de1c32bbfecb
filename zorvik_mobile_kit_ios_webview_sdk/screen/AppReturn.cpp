#include "platform/foundation/Console.h"
#include "platform/foundation/URLComponents.h"
#include "platform/runtime/Clock.h"
#include "platform/runtime/UserDefaults.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutWebView.h"
#include "zorvik_mobile_kit_ios_webview_sdk/common/Text.h"
#include "zorvik_mobile_kit_ios_webview_sdk/screen/QueryItems.h"
#include "zorvik_mobile_kit_ios_webview_sdk/screen/TransactionRecord.h"

namespace zorvik {

using platform::currentDate;
using platform::Date;
using platform::description;
using platform::printLine;
using platform::URLComponents;
using platform::UserDefaults;

namespace {

constexpr double quickReturnSeconds = 5.0;

}  // namespace

void ZorvikCheckoutWebView::appDidBecomeActive() {
    const auto url = currentUrl();
    printLine("[APP STATE] 🚀 App became active - user returned from UPI app!");
    printLine(joined("[APP STATE] 📊 Current WebView URL: ", url ? url->absoluteString() : "nil"));
    printLine(joined("[APP STATE] 📱 App state change detected at: ", description(currentDate())));

    const auto& defaults = UserDefaults::standard();
    const auto transactionId = defaults.string(TransactionRecord::transactionId);
    const auto packageName = defaults.string(TransactionRecord::packageName);
    const auto storedTime = defaults.object(TransactionRecord::startTime);
    printLine(joined("[APP STATE] 📱 Stored transaction ID: ", transactionId.value_or("nil")));
    printLine(joined("[APP STATE] 📱 Stored package name: ", packageName.value_or("nil")));
    // A start time of another type is none.
    const auto* startTime = storedTime ? std::get_if<Date>(&*storedTime) : nullptr;
    printLine(joined("[APP STATE] 📱 Stored start time: ",
                     startTime != nullptr ? description(*startTime) : "nil"));

    if (!transactionId || !packageName || startTime == nullptr) {
        printLine("[APP STATE] ⚠️ No stored transaction details found");
        printLine("[APP STATE] 📊 This might be a normal app activation or first launch");
        checkProcessingURLForResponse();
        return;
    }

    printLine("[APP STATE] 🎯 UPI app was launched - checking return status...");
    printLine(joined("[APP STATE] 📱 UPI App Package: ", *packageName));
    printLine(joined("[APP STATE] 🔢 Transaction ID: ", *transactionId));
    const double elapsed = currentDate().secondsSince(*startTime);
    printLine(
        joined("[APP STATE] ⏱️ Time since UPI app launch: ", description(elapsed), " seconds"));
    if (elapsed >= quickReturnSeconds) {
        printLine("[APP STATE] ✅ User returned after some time - likely completed payment");
        printLine("[APP STATE] 📊 Extended return detected (≥ 5 seconds)");
        printLine("[APP STATE] 📱 This is most likely a completed UPI payment");
    } else {
        printLine("[APP STATE] ⚠️ User returned quickly - likely cancelled or went back");
        printLine("[APP STATE] 📊 Quick return detected (< 5 seconds)");
        printLine("[APP STATE] 📱 This could be a UPI app return or user back navigation");
        if (view()->isInWindow()) {
            printLine("[APP STATE] ✅ Webview is still visible - treating as UPI app return");
            handleUPIBackNavigation();
        } else {
            printLine("[APP STATE] ⚠️ Webview is not visible - might be user back navigation");
        }
    }
    checkProcessingURLForResponse();
}

void ZorvikCheckoutWebView::handleUPIBackNavigation() {
    printLine("[UPI BACK] 🚀 User went back from UPI app - Android-style handling!");
    printLine("[UPI BACK] 📱 Using Android-style UPI intent back handling");
    insertJSToWebview(false);
}

void ZorvikCheckoutWebView::checkProcessingURLForResponse() {
    const auto current = currentUrl();
    if (!current) return;
    const std::string& url = current->absoluteString();
    if (url.find("processing") == std::string::npos) return;
    printLine("[APP STATE] 🎯 Processing URL detected!");
    printLine("[APP STATE] 📋 URL contains 'processing' - checking for payment response...");
    const auto components = URLComponents::parse(url);
    if (!components) return;
    const auto items = queryItems(*components);
    printLine(joined("[APP STATE] 📊 Query parameters: ", description(items)));
    if (const auto* response = responseItem(items)) {
        printLine("[APP STATE] 🎯 Found response parameter!");
        printLine(joined("[APP STATE] 📝 Response value: ", response->value.value_or("nil")));
        handleWebViewRespCheckUrl(url);
        return;
    }
    printLine("[APP STATE] ⚠️ No response parameter found in processing URL");
    printLine("[APP STATE] 📋 This might be a processing page that will redirect to response URL");
    printLine("[APP STATE] 🔄 Waiting for processing page to complete...");
}

void ZorvikCheckoutWebView::handleUPIAppReturn(const std::string& url) {
    printLine("[UPI RETURN] 🚀 User returned from UPI app!");
    printLine(joined("[UPI RETURN] 🔗 Return URL: ", url));
    printLine(joined("[UPI RETURN] 📱 Return detected at: ", description(currentDate())));
    const auto components = URLComponents::parse(url);
    if (!components) {
        printLine("[UPI RETURN] ❌ Failed to parse URL components");
        return;
    }
    printLine("[UPI RETURN] ✅ URL components parsed successfully");
    printLine(joined("[UPI RETURN] 🔍 URL scheme: ", components->scheme().value_or("nil")));
    printLine(joined("[UPI RETURN] 🔍 URL host: ", components->host().value_or("nil")));
    printLine(joined("[UPI RETURN] 🔍 URL path: ", components->path()));

    TransactionData data;
    const auto items = queryItems(*components);
    for (const auto& item : items) {
        if (item.value) {
            data[item.name] = *item.value;
        } else {
            data.erase(item.name);
        }
        printLine(
            joined("[UPI RETURN] 📋 Query param: ", item.name, " = ", item.value.value_or("nil")));
    }
    printLine(joined("[UPI RETURN] 📊 Transaction data: ",
                     description(platform::Dictionary(data.begin(), data.end()))));
    printLine(joined("[UPI RETURN] 📋 Query items count: ", std::to_string(items.size())));

    if (const auto entry = data.find("status"); entry != data.end()) {
        printLine(joined("[UPI RETURN] 📊 Status found: ", entry->second));
        const std::string status = lowercased(entry->second);
        if (status == "success") {
            printLine("[UPI RETURN] ✅ Payment successful");
            handleUPISuccess(data);
        } else if (status == "failure") {
            printLine("[UPI RETURN] ❌ Payment failed");
            handleUPIFailure(data);
        } else if (status == "cancelled") {
            printLine("[UPI RETURN] ⏹️ Payment cancelled");
            handleUPICancellation(data);
        } else {
            printLine(joined("[UPI RETURN] ❓ Unknown status: ", entry->second));
            handleUPIUnknown(data);
        }
        return;
    }
    printLine("[UPI RETURN] ⚠️ No status parameter found in URL");
    if (const auto entry = data.find("tr"); entry != data.end() && !entry->second.empty()) {
        printLine(
            joined("[UPI RETURN] ✅ Assuming success based on transaction ID: ", entry->second));
        handleUPISuccess(data);
    } else {
        printLine("[UPI RETURN] ❌ No status found in URL");
        handleUPIUnknown(data);
    }
}

}  // namespace zorvik
