#include <string_view>
#include <unordered_set>

#include "core/EventConstants.h"
#include "platform/foundation/Console.h"
#include "platform/foundation/JSONSerialization.h"
#include "zorvik_mobile_kit_ios_webview_sdk/LogUtil.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutWebView.h"
#include "zorvik_mobile_kit_ios_webview_sdk/common/CheckoutEvents.h"
#include "zorvik_mobile_kit_ios_webview_sdk/common/Text.h"
#include "zorvik_mobile_kit_ios_webview_sdk/screen/CheckoutPage.h"
#include "zorvik_mobile_kit_ios_webview_sdk/screen/IntentMessage.h"
#include "zorvik_mobile_kit_ios_webview_sdk/screen/TransactionIds.h"

namespace zorvik {

using platform::Array;
using platform::Dictionary;
using platform::JSONSerialization;
using platform::printLine;
using platform::Result;
using platform::ScriptValue;
using platform::Value;

namespace {

// Makes a JSON text safe between the single quotes of a script's string literal: evaluated, the
// literal yields the JSON text again.
std::string escapedForScriptLiteral(std::string_view json) {
    std::string escaped;
    escaped.reserve(json.size() + json.size() / 4);
    for (const char character : json) {
        switch (character) {
            case '\\':
                escaped += "\\\\";
                break;
            case '\'':
                escaped += "\\'";
                break;
            case '"':
                escaped += "\\\"";
                break;
            case '\n':
                escaped += "\\n";
                break;
            case '\r':
                escaped += "\\r";
                break;
            case '\t':
                escaped += "\\t";
                break;
            default:
                escaped += character;
        }
    }
    return escaped;
}

// The page calls its function 100 ms after the script ran, so the evaluation's end says only that
// the script itself was run.
std::string injectionScript(const std::string& escaped) {
    return joined(R"script(console.log('🔍 Injecting UPI apps...');
console.log('🔍 Window object available:', typeof window !== 'undefined');
console.log('🔍 zorvik_web available:', typeof window.zorvik_web !== 'undefined');

// Wait a bit for message handlers to be available
setTimeout(function() {
    try {
        if (window.zorvik_web && window.zorvik_web.UPIIntentAvailable) {
            console.log('✅ zorvik_web.UPIIntentAvailable found, calling...');
            window.zorvik_web.UPIIntentAvailable(')script",
                  escaped, R"script(');
            console.log('✅ UPI Apps injected successfully');
            console.log('📊 Injected data:', JSON.parse(')script",
                  escaped, R"script('));
        } else {
            console.log('❌ zorvik_web.UPIIntentAvailable not available');
            console.log('🔍 Available window properties:', Object.keys(window));
            if (window.zorvik_web) {
                console.log('🔍 zorvik_web properties:', Object.keys(window.zorvik_web));
            } else {
                console.log('🔍 zorvik_web object not found');
            }
        }
    } catch (error) {
        console.error('❌ Error injecting UPI apps:', error);
        console.error('📊 JSON data:', ')script",
                  escaped, R"script(');
    }
}, 100);)script");
}

Value stringOrNull(const std::optional<std::string>& text) {
    return text ? Value(*text) : Value();
}

// One object for each package name, in the order in which the names first appear.
Array appObjects(const std::vector<UPIAppsVO>& apps) {
    Array objects;
    std::unordered_set<std::string_view> packageNames;
    for (const auto& app : apps) {
        if (!app.packageName || app.packageName->empty()) continue;
        if (!packageNames.insert(*app.packageName).second) continue;
        objects.emplace_back(Dictionary{{"upi_app_name", stringOrNull(app.upiAppName)},
                                        {"package_name", *app.packageName},
                                        {"appiconbase64", stringOrNull(app.logoUrl)},
                                        {"upi_app_code", stringOrNull(app.upiAppCode)}});
    }
    return objects;
}

}  // namespace

void ZorvikCheckoutWebView::userContentControllerDidReceive(
    platform::WKUserContentController& /*controller*/, const platform::WKScriptMessage& message) {
    LogUtil::debugLog(
        [&] { return joined("Received message: ", message.name, " - ", message.body.text); });
    if (message.name != intentMessageName) {
        LogUtil::debugLog([&] { return joined("Ignoring message: ", message.name); });
        return;
    }
    LogUtil::debugLog([&] { return joined("Received JavaScript message: ", message.body.text); });
    const auto fields = intentFields(message.body);
    logEvent(EventConstants::UPI_INTENT_STARTED,
             {{"transactionId", fields ? transactionId(*fields, messageTransactionIdKeys) : ""},
              {"parameters", message.body.text}});
    handleUPIIntent(message, fields);
}

void ZorvikCheckoutWebView::injectUPIApps() {
    if (upiAppsInjected) return;
    if (!upiApps_) return;
    const auto json = JSONSerialization::data(Dictionary{{"UPIApps", appObjects(*upiApps_)}});
    if (!json || json.value().empty() || json.value() == "{}") return;
    const std::string script = injectionScript(escapedForScriptLiteral(json.value()));
    if (!webView) return;
    webView->evaluateJavaScript(script, [screen = weakSelf()](const Result<ScriptValue>& result) {
        if (!result) return;  // the next finished page tries again
        if (const auto controller = screen.lock()) {
            controller->upiAppsInjected = true;
        }
    });
}

void ZorvikCheckoutWebView::sendUPIResponse(const std::string& status, const std::string& message) {
    printLine("[UPI RESPONSE] 🚀 sendUPIResponse method called!");
    printLine(joined("[UPI RESPONSE] 📊 Status: ", status));
    printLine(joined("[UPI RESPONSE] 📝 Message: ", message));
    const auto data = JSONSerialization::data(Dictionary{
        {"sdk_upi_intent_response", status}, {"sdk_transaction_enquiry_response", message}});
    if (!data) {
        LogUtil::debugLog([&] {
            return joined("Failed to serialize response to JSON: ",
                          data.error().localizedDescription);
        });
    }
    const std::string json = data ? data.value() : "{}";
    printLine(joined("[UPI RESPONSE] 📋 JSON String: ", json));
    const std::string escaped = escapedForScriptLiteral(json);
    printLine(joined("[UPI RESPONSE] 🔧 Escaped JSON: ", escaped));
    const std::string script = postMessageScript(escaped);
    printLine(joined("[UPI RESPONSE] 📜 JavaScript to execute: ", script));
    if (!webView) return;
    webView->evaluateJavaScript(script, [status](const Result<ScriptValue>& result) {
        if (!result) {
            printLine(joined("[UPI RESPONSE] ❌ Error sending response: ",
                             result.error().localizedDescription));
            return;
        }
        printLine(joined("[UPI RESPONSE] ✅ Response sent successfully: ", status));
        printLine("[UPI RESPONSE] ✅ JavaScript executed without errors");
    });
}

}  // namespace zorvik
