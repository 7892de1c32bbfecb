#include "examples/merchant/HttpOrderBook.h"

#include "examples/common/HttpClient.h"
#include "examples/common/OrderRecordJSON.h"

namespace zorvik::demo {

using development::OrderDetails;
using development::OrderDraft;
using development::OrderRecord;
using development::Payment;
using platform::Dictionary;
using platform::Result;

Result<OrderRecord> HttpOrderBook::orderFrom(const Result<Dictionary>& answer) const {
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
    return orderFrom(exchange("POST", backendUrl_ + "/api/orders", body));
}

Result<OrderRecord> HttpOrderBook::updateDetails(const std::string& token,
                                                 const std::string& orderId,
                                                 const OrderDetails& details) {
    return orderFrom(
        exchange("POST", orderUrl(orderId) + "/details",
                 Dictionary{{"token", token},
                            {"callback_mode", details.callbackMode},
                            {"referrer_platform", details.referrerPlatform},
                            {"referrer_platform_version", details.referrerPlatformVersion}}));
}

Result<OrderRecord> HttpOrderBook::find(const std::string& token, const std::string& orderId) {
    return orderFrom(exchange("GET", orderUrl(orderId) + "?token=" + percentEncoded(token)));
}

Result<OrderRecord> HttpOrderBook::recordPayment(const std::string& orderId,
                                                 const Payment& payment) {
    return orderFrom(exchange("POST", orderUrl(orderId) + "/payments",
                              Dictionary{{"transaction_id", payment.transactionId},
                                         {"method", payment.method},
                                         {"status", development::text(payment.status)},
                                         {"message", payment.message}}));
}

}  // namespace zorvik::demo
