#include "platform/services/Environment.h"
#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

using platform::Result;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

const std::string updateCall =
    "updateOrderDetails(TOKEN, order-7, callback_mobile, ios, 2.0.15-alpha.4)";

class FacadeTest : public CheckoutTest {
  protected:
    void runBackground() {
        while (scheduler.runOneBackgroundTask()) {
        }
    }
};

TEST_F(FacadeTest, TheFirstUseLogsInitializedOnce) {
    EXPECT_THAT(firstUseEvents, ElementsAre("SDK_INITIALIZED none [\"platform\": \"ios\", "
                                            "\"sdk_version\": \"2.0.15-alpha.4\"]"));
    ZorvikCheckoutSDK::shared();
    EXPECT_EQ(scheduler.backgroundCount(), 0u);
}

TEST_F(FacadeTest, AnAppCodeStaysInForceUntilAnotherIsGiven) {
    sdk.checkout(presenter, {});
    sdk.initialize("SHOP");
    sdk.initialize("");
    sdk.initialize(std::nullopt);
    EXPECT_THAT(core.events(), IsEmpty());
    EXPECT_THAT(core.appCodes, ElementsAre("SHOP"));
    runBackground();
    const std::string provided = "SDK_INITIALIZED none [\"app_code_provided\": ";
    EXPECT_THAT(
        core.takeEvents(),
        ElementsAre(HasSubstr(R"("app_code": "not_set")"), StartsWith("EXCEPTION_THROWN"),
                    provided + R"(true, "platform": "ios", "sdk_version": "2.0.15-alpha.4"])",
                    StartsWith(provided + "false"), StartsWith(provided + "false")));
    sdk.checkout(presenter, {});
    runBackground();
    EXPECT_THAT(core.events().front(), HasSubstr(R"("app_code": "SHOP")"));
}

TEST_F(FacadeTest, OnlyANonEmptyEnvironmentUrlReachesTheCoreServices) {
    sdk.setEnvironmentUrl("https://test.example");
    sdk.setEnvironmentUrl("");
    sdk.setEnvironmentUrl(std::nullopt);
    EXPECT_EQ(sdk.environmentUrl(), std::nullopt);
    EXPECT_THAT(core.techUrls, ElementsAre("https://test.example"));
}

TEST_F(FacadeTest, ACheckoutGoesFromUpdateToListToScreenOneTurnAfterEachAnswer) {
    core.holdsAnswers = true;
    core.appsAnswer = std::vector<UPIAppsVO>{{"N", "Nilgiri Pay", "app.nilgiri", std::nullopt},
                                             {"Q", std::nullopt, "app.quiet", std::nullopt}};
    sdk.checkout(presenter, optionsOf(plainToken()));
    EXPECT_THAT(core.takeCalls(), ElementsAre(updateCall));
    EXPECT_THAT(core.events(), IsEmpty());
    runBackground();
    EXPECT_THAT(
        core.takeEvents(),
        ElementsAre(R"(CHECKOUT_INITIATED ["app_code": "not_set", "delegate_present": true,)"
                    R"( "proxy_delegate_present": true])"));

    EXPECT_TRUE(core.answerNextOnAThread());
    EXPECT_THAT(core.events(), IsEmpty());
    EXPECT_TRUE(scheduler.runOneTurn());
    EXPECT_THAT(core.takeEvents(), ElementsAre(R"(UPDATE_ORDER_PAYLOAD ["callback_mode": )"
                                               R"("callback_mobile", "platform_type": "ios"])"));
    EXPECT_THAT(core.takeCalls(), ElementsAre("getUPIAppsList(TOKEN)"));

    EXPECT_TRUE(core.answerNextOnAThread());
    EXPECT_THAT(core.events(), IsEmpty());
    EXPECT_THAT(port.stage().shown(), IsEmpty());
    EXPECT_TRUE(scheduler.runOneTurn());
    EXPECT_EQ(core.events().front(),
              R"(UPI_APPS_LISTED ["upi_apps": ["Nilgiri Pay", "Unknown"], "upi_apps_count": 2])");
    ASSERT_EQ(port.stage().shown().size(), 1u);
    const auto shown =
        std::dynamic_pointer_cast<ZorvikCheckoutWebView>(port.stage().shown().back());
    ASSERT_TRUE(shown);
    EXPECT_EQ(shown->modalPresentationStyle(), platform::UIModalPresentationStyle::fullScreen);
    EXPECT_EQ(shown->options().orderToken, plainToken());
    EXPECT_EQ(shown->upiApps()->size(), 2u);
    EXPECT_TRUE(shown->delegate());
    EXPECT_EQ(scheduler.backgroundCount(), 0u) << "these events are logged directly";
}

TEST_F(FacadeTest, NoUPIAppAtAllStillOpensTheScreenWithAnEmptyList) {
    checkout();
    EXPECT_EQ(core.events()[2], R"(UPI_APPS_LISTED ["upi_apps": [], "upi_apps_count": 0])");
    ASSERT_TRUE(screen()->upiApps());
    EXPECT_THAT(*screen()->upiApps(), IsEmpty());
}

TEST_F(FacadeTest, AMissingTokenIsToldByEventsAloneAndStillReleasesTheEarlierBridge) {
    checkout();
    forget();
    sdk.checkout(presenter, {});
    EXPECT_THAT(core.events(), IsEmpty());
    runAll();
    EXPECT_THAT(core.events(),
                ElementsAre(StartsWith(R"(CHECKOUT_INITIATED "" nil "" ["app_code")"),
                            R"(EXCEPTION_THROWN none ["error": "No orderToken provided"])"));
    EXPECT_THAT(core.takeCalls(), IsEmpty());
    EXPECT_EQ(port.stage().shown().size(), 1u);

    page().navigate(core.webViewRespCheckUrl + "?response=1");
    runAll();
    EXPECT_THAT(host->responses, IsEmpty());
    EXPECT_TRUE(presenter->presentedViewController()) << "nobody is left to close the screen";
}

TEST_F(FacadeTest, ATokenThatCannotBeReadIsUpdatedAllTheSame) {
    for (const std::string token : {"", "two.parts", "\xff\xfe.\1.x", "a.!!.c"}) {
        sdk.checkout(presenter, optionsOf(token));
        EXPECT_THAT(core.takeCalls(), ElementsAre("updateOrderDetails(" + token +
                                                  ", , callback_mobile, ios, 2.0.15-alpha.4)"));
        runBackground();
        EXPECT_THAT(core.takeEvents().front(),
                    StartsWith("CHECKOUT_INITIATED \"\" \"" + token + "\" \"\" "));
    }
}

TEST_F(FacadeTest, AFailureBeforeTheScreenGoesToTheDelegateOfThatMoment) {
    core.updateAnswer = someError("the line is down");
    for (const char* message : {"Failed to update order details: the line is down",
                                "Failed to get UPI apps: the line is down"}) {
        SCOPED_TRACE(message);
        const auto later = std::make_shared<RecordingHost>();
        sdk.setDelegate(host);
        sdk.checkout(presenter, optionsOf(plainToken()));
        sdk.setDelegate(later);
        runAll();
        EXPECT_THAT(host->responses, IsEmpty());
        EXPECT_THAT(later->responses, ElementsAre(failurePayload(message)));
        EXPECT_EQ(core.takeEvents().back(), R"(EXCEPTION_THROWN ["error": "the line is down"])");

        sdk.checkout(presenter, optionsOf(plainToken()));
        sdk.setDelegate({});
        runAll();
        EXPECT_EQ(later->responses.size(), 1u);
        EXPECT_THAT(core.takeEvents().back(), StartsWith("EXCEPTION_THROWN"));
        EXPECT_THAT(port.stage().shown(), IsEmpty());

        core.updateAnswer = OrderResponse{};
        core.appsAnswer = someError("the line is down");
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
}

TEST_F(FacadeTest, ADeviceBackIsLoggedAlwaysAndHandedToAnOpenScreen) {
    const std::string event =
        R"(BACK_BUTTON_PRESSED none ["platform": "ios", "source": "device_back_button"])";
    sdk.handleDeviceBackButtonPress();
    EXPECT_THAT(core.events(), IsEmpty());
    runAll();
    EXPECT_THAT(core.takeEvents(), ElementsAre(event));
    EXPECT_THAT(lines, IsEmpty());

    checkout();
    forget();
    sdk.handleDeviceBackButtonPress();
    EXPECT_EQ(lines.at(0), "[BACK HANDLER] 🚀 Device back button pressed - Android-style handling");
    runBackground();
    EXPECT_THAT(core.events(), ElementsAre(event));
}

TEST_F(FacadeTest, OrderCreationHandsArgumentsAndResultsThroughOnTheirThread) {
    core.holdsAnswers = true;
    core.orderAnswer = OrderResponse{"order-9", "t", "CREATED"};
    core.shopOrderAnswer = Dictionary{{"id", 9}};
    std::optional<std::string> orderId;
    std::optional<Dictionary> shopOrder;
    bool cameOnMain = true;
    sdk.createOrder(10.5, "INR", {{{"sku", "a"}}}, Dictionary{{"name", "n"}},
                    [&](const Result<OrderResponse>& result) {
                        cameOnMain = platform::Environment::scheduler().isMainThread();
                        orderId = result.value().orderId;
                    });
    sdk.createShopOrder("INR", "10.50", "p1", true, "REDIRECT", "UPI", "INTENT", std::nullopt,
                        [&](const Result<Dictionary>& result) { shopOrder = result.value(); });
    EXPECT_THAT(core.takeCalls(),
                ElementsAre(R"(createOrder(10.5, INR, [["sku": "a"]], ["name": "n"]))",
                            "createShopOrder(INR, 10.50, p1, true, REDIRECT, UPI, INTENT, null)"));
    EXPECT_TRUE(core.answerNextOnAThread());
    EXPECT_TRUE(core.answerNextOnAThread());
    EXPECT_EQ(orderId, "order-9");
    EXPECT_FALSE(cameOnMain);
    EXPECT_EQ(shopOrder, (Dictionary{{"id", 9}}));
    EXPECT_THAT(core.events(), IsEmpty());
}

TEST_F(FacadeTest, AFailedOrderCreationIsLoggedOnceAndHandedThrough) {
    core.orderAnswer = someError("no stock");
    core.shopOrderAnswer = someError("no shop");
    std::vector<platform::Error> errors;
    const auto collect = [&](const auto& result) { errors.push_back(result.error()); };
    sdk.createOrder(1, "INR", {}, std::nullopt, collect);
    sdk.createShopOrder("INR", "1", "p", false, "", "", "", std::nullopt, collect);
    runBackground();
    EXPECT_THAT(errors, ElementsAre(someError("no stock"), someError("no shop")));
    EXPECT_THAT(core.events(), ElementsAre(R"(EXCEPTION_THROWN none ["error": "no stock"])",
                                           R"(EXCEPTION_THROWN none ["error": "no shop"])"));
}

}  // namespace
}  // namespace zorvik
