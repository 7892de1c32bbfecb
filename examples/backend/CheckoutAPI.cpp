// What the hosted checkout page asks of its back end.
#include <algorithm>
#include <cctype>

#include "examples/backend/Backend.h"
#include "examples/common/HttpClient.h"
#include "examples/common/OrderRecordJSON.h"
#include "platform/foundation/Data.h"
#include "platform/foundation/JSONSerialization.h"

namespace zorvik::demo {

using development::OrderRecord;
using development::Payment;
using development::PaymentStatus;
using platform::Array;
using platform::Dictionary;
using platform::Error;
using platform::JSONSerialization;
using platform::Result;
using platform::Value;

namespace {

constexpr const char* merchantName = "Teal Heron";
constexpr const char* merchantAddress = "tealheron@banyanhill";
// Invented numbers under an issuer range that no network uses; both pass the usual checksum.
constexpr const char* payingCard = "9900000000000010";
constexpr const char* decliningCard = "9900000000000028";

struct Bank {
    const char* code;
    const char* name;
};
constexpr Bank banks[] = {{"BANYANHILL", "Banyan Hill Bank"},
                          {"CORALCOAST", "Coral Coast Bank"},
                          {"RIVERSTONE", "Riverstone Co-operative"}};

const Bank* bankByCode(std::string_view code) {
    const auto* found = std::find_if(std::begin(banks), std::end(banks),
                                     [code](const Bank& bank) { return bank.code == code; });
    return found == std::end(banks) ? nullptr : found;
}

std::string queryValue(const HttpRequest& request, const std::string& name) {
    const auto found = request.query.find(name);
    return found == request.query.end() ? "" : found->second;
}

bool isDigits(std::string_view text, std::size_t least, std::size_t most) {
    return text.size() >= least && text.size() <= most &&
           std::all_of(text.begin(), text.end(),
                       [](unsigned char character) { return std::isdigit(character) != 0; });
}

bool passesChecksum(std::string_view number) {
    int sum = 0;
    bool isDoubled = false;
    for (auto digit = number.rbegin(); digit != number.rend(); ++digit) {
        int value = *digit - '0';
        if (isDoubled) value = value > 4 ? value * 2 - 9 : value * 2;
        sum += value;
        isDoubled = !isDoubled;
    }
    return sum % 10 == 0;
}

// "" for a card that can be charged, else what the customer should correct.
std::string problemWithCard(const Dictionary& card) {
    const std::string number = textOf(card, "number");
    if (!isDigits(number, 12, 19) || !passesChecksum(number)) {
        return "This card number is not complete";
    }
    const std::string expiry = textOf(card, "expiry");
    const bool isShaped = expiry.size() == 5 && expiry[2] == '/' &&
                          isDigits(expiry.substr(0, 2), 2, 2) && isDigits(expiry.substr(3), 2, 2);
    if (!isShaped || expiry.substr(0, 2) < "01" || expiry.substr(0, 2) > "12") {
        return "The expiry date must look like 08/30";
    }
    if (!isDigits(textOf(card, "cvv"), 3, 4)) return "The security code has three or four digits";
    return "";
}

}  // namespace

Result<OrderRecord> Backend::orderByToken(const std::string& token) {
    const Error unreadable{"zorvik.demo", 1, "This payment link is not complete"};
    const std::size_t first = token.find('.');
    const std::size_t second = first == token.npos ? first : token.find('.', first + 1);
    if (second == token.npos) return unreadable;
    const auto json = platform::base64Decode(token.substr(first + 1, second - first - 1));
    if (!json) return unreadable;
    const auto claims =
        JSONSerialization::jsonObject(*json, JSONSerialization::ReadingOptions::none);
    if (!claims || !claims.value().dictionary()) return unreadable;
    return book_.find(token, textOf(*claims.value().dictionary(), "order_id"));
}

std::string Backend::newTransactionId() {
    const std::string digits = std::to_string(++lastTransaction_);
    return "TXN" + std::string(digits.size() < 9 ? 9 - digits.size() : 0, '0') + digits;
}

HttpResponse Backend::readCheckout(const HttpRequest& request, const Dictionary&,
                                   const std::string&) {
    const auto order = orderByToken(queryValue(request, "token"));
    if (!order) return errorResponse(404, order.error().localizedDescription);
    Array bankList;
    for (const Bank& bank : banks) {
        bankList.emplace_back(Dictionary{{"code", bank.code}, {"name", bank.name}});
    }
    Dictionary fields = orderToDictionary(order.value());
    fields.erase("order_token");
    fields["merchant"] = merchantName;
    fields["banks"] = bankList;
    fields["response_url"] = origin_ + "/payment/response";
    fields["open_upi_payment"] = nullptr;
    for (const Payment& payment : order.value().payments) {
        const auto collection = collections_.find(payment.transactionId);
        if (payment.status == PaymentStatus::pending && collection != collections_.end()) {
            fields["open_upi_payment"] =
                Dictionary{{"transaction_id", payment.transactionId},
                           {"app_name", collection->second.app->name},
                           {"package_name", collection->second.app->packageName}};
        }
    }
    return jsonResponse(200, fields);
}

HttpResponse Backend::readTransaction(const HttpRequest& request, const Dictionary&,
                                      const std::string&) {
    const std::string token = queryValue(request, "token");
    const std::string transactionId = queryValue(request, "transaction_id");
    const auto order = orderByToken(token);
    if (!order) return errorResponse(404, order.error().localizedDescription);
    const Payment* payment = order.value().payment(transactionId);
    if (!payment) return errorResponse(404, "Unknown transaction");
    const auto collection = collections_.find(transactionId);
    const bool isReported = collection != collections_.end() && collection->second.reported;
    const bool isFinished =
        isReported ? isHandedBack(collection->second) : payment->status != PaymentStatus::pending;
    return jsonResponse(
        200, {{"order_id", order.value().orderId},
              {"amount", development::amountText(order.value().draft.amountInMinorUnits)},
              {"currency", order.value().draft.currency},
              {"transaction_id", transactionId},
              {"method", payment->method},
              {"status", development::text(payment->status)},
              {"message", payment->message},
              {"is_finished", isFinished},
              {"next", wayBack(token, transactionId)},
              {"response_url", origin_ + "/payment/response"}});
}

std::string Backend::processingPage(const std::string& token,
                                    const std::string& transactionId) const {
    return origin_ + "/processing?token=" + percentEncoded(token) +
           "&transaction_id=" + percentEncoded(transactionId);
}

bool Backend::isHandedBack(const Collection& collection) const {
    return collection.reported && std::chrono::steady_clock::now() - *collection.reported >=
                                      std::chrono::milliseconds(latency_);
}

std::string Backend::wayBack(const std::string& token, const std::string& transactionId) const {
    const auto found = collections_.find(transactionId);
    if (found == collections_.end() || !isHandedBack(found->second)) return "";
    const Collection& collection = found->second;
    if (collection.app->wayBack == WayBack::processingPage) {
        return processingPage(token, transactionId);
    }
    std::string address = collection.app->returnScheme + "://payment";
    char separator = '?';
    const auto add = [&](const std::string& name, const std::string& value) {
        address += separator + name + "=" + percentEncoded(value);
        separator = '&';
    };
    if (collection.returnStatus) add("status", *collection.returnStatus);
    if (collection.returnsReference) add("tr", transactionId);
    if (collection.returnStatus == "failure") add("reason", "Declined in " + collection.app->name);
    return address;
}

HttpResponse Backend::payByCard(const HttpRequest&, const Dictionary& body, const std::string&) {
    const auto order = orderByToken(textOf(body, "token"));
    if (!order) return errorResponse(404, order.error().localizedDescription);
    if (const std::string problem = problemWithCard(body); !problem.empty()) {
        return errorResponse(400, problem);
    }
    const std::string number = textOf(body, "number");
    if (number != payingCard && number != decliningCard) {
        return errorResponse(400, "Only the demonstration's own cards are known here");
    }
    closeOpenPayments(order.value());
    const bool isPaid = number == payingCard;
    const Payment payment{newTransactionId(), "CARD",
                          isPaid ? PaymentStatus::success : PaymentStatus::failed,
                          isPaid ? "" : "The card was declined by its bank"};
    const HttpResponse settled = settle(order.value().orderId, payment);
    if (settled.status != 200) return settled;
    return jsonResponse(200, {{"transaction_id", payment.transactionId}});
}

HttpResponse Backend::startBankPayment(const HttpRequest&, const Dictionary& body,
                                       const std::string&) {
    const std::string token = textOf(body, "token");
    const auto order = orderByToken(token);
    if (!order) return errorResponse(404, order.error().localizedDescription);
    const Bank* bank = bankByCode(textOf(body, "bank_code"));
    if (!bank) return errorResponse(400, "Choose one of the banks");
    closeOpenPayments(order.value());
    const std::string transactionId = newTransactionId();
    const HttpResponse started =
        settle(order.value().orderId, {transactionId, "BANK", PaymentStatus::pending, ""});
    if (started.status != 200) return started;
    return jsonResponse(200, {{"transaction_id", transactionId},
                              {"next", bankOrigin_ + "/bank?token=" + percentEncoded(token) +
                                           "&transaction_id=" + transactionId +
                                           "&bank=" + percentEncoded(bank->name)}});
}

HttpResponse Backend::answerBankPayment(const HttpRequest&, const Dictionary& body,
                                        const std::string&) {
    const std::string token = textOf(body, "token");
    const auto order = orderByToken(token);
    if (!order) return errorResponse(404, order.error().localizedDescription);
    const std::string transactionId = textOf(body, "transaction_id");
    const Payment* payment = order.value().payment(transactionId);
    if (!payment || payment->method != "BANK") return errorResponse(404, "Unknown transaction");
    const auto approves = body.find("approves");
    if (approves == body.end() || !approves->second.boolean()) {
        return errorResponse(400, "\"approves\" must be true or false");
    }
    const bool isPaid = *approves->second.boolean();
    const HttpResponse settled =
        settle(order.value().orderId,
               {transactionId, "BANK", isPaid ? PaymentStatus::success : PaymentStatus::failed,
                isPaid ? "" : "Declined at the bank"});
    if (settled.status != 200) return settled;
    return jsonResponse(200, {{"next", processingPage(token, transactionId)}});
}

// Only one attempt at a time may still be paid, so that nobody pays twice.
void Backend::closeOpenPayments(const OrderRecord& order) {
    for (const Payment& payment : order.payments) {
        if (payment.status != PaymentStatus::pending) continue;
        book_.recordPayment(order.orderId, {payment.transactionId, payment.method,
                                            PaymentStatus::failed, "Closed on the checkout page"});
    }
}

HttpResponse Backend::startUpiPayment(const HttpRequest&, const Dictionary& body,
                                      const std::string&) {
    const auto order = orderByToken(textOf(body, "token"));
    if (!order) return errorResponse(404, order.error().localizedDescription);
    const DemoUPIApp* app = demoUPIAppByPackage(textOf(body, "package_name"));
    if (!app) return errorResponse(400, "This app takes no part in the demonstration");
    closeOpenPayments(order.value());
    const std::string transactionId = newTransactionId();
    const HttpResponse started =
        settle(order.value().orderId, {transactionId, "UPI", PaymentStatus::pending, ""});
    if (started.status != 200) return started;
    collections_[transactionId] =
        Collection{order.value().orderId, app, std::nullopt, std::nullopt, true};
    const std::string link =
        app->scheme + "://pay?pa=" + percentEncoded(merchantAddress) +
        "&pn=" + percentEncoded(merchantName) + "&tr=" + transactionId +
        "&am=" + development::amountText(order.value().draft.amountInMinorUnits) +
        "&cu=" + order.value().draft.currency + "&tn=" + percentEncoded(order.value().orderId);
    return jsonResponse(200, {{"transaction_id", transactionId},
                              {"app_name", app->name},
                              {"package_name", app->packageName},
                              {"url", link}});
}

HttpResponse Backend::closePayments(const HttpRequest&, const Dictionary& body,
                                    const std::string&) {
    const std::string token = textOf(body, "token");
    const auto order = orderByToken(token);
    if (!order) return errorResponse(404, order.error().localizedDescription);
    closeOpenPayments(order.value());
    return jsonResponse(200, orderToDictionary(orderByToken(token).value()));
}

}  // namespace zorvik::demo
