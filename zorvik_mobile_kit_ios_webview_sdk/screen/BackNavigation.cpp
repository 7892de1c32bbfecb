#include "core/EventConstants.h"
#include "core/ZorvikCoreApiSDK.h"
#include "platform/foundation/Console.h"
#include "platform/foundation/JSONSerialization.h"
#include "platform/foundation/URLComponents.h"
#include "platform/runtime/DispatchQueue.h"
#include "platform/runtime/UserDefaults.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutSDK.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutWebView.h"
#include "zorvik_mobile_kit_ios_webview_sdk/common/CheckoutEvents.h"
#include "zorvik_mobile_kit_ios_webview_sdk/common/Text.h"
#include "zorvik_mobile_kit_ios_webview_sdk/screen/CheckoutPage.h"
#include "zorvik_mobile_kit_ios_webview_sdk/screen/TransactionRecord.h"

namespace zorvik {

using platform::description;
using platform::Dictionary;
using platform::DispatchQueue;
using platform::JSONSerialization;
using platform::printLine;
using platform::Result;
using platform::ScriptValue;
using platform::URL;
using platform::URLComponents;
using platform::UserDefaults;

namespace {

constexpr auto deviceBackLine =
    "[BACK HANDLER] 🚀 Device back button pressed - Android-style handling";

// Scheme and host alone: where a page is, whatever its port and path.
std::string urlBase(const URL& url) {
    return joined(url.scheme().value_or(""), "://", url.host().value_or(""));
}

// The script that posts a message to the page, or an Error. Escapes double quotes only, unlike the
// bridge's other messages.
Result<std::string> backMessageScript(const Dictionary& message) {
    const auto json = JSONSerialization::data(message);
    if (!json) return json.error();
    std::string escaped;
    for (const char character : json.value()) {
        if (character == '"') escaped += '\\';
        escaped += character;
    }
    return postMessageScript(escaped);
}

platform::WKWebView::EvaluationCompletion printOutcome(const std::string& tag) {
    return [tag](const Result<ScriptValue>& result) {
        printLine(result
                      ? joined(tag, " ✅ JavaScript executed successfully")
                      : joined(tag, " ❌ JavaScript error: ", result.error().localizedDescription));
    };
}

}  // namespace

void ZorvikCheckoutWebView::handleDeviceBackButtonPress() {
    printLine(deviceBackLine);
    insertJSToWebview(true);
}

void ZorvikCheckoutWebView::backButtonTapped() {
    handleBackAction("[BACK HANDLER] 🚀 Navigation bar back button pressed - Android-style handling",
                     "navigation_bar_back_button");
}

void ZorvikCheckoutWebView::swipeBackDetected() {
    handleBackAction("[BACK HANDLER] 🚀 Swipe back gesture detected - Android-style handling",
                     "swipe_gesture");
}

void ZorvikCheckoutWebView::handleBackAction(const std::string& line, const std::string& source) {
    printLine(line);
    inBackground([screen = weakSelf(), source] {
        if (const auto controller = screen.lock()) {
            controller->logEvent(EventConstants::BACK_BUTTON_PRESSED,
                                 {{"source", source}, {"platform", "ios"}});
        }
    });
    handleDeviceBackButtonPress();
}

// Any thread. The flow never runs inside the caller's own call.
void ZorvikCheckoutWebView::insertJSToWebview(bool isDeviceBackPressed) {
    printLine("[BACK HANDLER] 🚀 insertJSToWebview called");
    printLine(joined("[BACK HANDLER] 📊 isDeviceBackPressed: ", description(isDeviceBackPressed)));
    DispatchQueue::main().async([screen = weakSelf(), isDeviceBackPressed] {
        const auto controller = screen.lock();
        if (!controller) return;
        if (isDeviceBackPressed) {
            printLine("[BACK HANDLER] 📱 Handling device back pressed");
            controller->handleDeviceBackPressed();
        } else {
            printLine("[BACK HANDLER] 📱 Handling UPI intent back");
            controller->handleUpiIntentBack();
        }
    });
}

void ZorvikCheckoutWebView::handleDeviceBackPressed() {
    printLine("[BACK HANDLER] 🚀 Device back pressed - Android-style handling");
    // The page's address as the engine has it, which may hold what no strict reader takes.
    const auto current = currentUrl();
    const std::string currentText = current ? current->absoluteString() : "";
    const std::string expectedUrl = buildCheckoutUrl();
    printLine(joined("[BACK HANDLER] 📊 Current URL: ", currentText));
    printLine(joined("[BACK HANDLER] 📊 Expected URL: ", expectedUrl));

    if (current) {
        const auto parsedExpected = URL::parse(expectedUrl);
        if (!parsedExpected) {
            printLine("[BACK HANDLER] ❌ Failed to parse URLs");
            return;
        }
        const std::string currentBase = urlBase(*current);
        const std::string expectedBase = urlBase(*parsedExpected);
        printLine(joined("[BACK HANDLER] 📊 Current base: ", currentBase));
        printLine(joined("[BACK HANDLER] 📊 Expected base: ", expectedBase));
        // A textual prefix: a host that merely extends the expected one counts as within.
        if (!currentBase.starts_with(expectedBase)) {
            printLine("[BACK HANDLER] ⚠️ URL not within expected base");
            printLine("[BACK HANDLER] 🔄 Redirecting to browser back URL");
            const std::string backUrl = buildBrowserBackURL(currentText, expectedUrl);
            printLine(joined("[BACK HANDLER] 📋 Browser back URL: ", backUrl));
            const auto url = URL::parse(backUrl);
            if (url && webView) webView->load(checkoutPageRequest(*url));
        }
    }

    const auto script =
        backMessageScript({{"sdk_action", "device_back_initiated"}, {"source", "ios"}});
    if (!script) {
        printLine(joined("[BACK HANDLER] ❌ JSON serialization error: ",
                         script.error().localizedDescription));
    } else {
        printLine(joined("[BACK HANDLER] 📜 Executing JavaScript: ", script.value()));
        if (webView) webView->evaluateJavaScript(script.value(), printOutcome("[BACK HANDLER]"));
    }
    inBackground([screen = weakSelf(), currentText] {
        if (const auto controller = screen.lock()) {
            controller->logEvent(EventConstants::BACK_BUTTON_PRESSED,
                                 {{"current_url", currentText}});
        }
    });
}

std::string ZorvikCheckoutWebView::buildBrowserBackURL(const std::string& currentUrl,
                                                       const std::string& expectedUrl) {
    const auto token = options().orderToken;
    if (!token) return expectedUrl;
    auto components = URLComponents::parse(checkoutPageAddress());
    if (!components) return expectedUrl;
    components->setQueryItems({{"token", token},
                               {"browser_back", "true"},
                               {"current_url", currentUrl},
                               {"expected_url", expectedUrl}});
    return components->string().value_or(expectedUrl);
}

void ZorvikCheckoutWebView::handleUpiIntentBack() {
    printLine("[UPI BACK] 🚀 UPI intent back - Android-style handling");
    const auto token = options().orderToken;
    if (!token) {
        printLine("[UPI BACK] ❌ No order token available");
        return;
    }
    const std::string orderId = ZorvikCheckoutSDK::getOrderID(*token);
    const std::string transactionId =
        UserDefaults::standard().string(TransactionRecord::transactionId).value_or("");
    printLine(joined("[UPI BACK] 📊 Order ID: ", orderId));
    printLine(joined("[UPI BACK] 📊 Transaction ID: ", transactionId));
    ZorvikCoreApiSDK::shared().getTransactionEnquiry(
        *token, orderId, orderId, transactionId,
        [screen = weakSelf()](const Result<TransactionEnquiryResponse>& result) {
            if (const auto controller = screen.lock()) controller->postUpiIntentBack(result);
        });
}

// Any thread: builds the message here and posts it in a main-queue turn, which holds the screen
// strongly. The page hears of it whatever the enquiry said, and decides.
void ZorvikCheckoutWebView::postUpiIntentBack(const Result<TransactionEnquiryResponse>& result) {
    std::string status;
    if (!result) {
        printLine(joined("[UPI BACK] ❌ Transaction enquiry failed: ",
                         result.error().localizedDescription));
    } else {
        printLine("[UPI BACK] ✅ Transaction enquiry successful");
        const auto& order = result.value().order;
        if (order) status = order->status.value_or("");
    }
    const auto script = backMessageScript(
        {{"upi_intent_back_response", "close"}, {"transaction_enquiry_api_response", status}});
    if (!script) {
        printLine(
            joined("[UPI BACK] ❌ JSON serialization error: ", script.error().localizedDescription));
        return;
    }
    printLine(joined("[UPI BACK] 📜 Executing JavaScript: ", script.value()));
    DispatchQueue::main().async([screen = self(), script = script.value()] {
        if (screen->webView) {
            screen->webView->evaluateJavaScript(script, printOutcome("[UPI BACK]"));
        }
    });
}

}  // namespace zorvik
