#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include "core/EventConstants.h"
#include "platform/foundation/JSONSerialization.h"
#include "platform/uikit/UIButton.h"
#include "platform/uikit/UILabel.h"
#include "tests/desktop/DesktopCheckout.h"
#include "tests/desktop/ProcessTree.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikShimmerView.h"

namespace zorvik::tests {
namespace {

using platform::Dictionary;
using platform::UIButton;
using platform::UILabel;
using platform::WKWebView;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::SizeIs;
using ::testing::StartsWith;

TEST(CheckoutRoad, APaymentOnThePageReachesTheHostAndClosesTheScreen) {
    const auto host = DesktopCheckout::make();
    host->checkout();
    ASSERT_TRUE(host->waitForEvent(EventConstants::WEBVIEW_LOADED));
    const auto page = host->find<WKWebView>();
    ASSERT_TRUE(host->waitFor([&] { return !page->isHidden(); }));
    EXPECT_TRUE(host->find<ZorvikShimmerView>()->isHidden());
    EXPECT_THAT(host->server.requests().front(),
                StartsWith("GET /checkout?token=" + host->token + " HTTP"));

    host->payWith("%7B%22payload%22%3A%7B%22paid%22%3Atrue%2C%22amount%22%3A1499%7D%7D");
    ASSERT_TRUE(host->waitFor([&] { return !host->results.empty(); }));
    EXPECT_THAT(host->results, ElementsAre(Dictionary{{"paid", true}, {"amount", 1499}}));
    EXPECT_TRUE(host->waitFor([&] { return !host->isScreenOpen(); }));

    ASSERT_TRUE(host->waitForEvent(EventConstants::PAYMENT_STATUS));
    auto names = host->eventNames();
    std::erase(names, EventConstants::SDK_INITIALIZED);     // logged in the background,
    std::erase(names, EventConstants::CHECKOUT_INITIATED);  // in no order with the others
    EXPECT_THAT(names,
                ElementsAre(EventConstants::UPDATE_ORDER_PAYLOAD, EventConstants::UPI_APPS_LISTED,
                            EventConstants::WEBVIEW_LAUNCH, EventConstants::URL_INTERCEPTED,
                            EventConstants::WEBVIEW_LOADED, EventConstants::PAYMENT_STATUS));
    // The response address was never loaded.
    EXPECT_THAT(host->server.requests(), SizeIs(1));
}

TEST(CheckoutRoad, TheResponseIsReadHoweverThePageWroteIt) {
    struct Case {
        const char* name;
        const char* response;
        Dictionary received;
    };
    const Dictionary paid{{"paid", "yes"}};
    const Case cases[] = {
        {"JSON with bare braces and quotes", R"({"payload":{"paid":"yes"}})", paid},
        {"base64 of JSON", "eyJwYXlsb2FkIjp7InBhaWQiOiJ5ZXMifX0=", paid},
        {"a bare number", "123", {}},
    };
    const auto host = DesktopCheckout::make();
    for (const auto& [name, response, received] : cases) {
        SCOPED_TRACE(name);
        host->results.clear();
        host->checkout();
        const auto loaded = host->countOf(EventConstants::WEBVIEW_LOADED);
        ASSERT_TRUE(host->waitForEvent(EventConstants::WEBVIEW_LOADED, loaded + 1));
        host->payWith(response);
        ASSERT_TRUE(host->waitFor([&] { return !host->results.empty(); }));
        EXPECT_THAT(host->results, ElementsAre(received));
        ASSERT_TRUE(host->waitFor([&] { return !host->isScreenOpen(); }));
    }
    host->results.clear();
    host->checkout();
    ASSERT_TRUE(host->waitForEvent(EventConstants::WEBVIEW_LOADED, 4));
    host->payWith("%7B%zz");
    ASSERT_TRUE(host->waitFor([&] { return !host->results.empty(); }));
    EXPECT_EQ(host->results.front().at("error"), "Invalid payment response");
}

TEST(CheckoutRoad, ARefusedPortShowsThePanelAndRetryLoadsThePage) {
    const auto host = DesktopCheckout::make();
    host->configure(host->server.refusedAddress("/checkout"));
    host->checkout();
    ASSERT_TRUE(host->waitForEvent(EventConstants::WEBVIEW_FAILED));
    const auto retry = host->find<UIButton>();
    auto& panel = *retry->superview();
    EXPECT_FALSE(panel.isHidden());
    EXPECT_EQ(host->find<UILabel>()->text(), "Something went wrong. Please try again.");
    EXPECT_EQ(host->countOf(EventConstants::WEBVIEW_LOADED), 0U);

    host->configure(host->server.address("/checkout"));
    retry->sendTouchUpInside();
    EXPECT_TRUE(panel.isHidden());
    EXPECT_TRUE(host->waitForEvent(EventConstants::WEBVIEW_LOADED));
    EXPECT_EQ(host->evaluated("typeof zorvik_web"), "object");
    EXPECT_TRUE(panel.isHidden());
    EXPECT_EQ(host->countOf(EventConstants::WEBVIEW_FAILED), 1U);
}

TEST(CheckoutRoad, ThePageParsesTheAppListAsItWasGiven) {
    const std::string names[] = {
        "O'Neill \"Quick\" Pay",   "back\\slash \\n \\u0041",       "😀 भुगतान 付款",
        "two\nlines\r\tand a tab", std::string("null\0inside", 11), "\u2028separator</script><!--"};
    std::vector<development::DevelopmentUPIApp> apps;
    for (const auto& name : names) {
        apps.push_back({{std::nullopt, name, "app." + name, "data:,"}, ""});
    }
    apps.push_back({{"code", "A twin", "app." + names[0], std::nullopt}, ""});
    const auto host = DesktopCheckout::make();
    host->configure(host->server.address("/checkout"), apps);
    host->checkout();
    ASSERT_TRUE(host->waitForEvent(EventConstants::WEBVIEW_LOADED));
    ASSERT_TRUE(host->waitFor([&] { return host->evaluated("received.length") == "1"; }));

    const auto parsed = platform::JSONSerialization::jsonObject(
        host->evaluated("JSON.stringify(received[0].UPIApps)"),
        platform::JSONSerialization::ReadingOptions::none);
    ASSERT_TRUE(parsed);
    platform::Array expected;
    for (const auto& name : names) {
        expected.emplace_back(Dictionary{{"upi_app_name", name},
                                         {"package_name", "app." + name},
                                         {"appiconbase64", "data:,"},
                                         {"upi_app_code", nullptr}});
    }
    EXPECT_EQ(parsed.value(), platform::Value(expected));

    // Another page of the same load is not given the list again.
    host->evaluated("setTimeout(() => { location.href = '/processing' }, 0);0");
    ASSERT_TRUE(host->waitForEvent(EventConstants::REDIRECT_URL_HIT));
    EXPECT_EQ(host->evaluated("typeof received"), "undefined");
}

TEST(CheckoutRoad, APageThatMisbehavesLosesNothing) {
    const auto host = DesktopCheckout::make();
    host->server.replyPage("/wild", R"page(<!doctype html><script>
        const post = body => window.webkit.messageHandlers.openUpiIntent.postMessage(body);
        [1, true, null, [1], {a: 1}, 'no json', '{}', '{"url":""}', '['.repeat(100000)].forEach(post);
        alert('hello'); window.answers = [confirm('sure?'), prompt('name?', 'Ada'), prompt('none?')];
        window.open('https://127.0.0.1:9/elsewhere');
        throw new Error('thrown by the page');
        </script>)page");
    host->configure(host->server.address("/wild"));
    host->checkout();
    ASSERT_TRUE(host->waitForEvent(EventConstants::WEBVIEW_LOADED));
    ASSERT_TRUE(host->waitForEvent(EventConstants::UPI_INTENT_STARTED, 9));
    EXPECT_EQ(host->evaluated("JSON.stringify(answers)"), R"([true,"Ada",null])");
    EXPECT_THAT(host->console,
                IsSupersetOf({"[WEBVIEW] Alert: hello", "[WEBVIEW] Confirm: sure?",
                              "[WEBVIEW] Prompt: name?",
                              "[UPI INTENT] Invalid message format - expected string",
                              "[UPI INTENT] Missing required fields: url or packagename"}));

    // An address the engine cannot show is an ordinary failed load: Retry is offered.
    host->evaluated("setTimeout(() => { location.href = 'unheard-of:x' }, 0);0");
    ASSERT_TRUE(host->waitForEvent(EventConstants::WEBVIEW_FAILED));
    EXPECT_FALSE(host->find<UIButton>()->superview()->isHidden());
    host->find<UIButton>()->sendTouchUpInside();
    ASSERT_TRUE(host->waitForEvent(EventConstants::WEBVIEW_LOADED, 2));
    host->payWith("%7B%7D");
    EXPECT_TRUE(host->waitFor([&] { return !host->results.empty(); }));
}

TEST(CheckoutRoad, AConnectionThatEndsHalfWayIsLoggedAndThePageStays) {
    const auto host = DesktopCheckout::make();
    host->server.reply("/half", {"HTTP/1.1 200 OK\r\nContent-Type: text/html\r\n"
                                 "Content-Length: 90000\r\n\r\n<!doctype html><p>half" +
                                 std::string(4000, ' ')});
    host->configure(host->server.address("/half"));
    host->checkout();
    ASSERT_TRUE(host->waitForEvent(EventConstants::WEBVIEW_FAILED));
    EXPECT_TRUE(host->find<UIButton>()->superview()->isHidden());
    EXPECT_EQ(host->countOf(EventConstants::URL_INTERCEPTED), 1U);
    EXPECT_EQ(host->countOf(EventConstants::WEBVIEW_LOADED), 0U);
    EXPECT_THAT(host->results, IsEmpty());
}

TEST(CheckoutRoad, AKilledWebProcessLeavesTheScreenAndTheHostMayGoBack) {
    const auto host = DesktopCheckout::make();
    host->checkout();
    ASSERT_TRUE(host->waitForEvent(EventConstants::WEBVIEW_LOADED));
    for (const pid_t process : descendantsNamed("WebKitWebProcess")) {
        kill(process, SIGKILL);
    }
    ASSERT_TRUE(host->waitFor([&] { return !host->find<WKWebView>()->url(); }));
    EXPECT_TRUE(host->isScreenOpen());
    // A device back is answered; then the same view loads again.
    ZorvikCheckoutSDK::shared().handleDeviceBackButtonPress();
    ASSERT_TRUE(host->waitForEvent(EventConstants::BACK_BUTTON_PRESSED, 2));
    host->find<UIButton>()->sendTouchUpInside();
    ASSERT_TRUE(host->waitForEvent(EventConstants::WEBVIEW_LOADED, 2));
    EXPECT_EQ(host->evaluated("typeof zorvik_web"), "object");
}

TEST(CheckoutRoad, AnOpenIdleScreenCausesNoWakeUp) {
    const auto host = DesktopCheckout::make();
    host->checkout();
    ASSERT_TRUE(host->waitForEvent(EventConstants::WEBVIEW_LOADED));
    host->goOnFor(2);  // the fades and the slide are over by then
    const auto before = host->platform->wakeUps();
    host->goOnFor(3);
    EXPECT_EQ(host->platform->wakeUps(), before);
}

}  // namespace
}  // namespace zorvik::tests
