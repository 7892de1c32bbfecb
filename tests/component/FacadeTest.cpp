#include "platform/runtime/Environment.h"
#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

class FacadeTest : public CheckoutTest {
  protected:
    void runBackground() {
        while (scheduler.runOneBackgroundTask()) {
        }
    }
};

TEST_F(FacadeTest, InitializationIsLoggedAndAnAppCodeStaysUntilAnotherIsGiven) {
    EXPECT_THAT(firstUseEvents, ElementsAre("SDK_INITIALIZED none [\"platform\": \"ios\", "
                                            "\"sdk_version\": \"2.0.15-alpha.4\"]"));
    sdk.checkout(presenter, {});
    sdk.initialize("SHOP");
    sdk.initialize("");
    sdk.initialize(std::nullopt);
    EXPECT_THAT(core.events(), IsEmpty());
    EXPECT_THAT(core.appCodes, ElementsAre("SHOP"));
    sdk.checkout(presenter, {});
    runBackground();
    const std::string provided = "SDK_INITIALIZED none [\"app_code_provided\": ";
    EXPECT_THAT(
        core.takeEvents(),
        ElementsAre(HasSubstr(R"("app_code": "not_set")"), StartsWith("EXCEPTION_THROWN"),
                    provided + R"(true, "platform": "ios", "sdk_version": "2.0.15-alpha.4"])",
                    StartsWith(provided + "false"), StartsWith(provided + "false"),
                    HasSubstr(R"("app_code": "SHOP")"), StartsWith("EXCEPTION_THROWN")));
}

TEST_F(FacadeTest, ACheckoutGoesFromUpdateToListToScreenOneTurnAfterEachAnswer) {
    core.holdsAnswers = true;
    core.appsAnswer = std::vector<UPIAppsVO>{{"N", "Nilgiri Pay", "app.nilgiri", std::nullopt},
                                             {"Q", std::nullopt, "app.quiet", std::nullopt}};
    sdk.checkout(presenter, optionsOf(plainToken()));
    EXPECT_THAT(
        core.takeCalls(),
        ElementsAre("updateOrderDetails(TOKEN, order-7, callback_mobile, ios, 2.0.15-alpha.4)"));
    EXPECT_THAT(core.events(), IsEmpty());
    runBackground();
    EXPECT_THAT(
        core.takeEvents(),
        ElementsAre(R"(CHECKOUT_INITIATED ["app_code": "not_set", "delegate_present": true,)"
                    R"( "proxy_delegate_present": true])"));

    core.answerNext();
    EXPECT_THAT(core.events(), IsEmpty());
    EXPECT_TRUE(scheduler.runOneTurn());
    EXPECT_THAT(core.takeEvents(), ElementsAre(R"(UPDATE_ORDER_PAYLOAD ["callback_mode": )"
                                               R"("callback_mobile", "platform_type": "ios"])"));
    EXPECT_THAT(core.takeCalls(), ElementsAre("getUPIAppsList(TOKEN)"));

    core.answerNext();
    EXPECT_THAT(port.stage().shown(), IsEmpty());
    EXPECT_TRUE(scheduler.runOneTurn());
    EXPECT_EQ(core.events().front(),
              R"(UPI_APPS_LISTED ["upi_apps": ["Nilgiri Pay", "Unknown"], "upi_apps_count": 2])");
    ASSERT_EQ(port.stage().shown().size(), 1u);
    const auto shown =
        std::dynamic_pointer_cast<ZorvikCheckoutWebView>(port.stage().shown().back());
    EXPECT_EQ(shown->modalPresentationStyle(), platform::UIModalPresentationStyle::fullScreen);
    EXPECT_EQ(shown->options().orderToken, plainToken());
    EXPECT_EQ(shown->upiApps()->size(), 2u);
    EXPECT_EQ(scheduler.backgroundCount(), 0u) << "these events are logged directly";
}

TEST_F(FacadeTest, AMissingTokenIsToldByEventsAloneAndStillReleasesTheEarlierBridge) {
    checkout();
    forget();
    sdk.checkout(presenter, {});
    runAll();
    EXPECT_THAT(core.events(),
                ElementsAre(StartsWith(R"(CHECKOUT_INITIATED "" nil "" ["app_code")"),
                            R"(EXCEPTION_THROWN none ["error": "No orderToken provided"])"));
    EXPECT_THAT(core.takeCalls(), IsEmpty());
    redirect("1");
    runAll();
    EXPECT_THAT(host->responses, IsEmpty());
    EXPECT_TRUE(presenter->presentedViewController()) << "nobody is left to close the screen";
}

TEST_F(FacadeTest, AFailureBeforeTheScreenGoesToTheDelegateOfThatMoment) {
    core.orderAnswer = someError("no line");
    for (const char* message :
         {"Failed to update order details: no line", "Failed to get UPI apps: no line"}) {
        const auto later = std::make_shared<RecordingHost>();
        sdk.setDelegate(host);
        sdk.checkout(presenter, optionsOf(plainToken()));
        sdk.setDelegate(later);
        runAll();
        EXPECT_THAT(host->responses, IsEmpty());
        EXPECT_THAT(later->responses, ElementsAre(failurePayload(message)));
        EXPECT_EQ(core.takeEvents().back(), R"(EXCEPTION_THROWN ["error": "no line"])");
        EXPECT_THAT(port.stage().shown(), IsEmpty());
        core.orderAnswer = OrderResponse{};
        core.appsAnswer = someError("no line");
    }
}

TEST_F(FacadeTest, TheTwoFlagsOfACheckoutsStartAreReadWhenTheirTaskRuns) {
    sdk.setDelegate({});
    sdk.checkout(presenter, {});
    sdk.setDelegate(host);  // too late for the bridge, in time for the flag
    runBackground();
    EXPECT_THAT(core.takeEvents().at(0),
                HasSubstr(R"("delegate_present": true, "proxy_delegate_present": false])"));
    sdk.checkout(presenter, {});
    host.reset();
    runBackground();
    EXPECT_THAT(core.takeEvents().at(0),
                HasSubstr(R"("delegate_present": false, "proxy_delegate_present": false])"));

    host = std::make_shared<RecordingHost>();
    sdk.setDelegate(host);
    sdk.checkout(presenter, {});
    sdk.checkout(presenter, {});
    runBackground();
    EXPECT_THAT(core.takeEvents().at(0), HasSubstr(R"("proxy_delegate_present": false])"))
        << "the first bridge went with the second checkout: its event's task does not keep it";
}

TEST_F(FacadeTest, ANullPresenterIsRefusedAtTheCall) {
    EXPECT_DEATH(sdk.checkout(nullptr, optionsOf(plainToken())), "without a presenter; pass");
}

TEST_F(FacadeTest, OrderCreationHandsArgumentsAndResultsThroughOnTheirThread) {
    core.holdsAnswers = true;
    core.orderAnswer = OrderResponse{"order-9", "t", "CREATED"};
    core.shopOrderAnswer = someError("no shop");
    std::optional<std::string> orderId;
    std::optional<platform::Error> error;
    bool cameOnMain = true;
    sdk.createOrder(10.5, "INR", {{{"sku", "a"}}}, Dictionary{{"name", "n"}},
                    [&](const platform::Result<OrderResponse>& result) {
                        cameOnMain = platform::Environment::isMainThread();
                        orderId = result.value().orderId;
                    });
    sdk.createShopOrder(
        "INR", "10.50", "p1", true, "REDIRECT", "UPI", "INTENT", std::nullopt,
        [&](const platform::Result<Dictionary>& result) { error = result.error(); });
    EXPECT_THAT(core.takeCalls(),
                ElementsAre(R"(createOrder(10.5, INR, [["sku": "a"]], ["name": "n"]))",
                            "createShopOrder(INR, 10.50, p1, true, REDIRECT, UPI, INTENT, null)"));
    core.answerNext();
    EXPECT_EQ(orderId, "order-9");
    EXPECT_FALSE(cameOnMain);
    EXPECT_THAT(core.events(), IsEmpty());
    core.answerNext();
    EXPECT_EQ(error, someError("no shop"));
    EXPECT_THAT(core.events(), ElementsAre(R"(EXCEPTION_THROWN none ["error": "no shop"])"));
}

}  // namespace
}  // namespace zorvik
