#include <gmock/gmock.h>

#include "examples/backend/Backend.h"
#include "examples/common/OrderRecordJSON.h"
#include "platform/foundation/JSONSerialization.h"

namespace zorvik::demo {

TEST(DemoBackendTest, BadRequestsAreAnsweredWithWhatIsWrong) {
    Backend backend{"/nonexistent", 0};
    const struct {
        const char* method;
        const char* path;
        const char* body;
        unsigned status;
        const char* words;
    } rows[] = {
        {"POST", "/api/orders", "{", 400, "no JSON"},
        {"POST", "/api/orders", R"({"amount":"12,50","currency":"INR"})", 400, "amount"},
        {"POST", "/api/orders", R"({"amount":"5","currency":"rupees"})", 400, "currency"},
        {"POST", "/api/orders/ORD-9/payments", R"({"status":"PAID"})", 400, "status"},
        {"POST", "/api/checkout/upi", "{}", 404, "not complete"},
        {"PUT", "/api/orders", "{}", 405, "PUT"},
        {"GET", "/assets/../../etc/passwd", "", 404, "nothing at this address"},
    };
    for (const auto& row : rows) {
        const HttpResponse response = backend.handle({row.method, row.path, {}, row.body});
        EXPECT_EQ(response.status, row.status) << row.path << row.body;
        const auto answer = platform::JSONSerialization::jsonObject(response.body, {});
        ASSERT_TRUE(answer) << response.body;
        EXPECT_THAT(textOf(*answer.value().dictionary(), "error"), testing::HasSubstr(row.words));
    }
}

}  // namespace zorvik::demo
