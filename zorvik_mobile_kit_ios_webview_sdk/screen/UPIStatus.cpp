#include <utility>

#include "core/EventConstants.h"
#include "core/ZorvikCoreApiSDK.h"
#include "platform/foundation/Console.h"
#include "platform/foundation/Data.h"
#include "platform/foundation/JSONSerialization.h"
#include "platform/runtime/DispatchQueue.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutSDK.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutWebView.h"
#include "zorvik_mobile_kit_ios_webview_sdk/common/CheckoutEvents.h"
#include "zorvik_mobile_kit_ios_webview_sdk/common/ErrorPayload.h"
#include "zorvik_mobile_kit_ios_webview_sdk/common/Text.h"
#include "zorvik_mobile_kit_ios_webview_sdk/screen/TransactionIds.h"

namespace zorvik {

using platform::description;
using platform::Dictionary;
using platform::DispatchQueue;
using platform::JSONSerialization;
using platform::printLine;
using platform::Result;

namespace {

Dictionary dictionaryOf(const std::map<std::string, std::string>& data) {
    return {data.begin(), data.end()};
}

std::string printed(const std::map<std::string, std::string>& data) {
    return description(dictionaryOf(data));
}

}  // namespace

// What tells one outcome from the others in the console and in the payment status event.
struct ZorvikCheckoutWebView::UPIFailureKind {
    const char* tag;
    const char* status;
};

void ZorvikCheckoutWebView::handleUPISuccess(const TransactionData& data) {
    printLine("[UPI SUCCESS] 🚀 Handling UPI success callback!");
    printLine(joined("[UPI SUCCESS] 📊 Success data: ", printed(data)));
    const auto token = options().orderToken;
    if (!token) {
        printLine("[UPI SUCCESS] ❌ No order token available");
        return;
    }
    printLine("[UPI SUCCESS] ✅ Order token available");
    _extractedTransactionId = transactionId(data, returnTransactionIdKeys);
    printLine(joined("[UPI SUCCESS] 🔍 Making transaction enquiry for: ", _extractedTransactionId));
    printLine(joined("[UPI SUCCESS] 📊 All transaction data: ", printed(data)));
    // The app's word is not taken on trust: the enquiry alone decides. Its completion holds the
    // screen strongly until it has run.
    const std::string orderId = getOrderID(*token);
    ZorvikCoreApiSDK::shared().getTransactionEnquiry(
        *token, orderId, orderId, _extractedTransactionId,
        [screen = self()](const Result<TransactionEnquiryResponse>& result) {
            screen->transactionEnquiryEnded(result);
        });
}

// Any thread: prints at once, touches the screen in main-queue turns only.
void ZorvikCheckoutWebView::transactionEnquiryEnded(
    const Result<TransactionEnquiryResponse>& result) {
    if (!result) {
        printLine(joined("[UPI SUCCESS] ❌ Transaction enquiry failed: ",
                         result.error().localizedDescription));
        DispatchQueue::main().async([screen = weakSelf()] {
            const auto controller = screen.lock();
            if (!controller) return;
            printLine("[UPI SUCCESS] 📞 Calling delegate failure method");
            controller->reportFailureNextTurn(
                errorPayload("Transaction enquiry failed", controller->options().orderToken));
        });
        return;
    }
    printLine("[UPI SUCCESS] ✅ Transaction enquiry successful");
    printLine(joined("[UPI SUCCESS] 📊 Response: ", description(result.value().toDictionary())));
    DispatchQueue::main().async([screen = weakSelf(), response = result.value()] {
        const auto controller = screen.lock();
        if (!controller) return;
        printLine("[UPI SUCCESS] 📞 Calling delegate success method");
        if (const auto receiver = controller->delegate()) {
            receiver->zorvikCheckoutWebViewDidSucceed(controller, response.toDictionary());
        }
    });
}

// For the enquiry only. Other than the facade's reader it wants the segment padded already and
// keeps empty segments.
std::string ZorvikCheckoutWebView::getOrderID(const std::string& token) {
    const std::size_t first = token.find('.');
    if (first == std::string::npos) return "";
    const std::size_t second = token.find('.', first + 1);
    const auto bytes =
        platform::base64Decode(std::string_view(token).substr(first + 1, second - first - 1));
    if (!bytes) return "";
    const auto orderId = JSONSerialization::member(*bytes, "order_id");
    if (!orderId || !orderId.value() || orderId.value()->string() == nullptr) return "";
    return *orderId.value()->string();
}

void ZorvikCheckoutWebView::handleUPIFailure(const TransactionData& data) {
    printLine("[UPI FAILURE] 🚀 Handling UPI failure callback!");
    printLine(joined("[UPI FAILURE] 📊 Failure data: ", printed(data)));
    std::string reason = "Payment failed";
    if (const auto given = data.find("reason"); given != data.end()) {
        reason = given->second;
    } else if (const auto message = data.find("message"); message != data.end()) {
        reason = message->second;
    }
    _extractedTransactionId = transactionId(data, returnTransactionIdKeys);
    printLine(joined("[UPI FAILURE] ❌ Payment failed: ", reason));
    reportUPIFailure({"[UPI FAILURE]", "failed"}, reason, _extractedTransactionId, data);
}

void ZorvikCheckoutWebView::handleUPICancellation(const TransactionData& data) {
    printLine("[UPI CANCELLATION] 🚀 Handling UPI cancellation callback!");
    printLine(joined("[UPI CANCELLATION] 📊 Cancellation data: ", printed(data)));
    printLine("[UPI CANCELLATION] ⏹️ Payment cancelled by user");
    _extractedTransactionId = transactionId(data, returnTransactionIdKeys);
    reportUPIFailure({"[UPI CANCELLATION]", "cancelled"}, "Payment cancelled by user",
                     _extractedTransactionId, data);
}

void ZorvikCheckoutWebView::handleUPIUnknown(const TransactionData& data) {
    printLine("[UPI UNKNOWN] 🚀 Handling UPI unknown status callback!");
    printLine(joined("[UPI UNKNOWN] 📊 Unknown data: ", printed(data)));
    printLine("[UPI UNKNOWN] ❓ Unknown payment status");
    _extractedTransactionId = transactionId(data, returnTransactionIdKeys);
    reportUPIFailure({"[UPI UNKNOWN]", "unknown"}, "Unknown payment status",
                     _extractedTransactionId, data);
}

void ZorvikCheckoutWebView::reportUPIFailure(const UPIFailureKind& kind, const std::string& reason,
                                             const std::string& transactionId,
                                             const TransactionData& data) {
    inBackground([screen = weakSelf(), kind, reason, transactionId, data] {
        if (const auto controller = screen.lock()) {
            controller->logEvent(EventConstants::PAYMENT_STATUS, {{"transactionId", transactionId},
                                                                  {"error_reason", reason},
                                                                  {"upi_data", dictionaryOf(data)},
                                                                  {"status", kind.status}});
        }
    });
    // Holds the screen strongly: its line and its payload come whatever happens to the screen.
    DispatchQueue::main().async([screen = self(), kind, reason, transactionId] {
        printLine(joined(kind.tag, " 📞 Calling delegate failure method"));
        auto payload = errorPayload(reason, screen->options().orderToken);
        payload["transaction_id"] = transactionId;
        payload["zorvik_transaction_id"] = transactionId;
        screen->reportFailureNextTurn(payload);
    });
}

}  // namespace zorvik
