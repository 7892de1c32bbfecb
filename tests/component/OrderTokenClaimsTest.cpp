#include "platform/foundation/Data.h"
#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

using platform::base64Encode;

class OrderTokenClaimsTest : public CheckoutTest {};

std::string claimsOf(const std::string& orderId, const std::string& subMerchantId) {
    return tokenOf(R"({"order_id":)" + orderId + R"(,"sub_merchant_id":)" + subMerchantId + "}");
}

TEST_F(OrderTokenClaimsTest, TheReadersDifferInSegmentsAlphabetAndClaimTypesAndNeverFail) {
    const std::string claims = base64Encode(R"({"order_id":"o1","sub_merchant_id":"s1"})");
    const std::string plus = R"({"order_id":"o","sub_merchant_id":">>>"})";  // "+" in its base64
    const std::string deep = std::string(100'000, '[') + std::string(100'000, ']');
    const struct {
        const char* name;
        std::string token, orderId, subMerchantId, enquiryOrderId;  // the last by the screen's rule
    } cases[] = {
        {"no padding needed", plainToken(), "order-7", "sub-3", "order-7"},
        {"padding is added", tokenOf(R"({"order_id":"o","sub_merchant_id":"s"})"), "o", "s", ""},
        {"padding is there", "h." + base64Encode(R"({"order_id":"o"})") + ".s", "o", "", "o"},
        {"empty segments count for the screen", ".h.." + claims + "...s.", "o1", "s1", ""},
        {"an empty header", "." + claims + ".s", "", "", "o1"},
        {"one segment", claims, "", "", ""},
        {"four segments", "h." + claims + ".s.t", "", "", "o1"},
        {"length 4k+1", "h." + base64Encode("{}  {}").substr(0, 5) + ".s", "", "", ""},
        {"standard alphabet", "h." + base64Encode(plus) + ".s", "o", ">>>", "o"},
        {"URL-safe for +", "h." + urlSafeBase64(plus) + ".s", "", ">>>", ""},
        {"line break", "h." + claims.substr(0, 4) + "\n" + claims.substr(4) + ".s", "", "", ""},
        {"beyond 64 bits", claimsOf("\"o\"", "123456789012345678901"), "o", "123456789012345678901",
         ""},
        {"100,000 levels", claimsOf("\"o\"", deep), "", "", ""},
    };
    openScreen();
    for (const auto& [name, token, orderId, subMerchantId, enquired] : cases) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(ZorvikCheckoutSDK::getOrderID(token) == orderId);
        EXPECT_TRUE(ZorvikCheckoutSDK::getSubMerchantID(token) == subMerchantId);
        screen()->setOptions(optionsOf(token));
        decide("shopreturn://back?status=success");
        EXPECT_THAT(last(), testing::EndsWith(", " + enquired + ", " + enquired + ", )"));
        forget();
    }
}

}  // namespace
}  // namespace zorvik
