#include <utility>

#include "platform/foundation/Console.h"
#include "platform/foundation/Data.h"
#include "platform/foundation/JSONSerialization.h"
#include "platform/foundation/URLComponents.h"
#include "platform/runtime/DispatchQueue.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutWebView.h"
#include "zorvik_mobile_kit_ios_webview_sdk/common/ErrorPayload.h"
#include "zorvik_mobile_kit_ios_webview_sdk/common/Text.h"
#include "zorvik_mobile_kit_ios_webview_sdk/screen/QueryItems.h"

namespace zorvik {

using platform::description;
using platform::Dictionary;
using platform::DispatchQueue;
using platform::JSONSerialization;
using platform::printLine;
using platform::URLComponents;

namespace {

// The object of a JSON text; empty for a value of another type, nullopt for a text that is no JSON.
std::optional<Dictionary> decodedResponse(const std::string& text) {
    auto parsed =
        JSONSerialization::jsonObject(text, JSONSerialization::ReadingOptions::fragmentsAllowed);
    if (!parsed) return std::nullopt;
    const auto* dictionary = parsed.value().dictionary();
    return dictionary == nullptr ? Dictionary() : *dictionary;
}

}  // namespace

void ZorvikCheckoutWebView::handleWebViewRespCheckUrl(const std::string& url) {
    printLine("[REDIRECT] 🚀 handleWebViewRespCheckUrl called!");
    printLine(joined("[REDIRECT] 🔗 Processing URL: ", url));
    const auto reportInvalid = [this] {
        auto payload = errorPayload("Invalid payment response", options().orderToken);
        DispatchQueue::main().async([screen = weakSelf(), payload = std::move(payload)] {
            if (const auto controller = screen.lock()) controller->reportFailureNextTurn(payload);
        });
    };
    const auto components = URLComponents::parse(url);
    if (!components) {
        printLine("[REDIRECT] ❌ Failed to parse URL components");
        reportInvalid();
        return;
    }
    const auto items = queryItems(*components);
    printLine(joined("[REDIRECT] 📊 Available query items: ", description(items)));
    const auto* response = responseItem(items);
    if (response == nullptr || !response->value) {
        printLine("[REDIRECT] ❌ No response parameter found");
        reportInvalid();
        return;
    }
    printLine(joined("[REDIRECT] ✅ Response parameter found: ", *response->value));
    processPaymentResponse(*response->value);
}

void ZorvikCheckoutWebView::processPaymentResponse(const std::string& response) {
    if (const auto data = decodedResponse(response)) {
        handleParsedResponse(*data);
        return;
    }
    printLine("[REDIRECT] JSON parsing failed, trying Base64");
    if (const auto bytes = platform::base64Decode(response)) {
        if (const auto data = decodedResponse(*bytes)) {
            handleParsedResponse(*data);
            return;
        }
        printLine("[REDIRECT] Base64 JSON parsing failed");
    }
    printLine("[REDIRECT] ❌ Both JSON and Base64 decoding failed");
    // At once, unlike every other report.
    reportFailure(errorPayload("Invalid response format", options().orderToken));
}

void ZorvikCheckoutWebView::handleParsedResponse(const Dictionary& data) {
    printLine(joined("[REDIRECT] 🚀 handleParsedResponse called with data: ", description(data)));
    const auto entry = data.find("payload");
    const auto* payload = entry == data.end() ? nullptr : entry->second.dictionary();
    // Whatever the page answered is a success here: its payload tells the host how it went.
    DispatchQueue::main().async(
        [screen = weakSelf(), payload = payload == nullptr ? Dictionary() : *payload] {
            const auto controller = screen.lock();
            if (!controller) return;
            if (const auto receiver = controller->delegate()) {
                receiver->zorvikCheckoutWebViewDidSucceed(controller, payload);
            }
        });
}

}  // namespace zorvik
