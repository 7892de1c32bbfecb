#include "testkit/CheckoutTestKit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/runtime/MainThread.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutWebView.h"

namespace zorvik::testkit {
namespace {

using platform::Dictionary;
using testing::Contains, testing::ElementsAre, testing::IsEmpty, testing::SizeIs;

using Kit = CheckoutTestKit;
using Responses = std::vector<Dictionary>;

Dictionary failureOf(const std::string& error, const std::string& transactionId = "") {
    Dictionary failure{{"error", error},
                       {"order_id", Kit::orderId},
                       {"zorvik_order_id", Kit::orderId},
                       {"token", Kit::orderToken()},
                       {"subMerchantId", Kit::subMerchantId}};
    if (transactionId.empty()) return failure;
    failure["transaction_id"] = failure["zorvik_transaction_id"] = transactionId;
    return failure;
}

TEST(CheckoutTestKitTest, EachSituationYieldsItsDictionary) {
    const Dictionary payload{{"status", "FAILED ✗"}, {"amount", 10.5}, {"paths", "a+b/c&d"}};
    const Dictionary other{{"status", "SUCCESS"}};
    const std::string tr = Kit::transactionId;
    using Act = std::function<void(Kit&)>;
    const auto returns = [](UPIStatus status, std::map<std::string, std::string> parameters = {}) {
        return [=](Kit& kit) { kit.upiAppReturns(status, parameters); };
    };
    const Act success = returns(UPIStatus::success);
    struct Row {
        const char* name;
        Responses expected;
        Act then = [](Kit&) {};
        Act before = [](Kit&) {};
        bool staysOpen = false;
    };
    const Row rows[] = {
        {"order update fails",
         {failureOf("Failed to update order details: no")},
         [](Kit&) {},
         [](Kit& kit) { kit.orderUpdateFails("no"); }},
        {"app list fails",
         {failureOf("Failed to get UPI apps: no")},
         [](Kit&) {},
         [](Kit& kit) { kit.appListFails("no"); }},
        {"page answers", {payload}, [&](Kit& kit) { kit.pageAnswers(payload); }},
        {"in base64", {payload}, [&](Kit& kit) { kit.pageAnswers(payload, Encoding::base64); }},
        {"twice", {payload, other}, [&](Kit& kit) { kit.pageAnswersTwice(payload, other); }},
        {"unreadably", {failureOf("Invalid response format")}, &Kit::pageAnswersUnreadably},
        {"with nothing", {failureOf("Invalid payment response")}, &Kit::pageAnswersWithoutResponse},
        {"app returns, enquiry answers",
         {other},
         success,
         [&](Kit& kit) { kit.enquiryAnswers(other, "PAID"); }},
        {"app returns, enquiry fails",
         {failureOf("Transaction enquiry failed")},
         success,
         [](Kit& kit) { kit.enquiryFails("no line"); }},
        {"app returns failure with a reason",
         {failureOf("no funds", tr)},
         returns(UPIStatus::failure, {{"reason", "no funds"}})},
        {"app returns cancelled",
         {failureOf("Payment cancelled by user", "T9")},
         returns(UPIStatus::cancelled, {{"tr", "T9"}})},
        {"unknown", {failureOf("Unknown payment status", tr)}, returns(UPIStatus::unknown)},
        {"window closes", {}, &Kit::windowCloses},
        {"back", {}, &Kit::customerPressesBack, [](Kit&) {}, true},
        {"not reached", {}, [](Kit&) {}, [](Kit& kit) { kit.pageCannotBeReached(); }, true},
    };
    for (const Row& row : rows) {
        Kit kit;
        row.before(kit);
        kit.openCheckout();
        row.then(kit);
        EXPECT_TRUE(kit.responses() == row.expected) << row.name;
        EXPECT_EQ(kit.isScreenOpen(), row.staysOpen) << row.name;
        kit.openCheckout();  // a kit may go whatever is open
    }
}

TEST(CheckoutTestKitTest, WhatThePageIsToldOfHandOffsReturnsAndBack) {
    Kit kit;
    kit.enquiryAnswers({{"a", 1}}, "PENDING");
    kit.openCheckout();
    EXPECT_THAT(
        kit.eventNames(),
        ElementsAre("SDK_INITIALIZED", "CHECKOUT_INITIATED", "UPDATE_ORDER_PAYLOAD",
                    "UPI_APPS_LISTED", "WEBVIEW_LAUNCH", "URL_INTERCEPTED", "WEBVIEW_LOADED"));
    kit.customerPicks(UPIApp::notInstalled);
    kit.customerPicks(UPIApp::refusesToOpen);
    const auto told = [](const char* status, const char* message) {
        return Dictionary{{"sdk_upi_intent_response", status},
                          {"sdk_transaction_enquiry_response", message}};
    };
    EXPECT_THAT(kit.messagesToPage(), ElementsAre(told("unregistered", "UPI app not installed"),
                                                  told("unavailable", "Failed to launch UPI app")));
    kit.customerPicks(UPIApp::opens);
    EXPECT_THAT(kit.platform().application().openedUrls(),
                ElementsAre("testkit-refuses://pay?tr=transaction-1",
                            "testkit-opens://pay?tr=transaction-1"));
    EXPECT_THAT(kit.messagesToPage(), SizeIs(2)) << "the page hears of a failed hand-off only";
    kit.customerComesBackAfter(4.999);
    EXPECT_EQ(kit.messagesToPage().back(),
              (Dictionary{{"upi_intent_back_response", "close"},
                          {"transaction_enquiry_api_response", "PENDING"}}));
    kit.customerPicks(UPIApp::opens);
    kit.customerComesBackAfter(5);
    EXPECT_THAT(kit.messagesToPage(), SizeIs(3)) << "not a quick return";
    EXPECT_THAT(kit.consoleLines(),
                Contains("[APP STATE] ⏱️ Time since UPI app launch: 5.0 seconds"));
    kit.customerPressesBack();
    EXPECT_EQ(kit.messagesToPage().back(),
              (Dictionary{{"sdk_action", "device_back_initiated"}, {"source", "ios"}}));
    EXPECT_THAT(kit.responses(), IsEmpty());
}

TEST(CheckoutTestKitTest, APageThatWasNotReachedIsThereAfterRetry) {
    Kit kit;
    kit.pageCannotBeReached();
    kit.openCheckout();
    kit.customerPressesRetry();
    EXPECT_TRUE(kit.isRetryShown());
    kit.pageCanBeReached();
    kit.customerPressesRetry();
    EXPECT_FALSE(kit.isRetryShown());
    kit.pageAnswers({});
    EXPECT_THAT(kit.responses(), ElementsAre(Dictionary{}));
}

TEST(CheckoutTestKitDeathTest, AMemberCalledTooEarlySaysWhatToCallFirst) {
    Kit kit;
    EXPECT_DEATH(kit.sdk().checkout(kit.presenter(), {.orderToken = "t"});
                 kit.pageAnswers({}), "pageAnswers: 3 background tasks wait; call settle\\(\\)");
    kit.settle();
    EXPECT_DEATH(kit.pageAnswers({}), "pageAnswers: no screen is open; call openCheckout\\(\\)");
    EXPECT_DEATH(kit.lastResponse(), "lastResponse: the kit's delegate was given no response");
    kit.openCheckout();
    EXPECT_DEATH(kit.customerPressesRetry(), "no Retry is shown; call pageCannotBeReached\\(\\)");
    EXPECT_DEATH(kit.customerComesBackAfter(3), "no UPI app was opened; call customerPicks");
    EXPECT_DEATH(kit.pageAnswers({{"text", "\xff"}}), "cannot be written as JSON");
    kit.pageCannotBeReached();
    kit.openCheckout();
    EXPECT_DEATH(kit.pageAnswers({}), "the page was not reached; call pageCanBeReached\\(\\)");
    EXPECT_DEATH(Kit(), "only one can be");
}

// Each round begins as the first one in a process does.
TEST(ResetTest, NoTestDependsOnWhatAnEarlierOneLeft) {
    for (const char* name : {"first", "second"}) {
        SCOPED_TRACE(name);
        Kit kit;
        EXPECT_EQ(kit.sdk().delegate(), kit.delegate());
        EXPECT_EQ(kit.sdk().environmentUrl(), std::nullopt);
        EXPECT_EQ(kit.core().environmentUrl(), std::nullopt);
        kit.openCheckout({});
        const auto events = kit.events();
        ASSERT_THAT(events, SizeIs(3));
        EXPECT_EQ(events[0].name, "SDK_INITIALIZED");
        EXPECT_EQ(events[1].additionalData.at("app_code"), "not_set");
        kit.sdk().initialize(name);
        kit.sdk().setEnvironmentUrl("https://pay.example");
        kit.openCheckout();
        kit.customerPicks(UPIApp::opens);
        kit.sdk().checkout(kit.presenter(), {.orderToken = Kit::orderToken()});
        if (name == std::string("second")) continue;  // the kit's own end resets it
        kit.screen()->present(platform::makeOnMainThread<platform::UIViewController>(), false);
        ZorvikCheckoutSDK::reset();
        kit.settle();
        EXPECT_FALSE(kit.isScreenOpen());
        EXPECT_THAT(kit.platform().web().pages(), IsEmpty());
        EXPECT_THAT(kit.responses(), IsEmpty());
    }
}

}  // namespace
}  // namespace zorvik::testkit
