#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class NavigationPolicyTest : public CheckoutTest {};

TEST_F(NavigationPolicyTest, AnOrdinaryAddressPrintsItsLinesInOneOrder) {
    presentScreen(optionsOf("abc"));
    EXPECT_EQ(turnsUntil([&] { return !lines.empty(); }), 1) << "the first load is asked for";
    const std::string url = "https://pay.example/checkout?token=abc";
    EXPECT_THAT(
        lines, ElementsAre("[URL INTERCEPT] 🔍 Intercepted URL: " + url,
                           "[URL INTERCEPT] 📋 URL type: String", "[URL INTERCEPT] 📊 URL length: 38",
                           "[UPI RETURN] 🔍 isUPIAppReturnURL called for URL: " + url,
                           "[UPI RETURN] 📊 isUPIAppReturnURL result: false",
                           "[UPI SCHEME] 🔍 Checking URL scheme: " + url,
                           "[UPI SCHEME] 📊 Is UPI return by scheme: false",
                           "[UPI RETURN] 🔍 isUPIAppReturnByScheme called for URL: " + url,
                           "[UPI RETURN] 📊 isUPIAppReturnByScheme result: false",
                           "[URL INTERCEPT] ✅ Allowing URL to load: " + url));
    EXPECT_EQ(core.returnQuestions, 2);
    runAll();
    EXPECT_EQ(page().currentUrl()->absoluteString(), url);
}

TEST_F(NavigationPolicyTest, ANavigationWithoutAnAddressIsAllowedInOneLine) {
    openScreen();
    EXPECT_EQ(decide(std::nullopt), Policy::allow);
    EXPECT_THAT(lines, ElementsAre("[URL INTERCEPT] ❌ No URL found in navigation action"));
}

struct PolicyCase {
    const char* name;
    std::string url;
    Policy policy;
    const char* handOff;  // the first line of who takes over; nullptr: nobody
    int questions;        // to the return test
};

TEST_F(NavigationPolicyTest, WhatIsTakenOverIsDecidedByTheFirstRuleThatHolds) {
    const char* redirect = "[REDIRECT] 🚀 handleWebViewRespCheckUrl called!";
    const char* appReturn = "[UPI RETURN] 🚀 User returned from UPI app!";
    const PolicyCase cases[] = {
        {"redirect", "https://pay.example/check?response=1", Policy::cancel, redirect, 0},
        {"redirect inside a query", "https://a.example/?u=https://pay.example/check?response=1",
         Policy::cancel, redirect, 0},
        {"redirect that is a return too", "shopreturn://https://pay.example/check?response=1",
         Policy::cancel, redirect, 0},
        {"response in second place", "https://pay.example/check?a=1&response=1", Policy::allow,
         nullptr, 2},
        {"path below the redirect", "https://pay.example/check/?response=1", Policy::allow, nullptr,
         2},
        {"other letter case", "https://pay.example/check?Response=1", Policy::allow, nullptr, 2},
        {"return", "shopreturn://back?status=unheard", Policy::cancel, appReturn, 2},
        {"another scheme", "tel:12345", Policy::allow, nullptr, 2},
    };
    openScreen();
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        const int before = core.returnQuestions;
        EXPECT_EQ(decide(row.url), row.policy);
        EXPECT_EQ(core.returnQuestions - before, row.questions);
        const auto printed = takeLines();
        for (const char* line : {redirect, appReturn}) {
            const bool isExpected = row.handOff == line;
            EXPECT_EQ(std::count(printed.begin(), printed.end(), line), isExpected ? 1 : 0);
        }
        EXPECT_EQ(printed.back() == "[URL INTERCEPT] ✅ Allowing URL to load: " + row.url,
                  row.policy == Policy::allow);
    }
    EXPECT_THAT(core.events(), IsEmpty()) << "the policy itself logs none";
}

TEST_F(NavigationPolicyTest, ATakenOverNavigationPrintsItsOwnLinesAndReportsNoLoad) {
    openScreen();
    page().navigate("shopreturn://back?status=unheard");
    runAll();
    EXPECT_THAT(lines, Contains("[UPI RETURN] 🎯 Detected UPI app return URL!"));
    EXPECT_THAT(lines, Contains("[UPI RETURN] 🔗 UPI return URL: shopreturn://back?status=unheard"));
    page().navigateSubframe(core.webViewRespCheckUrl + "?response=%C3%A9");
    runAll();
    EXPECT_THAT(lines, Contains("[URL INTERCEPT] 🎯 Found redirect URL"));
    EXPECT_THAT(lines, Contains("[URL INTERCEPT] 📊 URL length: 41"));
    EXPECT_THAT(core.events(), ElementsAre(testing::StartsWith("PAYMENT_STATUS")))
        << "no commit, no failure";
    EXPECT_EQ(page().requests().size(), 1u);
}

// The report at once closes the screen in the middle of the page's own question.
TEST_F(NavigationPolicyTest, AScreenClosedInsideItsOwnDecisionStillAnswersIt) {
    checkout();
    page().navigate(core.webViewRespCheckUrl + "?response=!");
    EXPECT_EQ(turnsUntil([this] { return !host->responses.empty(); }), 1);
    EXPECT_TRUE(screen()->isBeingDismissed());
    EXPECT_THAT(page().messageHandlers(), IsEmpty());
    runAll();
    EXPECT_THAT(host->responses, ElementsAre(failurePayload("Invalid response format")));
    EXPECT_FALSE(screen());
}

}  // namespace
}  // namespace zorvik
