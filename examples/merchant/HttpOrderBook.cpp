#include "examples/merchant/HttpOrderBook.h"

#include "examples/common/HttpClient.h"
#include "examples/common/OrderRecordJSON.h"
#include "trace/Recording.h"

namespace zorvik::demo {

using development::OrderDetails;
using development::OrderDraft;
using development::OrderRecord;
using development::Payment;
using platform::Dictionary;
using platform::Result;

Result<OrderRecord> HttpOrderBook::ask(const char* what, const std::string& method,
                                       const std::string& url,
                                       const std::optional<Dictionary>& body) const {
    const trace::Step asked(trace::Lane::coreServices, what, {{"request", method + " " + url}});
    const auto answer = exchange(method, url, body);
    const trace::Step answered(
        trace::Lane::coreServices, what,
        answer ? answer.value() : Dictionary{{"error", answer.error().localizedDescription}},
        trace::Step::Kind::answer);
    if (!answer) return answer.error();
    return orderFromDictionary(answer.value());
}

std::string HttpOrderBook::orderUrl(const std::string& orderId) const {
    return backendUrl_ + "/api/orders/" + percentEncoded(orderId);
}

Result<OrderRecord> HttpOrderBook::create(const OrderDraft& draft) {
    Dictionary body{{"amount", development::amountText(draft.amountInMinorUnits)},
                    {"currency", draft.currency},
                    {"line_items", draft.lineItems}};
    if (draft.user) body["user"] = *draft.user;
    return ask("create order", "POST", backendUrl_ + "/api/orders", body);
}

Result<OrderRecord> HttpOrderBook::updateDetails(const std::string& token,
                                                 const std::string& orderId,
                                                 const OrderDetails& details) {
    return ask("update order", "POST", orderUrl(orderId) + "/details",
               Dictionary{{"token", token},
                          {"callback_mode", details.callbackMode},
                          {"referrer_platform", details.referrerPlatform},
                          {"referrer_platform_version", details.referrerPlatformVersion}});
}

Result<OrderRecord> HttpOrderBook::find(const std::string& token, const std::string& orderId) {
    return ask("find order", "GET", orderUrl(orderId) + "?token=" + percentEncoded(token),
               std::nullopt);
}

Result<OrderRecord> HttpOrderBook::recordPayment(const std::string& orderId,
                                                 const Payment& payment) {
    return ask("record payment", "POST", orderUrl(orderId) + "/payments",
               Dictionary{{"transaction_id", payment.transactionId},
                          {"method", payment.method},
                          {"status", development::text(payment.status)},
                          {"message", payment.message}});
}

}  // namespace zorvik::demo
