#include "tests/component/CheckoutFixture.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutSDKDelegateObjCProxy.h"

namespace zorvik {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

class ResultBridgeTest : public CheckoutTest {
  protected:
    ZorvikCheckoutSDKDelegateObjCProxy bridge{host};
};

struct ReportedIdCase {
    const char* name;
    Dictionary payload;
    std::string extracted;
    std::string reported;
};

TEST_F(ResultBridgeTest, TheReportedTransactionIdIsTheFirstStringOfItsKeys) {
    const Dictionary all{{"tr", "4"},
                         {"transactionId", "3"},
                         {"pspTransactionId", "2"},
                         {"zorvikTransactionId", "1"}};
    const Dictionary number{{"zorvikTransactionId", 1}, {"pspTransactionId", "2"}};
    const ReportedIdCase cases[] = {
        {"all keys", all, "e", "1"},
        {"a number is passed over", number, "e", "2"},
        {"psp before plain", {{"transactionId", "3"}, {"pspTransactionId", "2"}}, "e", "2"},
        {"plain before tr", {{"transactionId", "3"}, {"tr", "4"}}, "e", "3"},
        {"an empty string counts", {{"transactionId", ""}, {"tr", "4"}}, "e", ""},
        {"the last key", {{"tr", "4"}, {"txnId", "5"}}, "e", "4"},
        {"no key", {{"txnId", "5"}}, "e", "e"},
        {"nothing at all", {}, "", "unknown"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        openScreen();
        if (!row.extracted.empty()) decide("shopreturn://back?status=success&tr=" + row.extracted);
        runAll();
        forget();
        bridge.zorvikCheckoutWebViewDidSucceed(screen(), row.payload);
        runAll();
        const Dictionary data{{"transactionId", row.reported},
                              {"payload", description(row.payload)},
                              {"status", "success"}};
        EXPECT_THAT(core.takeEvents(), ElementsAre("PAYMENT_STATUS " + description(data)));
        EXPECT_EQ(host->responses.back(), row.payload);
    }
}

TEST_F(ResultBridgeTest, AFailureIsLoggedWithItsPayloadAndHandedOnUnchanged) {
    const std::pair<Dictionary, const char*> cases[] = {
        {{{"error", "declined"}, {"n", 1}}, "declined"},
        {{{"error", 7}}, "Payment failed"},
        {{}, "Payment failed"},
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
}

TEST_F(ResultBridgeTest, TheHostHearsBeforeTheScreenGoesAndTheEventFollowsInTheBackground) {
    openScreen();
    bool wasLeaving = true;
    host->whenCalled = [&] { wasLeaving = screen()->isBeingDismissed(); };
    bridge.zorvikCheckoutWebViewDidSucceed(screen(), {});
    EXPECT_EQ(host->responses.size(), 1u);
    EXPECT_FALSE(wasLeaving);
    EXPECT_TRUE(screen()->isBeingDismissed());

    scheduler.advanceBy(5);
    EXPECT_THAT(core.events(), IsEmpty());
    ASSERT_TRUE(screen()) << "the event task holds it";
    screen()->setOptions(optionsOf("late"));
    scheduler.runOneBackgroundTask();
    EXPECT_THAT(core.events(), ElementsAre(StartsWith(R"(PAYMENT_STATUS "order-7" "late")")));
    EXPECT_FALSE(screen());
}

TEST_F(ResultBridgeTest, WithoutAHostTheEventIsLoggedAndTheScreenClosed) {
    openScreen();
    host.reset();
    bridge.zorvikCheckoutWebViewDidFail(screen(), {});
    runAll();
    EXPECT_THAT(core.events(), ElementsAre(StartsWith("PAYMENT_STATUS")));
    EXPECT_FALSE(screen());
}

TEST_F(ResultBridgeTest, AReportReachesTheDelegateOfTheStartAndNoneAfterASecondCheckout) {
    const auto later = std::make_shared<RecordingHost>();
    checkout();
    sdk.setDelegate(later);
    page().navigate(core.webViewRespCheckUrl + "?response=%7B%22payload%22:%7B%22a%22:1%7D%7D");
    runAll();
    EXPECT_THAT(host->responses, ElementsAre(Dictionary{{"a", 1}}));
    EXPECT_FALSE(screen());

    checkout();
    sdk.checkout(presenter, optionsOf(plainToken()));
    decide(core.webViewRespCheckUrl + "?response=1");
    runAll();
    EXPECT_FALSE(screen()->delegate());
    EXPECT_THAT(later->responses, IsEmpty());
}

TEST_F(ResultBridgeTest, AScreenThatReportsTwiceCallsTheHostTwice) {
    checkout();
    decide(core.webViewRespCheckUrl + "?response=1");
    decide(core.webViewRespCheckUrl + "?response=1");
    runAll();
    EXPECT_THAT(host->responses, ElementsAre(Dictionary{}, Dictionary{}));
}

}  // namespace
}  // namespace zorvik
