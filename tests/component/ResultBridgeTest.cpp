#include "tests/component/CheckoutFixture.h"
#include "zorvik_mobile_kit_ios_webview_sdk/facade/ZorvikCheckoutSDKDelegateObjCProxy.h"

namespace zorvik {
namespace {

class ResultBridgeTest : public CheckoutTest {
  protected:
    ZorvikCheckoutSDKDelegateObjCProxy bridge{host};
};

TEST_F(ResultBridgeTest, TheReportedTransactionIdIsTheFirstStringOfItsKeys) {
    const std::pair<Dictionary, const char*> cases[] = {
        {{{"transactionId", "3"}, {"pspTransactionId", "2"}, {"zorvikTransactionId", "1"}}, "1"},
        {{{"zorvikTransactionId", 1}, {"pspTransactionId", "2"}, {"transactionId", "3"}}, "2"},
        {{{"transactionId", ""}, {"tr", "4"}}, ""},
        {{{"tr", "4"}, {"txnId", "5"}}, "4"},
        {{{"txnId", "5"}}, "extracted"},
        {{}, "unknown"},
    };
    for (const auto& [payload, reported] : cases) {
        SCOPED_TRACE(reported);
        openScreen();
        if (!payload.empty()) decide("shopreturn://back?status=success&tr=extracted");
        runAll();
        forget();
        bridge.zorvikCheckoutWebViewDidSucceed(screen(), payload);
        runAll();
        const Dictionary data{
            {"transactionId", reported}, {"payload", description(payload)}, {"status", "success"}};
        EXPECT_THAT(core.takeEvents(), ElementsAre("PAYMENT_STATUS " + description(data)));
        EXPECT_EQ(host->responses.back(), payload);
    }
}

TEST_F(ResultBridgeTest, AFailureIsLoggedWithItsPayloadAndHandedOnUnchanged) {
    const std::pair<Dictionary, const char*> cases[] = {
        {{{"error", "declined"}, {"n", 1}}, "declined"},
        {{{"error", 7}}, "Payment failed"},
    };
    for (const auto& [payload, error] : cases) {
        openScreen();
        bridge.zorvikCheckoutWebViewDidFail(screen(), payload);
        runAll();
        const Dictionary data{{"error", error}, {"payload", payload}, {"status", "failed"}};
        EXPECT_THAT(core.takeEvents(), ElementsAre("PAYMENT_STATUS " + description(data)));
        EXPECT_EQ(host->responses.back(), payload);
        EXPECT_FALSE(screen());
    }
    openScreen();
    host.reset();
    bridge.zorvikCheckoutWebViewDidFail(screen(), {});
    runAll();
    EXPECT_THAT(core.events(), ElementsAre(StartsWith("PAYMENT_STATUS")));
    EXPECT_FALSE(screen());
}

TEST_F(ResultBridgeTest, TheHostHearsBeforeTheScreenGoesAndTheEventFollowsInTheBackground) {
    openScreen();
    host->whenCalled = [&] { EXPECT_FALSE(screen()->isBeingDismissed()); };
    bridge.zorvikCheckoutWebViewDidSucceed(screen(), {});
    EXPECT_EQ(host->responses.size(), 1u);
    EXPECT_TRUE(screen()->isBeingDismissed());
    scheduler.advanceBy(5);
    EXPECT_THAT(core.events(), IsEmpty());
    ASSERT_TRUE(screen()) << "the event task holds it";
    screen()->setOptions(optionsOf("late"));
    scheduler.runOneBackgroundTask();
    EXPECT_THAT(core.events(), ElementsAre(StartsWith(R"(PAYMENT_STATUS "order-7" "late")")));
    EXPECT_FALSE(screen());
}

TEST_F(ResultBridgeTest, AReportReachesTheDelegateOfTheStartAndNoneAfterASecondCheckout) {
    const auto later = std::make_shared<RecordingHost>();
    checkout();
    sdk.setDelegate(later);
    redirect("%7B%22payload%22:%7B%22a%22:1%7D%7D");
    redirect("1");  // a second report of the same screen
    runAll();
    EXPECT_THAT(host->responses, ElementsAre(Dictionary{{"a", 1}}, Dictionary{}));

    checkout();
    sdk.checkout(presenter, optionsOf(plainToken()));
    redirect("1");
    runAll();
    EXPECT_FALSE(screen()->delegate());
    EXPECT_THAT(later->responses, IsEmpty());
}

}  // namespace
}  // namespace zorvik
