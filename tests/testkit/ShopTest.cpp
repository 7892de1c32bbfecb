#include <gtest/gtest.h>

#include "testkit/CheckoutTestKit.h"

// The code under test: yours.
struct Shop : zorvik::ZorvikCheckoutSDKDelegate {
    std::string notice = "none";
    void onCheckoutResponse(const zorvik::platform::Dictionary& data) override {
        notice = data.contains("error") ? "try again" : "confirming";
    }
};

TEST(ShopTest, TellsAnAnsweredPaymentFromAFailedOne) {
    zorvik::testkit::CheckoutTestKit kit;
    const auto shop = std::make_shared<Shop>();
    kit.sdk().setDelegate(shop);
    kit.openCheckout();
    kit.pageAnswers({{"status", "SUCCESS"}});
    EXPECT_EQ(shop->notice, "confirming");
    kit.openCheckout();
    kit.upiAppReturns(zorvik::testkit::UPIStatus::cancelled);
    EXPECT_EQ(shop->notice, "try again");
}
