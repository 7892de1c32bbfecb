#include <gmock/gmock.h>

#include "examples/backend/Backend.h"
#include "examples/common/OrderRecordJSON.h"
#include "platform/foundation/JSONSerialization.h"

namespace zorvik::demo {
namespace {

using platform::Dictionary;
using platform::JSONSerialization;
using testing::HasSubstr;

// The demonstration's back end, asked without a socket.
class DemoBackendTest : public testing::Test {
  protected:
    DemoBackendTest() { backend_.setOrigins("http://127.0.0.1:1", "http://localhost:1"); }

    HttpResponse post(const std::string& path, const Dictionary& body) {
        return backend_.handle({"POST", path, {}, JSONSerialization::data(body).value()});
    }

    Dictionary answerTo(const HttpResponse& response) {
        const auto value = JSONSerialization::jsonObject(response.body, {});
        EXPECT_TRUE(value) << response.body;
        return value ? *value.value().dictionary() : Dictionary();
    }

    std::string newToken() {
        const auto order =
            answerTo(post("/api/orders", {{"amount", "2548.00"}, {"currency", "INR"}}));
        return textOf(order, "order_token");
    }

    std::string startUpi(const std::string& token) {
        const auto started = answerTo(
            post("/api/checkout/upi", {{"token", token}, {"package_name", "demo.nilgiri.pay"}}));
        return textOf(started, "transaction_id");
    }

    Dictionary transaction(const std::string& token, const std::string& id) {
        return answerTo(backend_.handle(
            {"GET", "/api/checkout/transaction", {{"token", token}, {"transaction_id", id}}, ""}));
    }

    Backend backend_{"/nonexistent", 0};
};

TEST_F(DemoBackendTest, BadRequestsAreAnsweredWithWhatIsWrong) {
    struct Row {
        const char* method;
        const char* path;
        const char* body;
        unsigned status;
        const char* words;
    };
    const Row rows[] = {
        {"POST", "/api/orders", "{", 400, "no JSON"},
        {"POST", "/api/orders", "[]", 400, "must be a JSON object"},
        {"POST", "/api/orders", R"({"amount":12,"currency":"INR"})", 400, "amount"},
        {"POST", "/api/orders", R"({"amount":"12,50","currency":"INR"})", 400, "amount"},
        {"POST", "/api/orders", R"({"amount":"5","currency":"rupees"})", 400, "currency"},
        {"POST", "/api/orders", R"({"amount":"5","currency":"INR","line_items":[{}]})", 400,
         "name"},
        {"POST", "/api/orders/ORD-9/payments", R"({"status":"PAID"})", 400, "status"},
        {"POST", "/api/checkout/upi", R"({"token":"a.b.c"})", 404, "not complete"},
        {"POST", "/api/checkout/upi", "{}", 404, "not complete"},
        {"POST", "/api/bank/upi/TXN1", R"({"status":"SUCCESS"})", 404, "Unknown"},
        {"POST", "/api/demo/faults", R"({"fire":true})", 400, "Faults are"},
        {"PUT", "/api/orders", "{}", 405, "PUT"},
        {"GET", "/assets/../../etc/passwd", "", 404, "nothing at this address"},
    };
    for (const Row& row : rows) {
        const HttpResponse response = backend_.handle({row.method, row.path, {}, row.body});
        EXPECT_EQ(response.status, row.status) << row.path << row.body;
        EXPECT_THAT(textOf(answerTo(response), "error"), HasSubstr(row.words)) << row.body;
    }
}

TEST_F(DemoBackendTest, TheReturnAddressCarriesWhatTheAppSaid) {
    struct Row {
        Dictionary report;
        const char* query;
    };
    const std::vector<Row> rows{
        {{{"status", "SUCCESS"}, {"return_status", "success"}}, "?status=success&tr="},
        {{{"status", "FAILED"}, {"return_status", "cancelled"}}, "?status=cancelled&tr="},
        {{{"status", "FAILED"}, {"return_status", "failure"}}, "&reason=Declined%20in%20Nilgiri"},
        {{{"status", "SUCCESS"}}, "payment?tr=TXN"},
    };
    for (const Row& row : rows) {
        const std::string token = newToken();
        const std::string id = startUpi(token);
        EXPECT_EQ(textOf(transaction(token, id), "next"), "");
        EXPECT_EQ(post("/api/bank/upi/" + id, row.report).status, 200U);
        EXPECT_THAT(textOf(transaction(token, id), "next"), HasSubstr(row.query));
    }
}

TEST_F(DemoBackendTest, ARequestThatTheCustomerLeftCannotBePaidLater) {
    const std::string token = newToken();
    const std::string left = startUpi(token);
    const std::string current = startUpi(token);
    const HttpResponse late = post("/api/bank/upi/" + left, {{"status", "SUCCESS"}});
    EXPECT_EQ(late.status, 409U);
    EXPECT_EQ(textOf(transaction(token, left), "status"), "FAILED");
    EXPECT_EQ(post("/api/bank/upi/" + current, {{"status", "SUCCESS"}}).status, 200U);
    // Paid is paid: neither closing nor another attempt changes it.
    EXPECT_EQ(textOf(answerTo(post("/api/checkout/close", {{"token", token}})), "status"),
              "SUCCESS");
    EXPECT_EQ(
        post(
            "/api/checkout/card",
            {{"token", token}, {"number", "9900000000000010"}, {"expiry", "08/30"}, {"cvv", "123"}})
            .status,
        409U);
}

TEST_F(DemoBackendTest, AFaultStaysUntilItIsSwitchedOff) {
    EXPECT_EQ(post("/api/demo/faults", {{"network_gone", true}}).status, 200U);
    EXPECT_TRUE(post("/api/orders", {}).closesConnection);
    EXPECT_EQ(post("/api/demo/faults", {{"network_gone", false}}).status, 200U);
    EXPECT_FALSE(post("/api/orders", {}).closesConnection);
}

}  // namespace
}  // namespace zorvik::demo
