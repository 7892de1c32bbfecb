#include "tests/component/CheckoutFixture.h"
#include "zorvik_mobile_kit_ios_webview_sdk/facade/ZorvikCheckoutSDKDelegateObjCProxy.h"

namespace zorvik {
namespace {

class ResultBridgeTest : public CheckoutTest {
  protected:
    ZorvikCheckoutSDKDelegateObjCProxy bridge{host};
};

TEST_F(ResultBridgeTest, TheReportedTransactionIdIsTheFirstStringOfItsKeysElseTheReturnsOwn) {
    // The status of an earlier return, if any.
    const std::tuple<std::string, Dictionary, const char*> cases[] = {
        {"", {{"tr", "3"}, {"pspTransactionId", "2"}, {"zorvikTransactionId", "1"}}, "1"},
        {"", {{"zorvikTransactionId", 1}, {"pspTransactionId", "2"}, {"transactionId", "3"}}, "2"},
        {"success", {{"transactionId", ""}, {"tr", "4"}}, ""},
        {"success", {{"tr", "4"}, {"txnId", "5"}}, "4"},
        {"success", {{"txnId", "5"}}, "extracted"},
        {"failure", {}, "extracted"},
        {"cancelled", {}, "extracted"},
        {"unheard", {}, "extracted"},
        {"", {}, "unknown"},
    };
    for (const auto& [status, payload, reported] : cases) {
        SCOPED_TRACE(reported);
        openScreen();
        if (!status.empty()) decide("shopreturn://back?tr=extracted&status=" + status);
        run();
        forget();
        bridge.zorvikCheckoutWebViewDidSucceed(screen(), payload);
        runAll();
        const Dictionary data{
            {"transactionId", reported}, {"payload", description(payload)}, {"status", "success"}};
        EXPECT_THAT(seen("event"), ElementsAre("PAYMENT_STATUS " + description(data)));
        EXPECT_THAT(seen("host"), ElementsAre(description(payload)));
        EXPECT_FALSE(screen());
    }
}

TEST_F(ResultBridgeTest, TheHostHearsBeforeTheScreenGoesAndTheEventFollowsInTheBackground) {
    for (const bool isFailure : {false, true}) {
        const auto report = [&](const Dictionary& payload) {
            if (isFailure) return bridge.zorvikCheckoutWebViewDidFail(screen(), payload);
            bridge.zorvikCheckoutWebViewDidSucceed(screen(), payload);
        };
        openScreen();
        report({{"error", 7}});
        EXPECT_EQ(heard().front(), R"(host ["error": 7])");
        EXPECT_TRUE(screen()->isBeingDismissed());
        scheduler.advanceBy(5);
        EXPECT_THAT(seen("event"), IsEmpty());
        ASSERT_TRUE(screen()) << "the event task holds it";
        screen()->setOptions(optionsOf("late"));
        scheduler.runOneBackgroundTask();
        EXPECT_THAT(
            seen("event"),
            ElementsAre(HasSubstr(
                isFailure
                    ? R"("" "late" "" ["error": "Payment failed", "payload": ["error": 7], "status": "failed"])"
                    : R"("order-7" "late" "")")));
        EXPECT_FALSE(screen());
    }
    host.reset();
    openScreen();
    bridge.zorvikCheckoutWebViewDidFail(screen(), {{"error", "no"}});
    runAll();
    EXPECT_THAT(seen("event"), ElementsAre(StartsWith(R"(PAYMENT_STATUS ["error": "no", )")));
    openScreen();
    bridge.zorvikCheckoutWebViewDidSucceed(screen(), {});
    runAll();
    EXPECT_THAT(seen("event"), ElementsAre(HasSubstr("success")));
    EXPECT_FALSE(screen());
}

}  // namespace
}  // namespace zorvik
