// How the component behaves where a host or a page might wish for something else.
// docs/known-limits.md says what either can do about it; none of it is to be mended in passing.
#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

class KnownLimitsTest : public CheckoutTest {};

TEST_F(KnownLimitsTest, AScreenThatReportsTwiceTellsTheDelegateOfItsStartTwice) {
    const auto later = std::make_shared<Receiver>();
    later->name = "later";
    checkout();
    sdk.setDelegate(later);
    redirect("%7B%22payload%22:%7B%22a%22:1%7D%7D");
    redirect("1");
    runAll();
    EXPECT_THAT(seen("host"), ElementsAre(R"(["a": 1])", "[:]"));

    checkout();
    page().replaceUrl("https://bank.example/processing?response=1");
    comeBackAfter(9);
    comeBackAfter(9);
    runAll();
    EXPECT_THAT(seen("later"), ElementsAre("[:]", "[:]")) << "one an activation, of any site";
}

TEST_F(KnownLimitsTest, ASecondCheckoutTakesTheOpenScreensResultsAway) {
    checkout();
    sdk.checkout(presenter, {});
    redirect("1");
    runAll();
    EXPECT_THAT(seen("host"), IsEmpty()) << "the bridge went with the second checkout";
    EXPECT_TRUE(screen()) << "nobody is left to close it";
}

TEST_F(KnownLimitsTest, AnOlderScreensEndRemovesTheRecordOfANewerOne) {
    openScreen();
    const auto older = presenter;
    presenter = platform::makeOnMainThread<platform::UIViewController>();
    presenter->setShownByStage(true);
    openScreen();
    storeRecord();
    older->dismiss(false);
    run();
    EXPECT_THAT(port.defaults().entries(), IsEmpty());
    comeBackAfter(1);
    run();
    EXPECT_THAT(seen("script"), IsEmpty()) << "the newer screen's page hears of no return";
}

TEST_F(KnownLimitsTest, ARecordThatAKilledProcessLeftCountsInTheNextCheckout) {
    storeRecord();
    openScreen();
    for (const auto& [seconds, kind] : {std::pair(9.0, "Extended"), std::pair(-9.0, "Quick")}) {
        comeBackAfter(seconds);  // a clock that was set back makes any return a quick one
        run();
        EXPECT_THAT(take(), HasSubstr(std::string(kind) + " return detected"));
    }
}

TEST_F(KnownLimitsTest, AnOrderStatusWithAQuoteOrABackslashLeavesItsStringLiteral) {
    const std::pair<const char*, const char*> cases[] = {
        {R"(say "paid")", R"(response\":\"say \\"paid\\"\",)"},  // comes out as it went in
        {"a\\b", R"(response\":\"a\\b\",)"},                     // comes out with a backspace
        {"');evil('", R"(response\":\"');evil('\",)"},           // is run
    };
    openScreen();
    for (const auto& [status, posted] : cases) {
        core.enquiryAnswer = TransactionEnquiryResponse{Order{status}, {}};
        storeRecord();
        comeBackAfter(1);
        run();
        EXPECT_THAT(seen("script"), ElementsAre(HasSubstr(posted)));
        forget();
    }
}

TEST_F(KnownLimitsTest, TheSiteIsATextualPrefixOfSchemeAndHost) {
    const std::pair<std::string, bool> cases[] = {
        {"https://pay.example:8443/a/b?c#d", true}, {"https://pay.example.evil.test/", true},
        {"https://bank.example/otp", false},        {"http://pay.example/checkout", false},
        {"https://PAY.example/checkout", false},    {"about:blank", false},
        {"https://pay.example/%zz", true},          {"https://bank.example/100%", false},
    };
    openScreen();
    for (const auto& [url, isWithin] : cases) {
        page().replaceUrl(url);
        screen()->handleDeviceBackButtonPress();
        run();
        EXPECT_THAT(seen("load"), SizeIs(isWithin ? 0 : 1)) << url;
        EXPECT_EQ(seen("event").back(), R"(BACK_BUTTON_PRESSED ["current_url": ")" + url + "\"]");
        forget();
    }
}

TEST_F(KnownLimitsTest, AnAddressThatHoldsTheResponseAddressIsOneFromAnyFrameAndSite) {
    const std::string address = "https://ads.example/?u=https://pay.example/check?response=1";
    openScreen();
    page().navigateSubframe(address);
    run();
    EXPECT_THAT(seen("failure"), SizeIs(1)) << "its own query item is another";
    page().navigateSubframe(address + "&response=1");
    run();
    EXPECT_THAT(seen("success"), SizeIs(1));
    page().navigate("https://pay.example/check?order=7&response=1");
    run();
    EXPECT_THAT(heard(), Contains(StartsWith("load https://pay.example/check?order"))) << "loads";
}

TEST_F(KnownLimitsTest, WhateverIsJSONIsASuccessWithAnEmptyPayload) {
    openScreen();
    for (const char* response : {"null", "0", "false", "%5B%7B%22payload%22:1%7D%5D", "MTIz"}) {
        redirect(response);
        run();
        EXPECT_THAT(seen("success"), ElementsAre("[:]")) << response;
        forget();
    }
}

TEST_F(KnownLimitsTest, EveryPageThatIsShownMayOpenApplicationsAndHearsWhatIsPosted) {
    port.application().install("mailto");
    openScreen();
    page().navigate("https://elsewhere.example/");
    run();
    postIntent(stringBody(R"({"url":"mailto:a@b.example","package_name":"p"})"));
    screen()->handleDeviceBackButtonPress();
    run();
    EXPECT_THAT(port.application().openedUrls(), ElementsAre("mailto:a@b.example"));
    EXPECT_THAT(seen("script"), Contains(testing::EndsWith("', '*');")));
}

TEST_F(KnownLimitsTest, APlusInATokenReachesTheServerAsOneAndItsClaimsNeedPaddingForTheEnquiry) {
    openScreen(optionsOf("h.e30+.s"));
    EXPECT_EQ(page().requests().back().url.absoluteString(),
              "https://pay.example/checkout?token=h.e30+.s");
    dismissScreen();
    openScreen(optionsOf(tokenOf(R"({"order_id":"o"})")));
    decide("shopreturn://upi?status=success&tr=T");
    run();
    EXPECT_THAT(seen("call"), Contains(testing::EndsWith(", , , T)"))) << "no order id";
}

TEST_F(KnownLimitsTest, AReturnAddressThatCannotBeReadIsTakenAndNotReported) {
    openScreen();
    EXPECT_EQ(decide("shopreturn://upi?status=success&note=100%"), Policy::cancel);
    run();
    EXPECT_EQ(last(), "[UPI RETURN] ❌ Failed to parse URL components");
    EXPECT_TRUE(screen());
}

TEST_F(KnownLimitsTest, TheEventOfASuccessNamesTheOrderOfItsReportAndTheTokenOfItsOwnMoment) {
    checkout();
    redirect("1");
    while (runTurn()) {
    }
    screen()->setOptions(optionsOf("another"));
    runAll();
    EXPECT_THAT(seen("event"), Contains(StartsWith(R"(PAYMENT_STATUS "order-7" "another" "" )")));
}

TEST_F(KnownLimitsTest, ALoadThatFailsOnceItHasBegunToShowTellsTheCustomerNothing) {
    load.ending = ScriptedLoad::Ending::failAfterCommit;
    openScreen();
    EXPECT_FALSE(isErrorShown());
}

}  // namespace
}  // namespace zorvik
