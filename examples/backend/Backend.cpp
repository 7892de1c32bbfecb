#include "examples/backend/Backend.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>

#include "examples/common/OrderRecordJSON.h"
#include "platform/foundation/JSONSerialization.h"
#include "platform/foundation/Shortened.h"

namespace zorvik::demo {

using development::OrderDetails;
using development::OrderDraft;
using development::OrderRecord;
using development::Payment;
using platform::Array;
using platform::Dictionary;
using platform::JSONSerialization;
using platform::Value;

namespace {

constexpr const char* faultsPath = "/api/demo/faults";

// The segment that "*" stands for; nullopt when the path does not match.
std::optional<std::string> match(std::string_view pattern, std::string_view path) {
    const std::size_t star = pattern.find('*');
    if (star == pattern.npos)
        return pattern == path ? std::optional<std::string>("") : std::nullopt;
    const std::string_view before = pattern.substr(0, star);
    const std::string_view after = pattern.substr(star + 1);
    if (path.size() <= before.size() + after.size() || !path.starts_with(before) ||
        !path.ends_with(after)) {
        return std::nullopt;
    }
    const std::string_view segment =
        path.substr(before.size(), path.size() - before.size() - after.size());
    if (segment.find('/') != segment.npos) return std::nullopt;
    return std::string(segment);
}

// "" when every line item can be shown, else what is wrong.
std::string problemWith(const Array& lineItems) {
    for (const Value& item : lineItems) {
        const Dictionary* fields = item.dictionary();
        if (!fields || textOf(*fields, "name").empty()) return "Every line item needs a \"name\"";
        const std::string amount = textOf(*fields, "amount");
        if (!development::minorUnitsFrom(std::string_view(amount))) {
            return "The \"amount\" of every line item must be money such as \"1499.00\"";
        }
    }
    return "";
}

}  // namespace

HttpResponse jsonResponse(unsigned status, const Dictionary& fields) {
    auto json = JSONSerialization::data(fields);
    if (!json) return {500, "application/json", R"({"error":"The answer has no JSON form"})"};
    return {status, "application/json", std::move(json).value()};
}

HttpResponse errorResponse(unsigned status, const std::string& message) {
    return jsonResponse(status, {{"error", message}});
}

void Backend::setOrigins(std::string origin, std::string bankOrigin) {
    origin_ = std::move(origin);
    bankOrigin_ = std::move(bankOrigin);
}

const std::vector<Backend::Route>& Backend::routes() {
    static const std::vector<Route> table{
        {"GET", "/checkout", &Backend::servePage},
        {"GET", "/processing", &Backend::servePage},
        {"GET", "/bank", &Backend::servePage},
        {"GET", "/payment/response", &Backend::servePage},
        {"GET", "/assets/*", &Backend::servePage},
        {"GET", "/icons/*", &Backend::serveIcon},
        {"POST", "/api/orders", &Backend::createOrder},
        {"GET", "/api/orders/*", &Backend::readOrder},
        {"POST", "/api/orders/*/details", &Backend::updateOrder},
        {"POST", "/api/orders/*/payments", &Backend::recordPayment},
        {"GET", "/api/checkout", &Backend::readCheckout},
        {"GET", "/api/checkout/transaction", &Backend::readTransaction},
        {"POST", "/api/checkout/card", &Backend::payByCard},
        {"POST", "/api/checkout/bank", &Backend::startBankPayment},
        {"POST", "/api/checkout/bank/answer", &Backend::answerBankPayment},
        {"POST", "/api/checkout/upi", &Backend::startUpiPayment},
        {"POST", "/api/checkout/close", &Backend::closePayments},
        {"POST", "/api/bank/upi/*", &Backend::reportFromUpiApp},
        {"POST", faultsPath, &Backend::setFaults},
        {"POST", "/api/demo/journal", &Backend::writeJournal},
    };
    return table;
}

HttpResponse Backend::handle(const HttpRequest& request) {
    // The bank hears of a payment by the UPI app's own network.
    const bool isOfShop = request.path != faultsPath && !request.path.starts_with("/api/bank/");
    if (isNetworkGone_ && isOfShop) return {0, "", "", 0, true};
    bool isKnownPath = false;
    for (const Route& route : routes()) {
        const auto name = match(route.pattern, request.path);
        if (!name) continue;
        isKnownPath = true;
        if (request.method != route.method) continue;
        Dictionary body;
        if (request.method == "POST") {
            auto json = JSONSerialization::jsonObject(request.body,
                                                      JSONSerialization::ReadingOptions::none);
            if (!json) {
                return errorResponse(400,
                                     "The body is no JSON: " + json.error().localizedDescription);
            }
            const Dictionary* fields = json.value().dictionary();
            if (!fields) return errorResponse(400, "The body must be a JSON object");
            body = *fields;
        }
        return (this->*route.handler)(request, body, *name);
    }
    return isKnownPath ? errorResponse(405, "This address does not answer " + request.method)
                       : errorResponse(404, "There is nothing at this address");
}

HttpResponse Backend::createOrder(const HttpRequest&, const Dictionary& body, const std::string&) {
    const auto amount = development::minorUnitsFrom(std::string_view(textOf(body, "amount")));
    if (!amount) return errorResponse(400, "The \"amount\" must be money such as \"1499.00\"");
    OrderDraft draft{*amount, textOf(body, "currency"), {}, std::nullopt};
    if (const auto items = body.find("line_items"); items != body.end()) {
        if (!items->second.array()) return errorResponse(400, "\"line_items\" must be an array");
        draft.lineItems = *items->second.array();
    }
    if (const std::string problem = problemWith(draft.lineItems); !problem.empty()) {
        return errorResponse(400, problem);
    }
    if (const auto user = body.find("user"); user != body.end() && !user->second.isNull()) {
        if (!user->second.dictionary()) return errorResponse(400, "\"user\" must be an object");
        draft.user = *user->second.dictionary();
    }
    const auto order = book_.create(draft);
    if (!order) return errorResponse(400, order.error().localizedDescription);
    return jsonResponse(201, orderToDictionary(order.value()));
}

HttpResponse Backend::readOrder(const HttpRequest& request, const Dictionary&,
                                const std::string& orderId) {
    if (enquiryFails_) return errorResponse(503, "The bank's enquiry service is not answering");
    const auto token = request.query.find("token");
    const auto order = book_.find(token == request.query.end() ? "" : token->second, orderId);
    if (!order) return errorResponse(404, order.error().localizedDescription);
    return jsonResponse(200, orderToDictionary(order.value()));
}

HttpResponse Backend::updateOrder(const HttpRequest&, const Dictionary& body,
                                  const std::string& orderId) {
    const auto order = book_.updateDetails(
        textOf(body, "token"), orderId,
        OrderDetails{textOf(body, "callback_mode"), textOf(body, "referrer_platform"),
                     textOf(body, "referrer_platform_version")});
    if (!order) return errorResponse(404, order.error().localizedDescription);
    return jsonResponse(200, orderToDictionary(order.value()));
}

HttpResponse Backend::recordPayment(const HttpRequest&, const Dictionary& body,
                                    const std::string& orderId) {
    const auto status = development::paymentStatusFrom(textOf(body, "status"));
    if (!status) return errorResponse(400, "The \"status\" must be PENDING, SUCCESS or FAILED");
    return settle(orderId, {textOf(body, "transaction_id"), textOf(body, "method"), *status,
                            textOf(body, "message")});
}

HttpResponse Backend::settle(const std::string& orderId, const Payment& payment) {
    const auto order = book_.recordPayment(orderId, payment);
    if (!order) return errorResponse(409, order.error().localizedDescription);
    return jsonResponse(200, orderToDictionary(order.value()));
}

HttpResponse Backend::reportFromUpiApp(const HttpRequest&, const Dictionary& body,
                                       const std::string& transactionId) {
    const auto found = collections_.find(transactionId);
    if (found == collections_.end()) return errorResponse(404, "Unknown transaction");
    const auto status = development::paymentStatusFrom(textOf(body, "status"));
    if (!status) return errorResponse(400, "The \"status\" must be PENDING, SUCCESS or FAILED");
    Collection& collection = found->second;
    HttpResponse response =
        settle(collection.orderId, {transactionId, "UPI", *status, textOf(body, "message")});
    if (response.status != 200) return response;
    const auto word = body.find("return_status");
    const bool hasWord = word != body.end() && word->second.string();
    collection.reported = std::chrono::steady_clock::now();
    collection.returnStatus = hasWord ? std::optional(*word->second.string()) : std::nullopt;
    const auto reference = body.find("return_reference");
    collection.returnsReference = reference == body.end() || reference->second != Value(false);
    return response;
}

// What the page received and made of it, a line of standard output each.
HttpResponse Backend::writeJournal(const HttpRequest&, const Dictionary& body, const std::string&) {
    std::string line = textOf(body, "line");
    std::replace_if(
        line.begin(), line.end(), [](unsigned char character) { return character < ' '; }, ' ');
    std::cout << "page     " << platform::shortened(line) << std::endl;
    return jsonResponse(200, {});
}

HttpResponse Backend::setFaults(const HttpRequest&, const Dictionary& body, const std::string&) {
    const std::map<std::string, bool*> faults{{"enquiry_fails", &enquiryFails_},
                                              {"pages_gone", &arePagesGone_},
                                              {"network_gone", &isNetworkGone_}};
    for (const auto& [name, value] : body) {
        const auto fault = faults.find(name);
        if (fault == faults.end() || !value.boolean()) {
            return errorResponse(400,
                                 "Faults are \"enquiry_fails\", \"pages_gone\" and "
                                 "\"network_gone\", each true or false");
        }
        *fault->second = *value.boolean();
    }
    return jsonResponse(200, {});
}

HttpResponse Backend::servePage(const HttpRequest& request, const Dictionary&, const std::string&) {
    struct File {
        const char* path;
        const char* name;
        const char* contentType;
    };
    static constexpr File files[] = {
        {"/checkout", "checkout.html", "text/html; charset=utf-8"},
        {"/processing", "processing.html", "text/html; charset=utf-8"},
        {"/bank", "bank.html", "text/html; charset=utf-8"},
        {"/payment/response", "response.html", "text/html; charset=utf-8"},
        {"/assets/checkout.css", "checkout.css", "text/css; charset=utf-8"},
        {"/assets/bridge.js", "bridge.js", "text/javascript; charset=utf-8"},
        {"/assets/inspector.js", "inspector.js", "text/javascript; charset=utf-8"},
        {"/assets/service.js", "service.js", "text/javascript; charset=utf-8"},
        {"/assets/checkout.js", "checkout.js", "text/javascript; charset=utf-8"},
        {"/assets/upi.js", "upi.js", "text/javascript; charset=utf-8"},
        {"/assets/processing.js", "processing.js", "text/javascript; charset=utf-8"},
        {"/assets/bank.js", "bank.js", "text/javascript; charset=utf-8"},
    };
    if (arePagesGone_) return {0, "", "", latency_, true};
    for (const File& file : files) {
        if (request.path != file.path) continue;
        HttpResponse response = serveFile(file.name, file.contentType);
        if (request.path == "/checkout") response.delayMilliseconds = latency_;
        return response;
    }
    return errorResponse(404, "There is nothing at this address");
}

HttpResponse Backend::serveIcon(const HttpRequest&, const Dictionary&, const std::string& name) {
    const auto& apps = demoUPIApps();
    const bool isKnown = std::any_of(apps.begin(), apps.end(),
                                     [&](const DemoUPIApp& app) { return app.icon == name; });
    if (!isKnown) return errorResponse(404, "There is nothing at this address");
    return serveFile("icons/" + name, "image/svg+xml");
}

HttpResponse Backend::serveFile(const std::string& name, const std::string& contentType) const {
    std::ifstream file(pagesFolder_ + "/" + name, std::ios::binary);
    if (!file) return errorResponse(500, "The file " + name + " is missing");
    return {200, contentType, std::string(std::istreambuf_iterator<char>(file), {})};
}

}  // namespace zorvik::demo
