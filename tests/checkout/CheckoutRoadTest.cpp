#include <signal.h>

#include "core/EventConstants.h"
#include "core/development/DevelopmentCore.h"
#include "core/development/EventSink.h"
#include "platform/foundation/Console.h"
#include "platform/foundation/JSONSerialization.h"
#include "platform/runtime/DispatchQueue.h"
#include "platform/uikit/UIButton.h"
#include "platform/uikit/UILabel.h"
#include "platform/webkit/WKWebView.h"
#include "testkit/RecordingDelegate.h"
#include "tests/platform/desktop/DesktopPortTest.h"
#include "tests/platform/desktop/ScreenReader.h"
#include "tests/support/RawServer.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutSDK.h"

namespace zorvik::tests {
namespace {

using testing::ElementsAre;

// The real engine, the development core and a server of checkout pages.
class CheckoutRoad : public DesktopPortTest {
  protected:
    CheckoutRoad() : DesktopPortTest({.applicationId = "zorvik-test"}) {
        setConsoleSink([this](std::string_view line) { console.emplace_back(line); });
        server.replyPage("/checkout",
                         "<script>window.received = []; window.zorvik_web = { UPIIntentAvailable: "
                         "text => received.push(JSON.parse(text)) };</script>");
        server.replyPage("/processing", "processing");
        configure("/checkout?token=%@");
    }
    ~CheckoutRoad() override { setConsoleSink({}); }

    void configure(const std::string& path, std::vector<development::DevelopmentUPIApp> apps = {}) {
        static const auto orders = std::make_shared<development::MemoryOrderBook>();
        development::Configuration configuration;
        configuration.webViewViewUrl =
            path == "/refused" ? server.refusedAddress(path) : server.address(path);
        configuration.webViewRespCheckUrl = server.address("/response");
        configuration.upiApps = std::move(apps);
        configuration.eventSink = events;
        configuration.orderBook = orders;
        configuration.runInBackground = [](std::function<void()> task) {
            DispatchQueue::global(DispatchQueue::QualityOfService::background)
                .async(std::move(task));
        };
        development::DevelopmentCore::shared().configure(std::move(configuration));
    }
    // Creates an order, checks it out and waits for the event that ends the load.
    void checkout(std::string_view event = EventConstants::WEBVIEW_LOADED) {
        auto& sdk = ZorvikCheckoutSDK::shared();
        sdk.setDelegate(host);
        host->clear();
        token.clear();
        sdk.createOrder(1499, "INR", {}, std::nullopt, [this](const auto& created) {
            DispatchQueue::main().async(
                [this, made = created.value()] { token = made.orderToken.value(); });
        });
        ASSERT_TRUE(waitUntil([&] { return !token.empty(); }));
        const auto before = countOf(event);
        sdk.checkout(presenter, {token, {}, {}, {}, {}});
        ASSERT_TRUE(waitUntil([&] { return countOf(event) > before && isScreenOpen(); }));
    }
    bool waitForEvent(std::string_view name, std::ptrdiff_t times = 1) {
        return waitUntil([&] { return countOf(name) >= times; });
    }

    // The value of a script in the checkout page, as text.
    std::string evaluated(const std::string& script) {
        std::optional<std::string> text;
        find<WKWebView>()->evaluateJavaScript(script, [&text](const auto& result) {
            text = result ? result.value().text : "error: " + result.error().localizedDescription;
        });
        waitUntil([&] { return text.has_value(); });
        return text.value_or("error: no answer");
    }
    void goTo(const std::string& address) {
        const std::string literal = JSONSerialization::data(Value(address)).value();
        evaluated("setTimeout(() => { location.href = " + literal + " }, 0);0");
    }
    // Goes to the response address, as written, and waits for the host to hear of it.
    void payWith(const std::string& response) {
        goTo(server.address("/response") + "?response=" + response);
        ASSERT_TRUE(waitUntil([&] { return !host->responses().empty() && !isScreenOpen(); }));
    }

    bool isScreenOpen() const { return presenter->presentedViewController() != nullptr; }
    // The first view of a type on the open screen, in the order of the tree.
    template <class View>
    std::shared_ptr<View> find(UIView* root = nullptr) const {
        if (root == nullptr) root = presenter->presentedViewController()->view().get();
        for (const auto& view : root->subviews()) {
            if (const auto found = std::dynamic_pointer_cast<View>(view)) return found;
            if (const auto found = find<View>(view.get())) return found;
        }
        return nullptr;
    }
    bool isPanelHidden() const { return find<UIButton>()->superview()->isHidden(); }
    std::vector<std::string> eventNames() const {
        std::vector<std::string> names;
        for (const auto& event : events->events())
            names.push_back(event.eventName);
        return names;
    }
    std::ptrdiff_t countOf(std::string_view name) const {
        return std::ranges::count(eventNames(), name);
    }

    RawServer server;
    std::vector<std::string> console;
    const std::shared_ptr<development::MemoryEventSink> events =
        std::make_shared<development::MemoryEventSink>();
    const std::shared_ptr<testkit::RecordingDelegate> host =
        std::make_shared<testkit::RecordingDelegate>();
    std::string token;
};

TEST_F(CheckoutRoad, APaymentOnThePageReachesTheHostAndClosesTheScreen) {
    checkout();
    ASSERT_TRUE(waitUntil([&] { return !find<WKWebView>()->isHidden(); }));
    payWith("%7B%22payload%22%3A%7B%22paid%22%3Atrue%2C%22amount%22%3A1499%7D%7D");
    EXPECT_THAT(host->responses(), ElementsAre(Dictionary{{"paid", true}, {"amount", 1499}}));

    ASSERT_TRUE(waitForEvent(EventConstants::PAYMENT_STATUS));
    auto names = eventNames();
    std::erase(names, EventConstants::SDK_INITIALIZED);     // logged in the background,
    std::erase(names, EventConstants::CHECKOUT_INITIATED);  // in no order with the others
    EXPECT_THAT(names,
                ElementsAre(EventConstants::UPDATE_ORDER_PAYLOAD, EventConstants::UPI_APPS_LISTED,
                            EventConstants::WEBVIEW_LAUNCH, EventConstants::URL_INTERCEPTED,
                            EventConstants::WEBVIEW_LOADED, EventConstants::PAYMENT_STATUS));
    // The response address was never loaded.
    EXPECT_THAT(server.requests(),
                ElementsAre(testing::StartsWith("GET /checkout?token=" + token + " HTTP")));
}

TEST_F(CheckoutRoad, TheResponseIsReadHoweverThePageWroteIt) {
    const struct {
        const char* name;
        const char* response;
        testing::Matcher<Dictionary> received;
    } cases[] = {
        {"JSON with bare braces and quotes", R"({"payload":{"paid":"yes"}})",
         Dictionary{{"paid", "yes"}}},
        {"base64 of JSON", "eyJwYXlsb2FkIjp7InBhaWQiOiJ5ZXMifX0=", Dictionary{{"paid", "yes"}}},
        {"a bare number", "123", Dictionary{}},
        {"a broken escape", "%7B%zz",
         testing::Contains(testing::Pair(
             "error",
             Value(mendsBrokenEscapes ? "Invalid response format" : "Invalid payment response")))},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        checkout();
        payWith(row.response);
        EXPECT_THAT(host->responses(), ElementsAre(row.received));
    }
}

TEST_F(CheckoutRoad, ARefusedPortShowsThePanelAndRetryLoadsThePage) {
    configure("/refused");
    checkout(EventConstants::WEBVIEW_FAILED);
    EXPECT_FALSE(isPanelHidden());
    EXPECT_EQ(find<UILabel>()->text(), "Something went wrong. Please try again.");
    EXPECT_EQ(countOf(EventConstants::WEBVIEW_LOADED), 0);
    settle();
    EXPECT_THAT(heard(window),
                ElementsAre("alert: Something went wrong. Please try again.",
                            "text: Something went wrong. Please try again.",
                            "button: Retry (Something went wrong. Please try again.) focused"));
    configure("/checkout");
    xdotool("key Return");
    EXPECT_TRUE(waitForEvent(EventConstants::WEBVIEW_LOADED));
    EXPECT_TRUE(
        askUntil([&] { return heard(window) == std::vector<std::string>{"page focused"}; }));
    EXPECT_EQ(evaluated("typeof zorvik_web"), "object");
    EXPECT_TRUE(isPanelHidden());
    EXPECT_EQ(countOf(EventConstants::WEBVIEW_FAILED), 1);
}

TEST_F(CheckoutRoad, ThePageParsesTheAppListAsItWasGiven) {
    const std::string names[] = {
        "O'Neill \"Quick\" Pay",   "back\\slash \\n \\u0041",       "😀 भुगतान 付款",
        "two\nlines\r\tand a tab", std::string("null\0inside", 11), "\u2028separator</script><!--"};
    std::vector<development::DevelopmentUPIApp> apps;
    Array expected;
    for (const auto& name : names) {
        apps.push_back({{std::nullopt, name, "app." + name, "data:,"}, ""});
        expected.emplace_back(Dictionary{{"upi_app_name", name},
                                         {"package_name", "app." + name},
                                         {"appiconbase64", "data:,"},
                                         {"upi_app_code", nullptr}});
    }
    apps.push_back({{"code", "A twin", "app." + names[0], std::nullopt}, ""});
    configure("/checkout", apps);
    checkout();
    ASSERT_TRUE(waitUntil([&] { return evaluated("received.length") == "1"; }));
    const auto parsed = JSONSerialization::jsonObject(
        evaluated("JSON.stringify(received[0].UPIApps)"), JSONSerialization::ReadingOptions::none);
    EXPECT_EQ(parsed.value(), Value(expected));

    // Another page of the same load is not given the list again.
    goTo("/processing");
    ASSERT_TRUE(waitForEvent(EventConstants::REDIRECT_URL_HIT));
    EXPECT_EQ(evaluated("typeof received"), "undefined");
}

TEST_F(CheckoutRoad, APageThatMisbehavesLosesNothing) {
    server.replyPage("/wild", R"page(<script>
        const post = body => window.webkit.messageHandlers.openUpiIntent.postMessage(body);
        [1, true, null, [1], {a: 1}, 'no json', '{}', '{"url":""}', '['.repeat(100000)].forEach(post);
        alert('hello'); window.answers = [confirm('sure?'), prompt('name?', 'Ada'), prompt('none?')];
        window.open('https://127.0.0.1:9/elsewhere');
        throw new Error('thrown by the page');
        </script>)page");
    configure("/wild");
    checkout();
    ASSERT_TRUE(waitForEvent(EventConstants::UPI_INTENT_STARTED, 9));
    EXPECT_EQ(evaluated("JSON.stringify(answers)"), R"([true,"Ada",null])");
    EXPECT_THAT(console, testing::IsSupersetOf(
                             {"[WEBVIEW] Alert: hello", "[WEBVIEW] Confirm: sure?",
                              "[WEBVIEW] Prompt: name?",
                              "[UPI INTENT] Invalid message format - expected string",
                              "[UPI INTENT] Missing required fields: url or packagename"}));

    // An address the engine cannot show is an ordinary failed load: Retry is offered.
    goTo("unheard-of:x");
    ASSERT_TRUE(waitForEvent(EventConstants::WEBVIEW_FAILED));
    EXPECT_FALSE(isPanelHidden());
    find<UIButton>()->sendTouchUpInside();
    ASSERT_TRUE(waitForEvent(EventConstants::WEBVIEW_LOADED, 2));
    payWith("%7B%7D");
}

TEST_F(CheckoutRoad, AConnectionThatEndsHalfWayIsLoggedAndThePageStays) {
    server.reply("/half",
                 "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\n"
                 "Content-Length: 90000\r\n\r\n<!doctype html><p>half" +
                     std::string(4000, ' '));
    configure("/half");
    checkout(EventConstants::WEBVIEW_FAILED);
    EXPECT_TRUE(isPanelHidden());
    EXPECT_EQ(countOf(EventConstants::URL_INTERCEPTED), 1);
    EXPECT_EQ(countOf(EventConstants::WEBVIEW_LOADED), 0);
    EXPECT_TRUE(host->responses().empty());
}

TEST_F(CheckoutRoad, AKilledWebProcessShowsThePanelAndRetryLoadsThePage) {
    checkout();
    EXPECT_TRUE(isPanelHidden());
    for (const pid_t process : webProcesses())
        kill(process, SIGKILL);
    ASSERT_TRUE(waitForEvent(EventConstants::WEBVIEW_FAILED));
    EXPECT_FALSE(isPanelHidden());
    // A host's device back finds no page, and no harm is done.
    ZorvikCheckoutSDK::shared().handleDeviceBackButtonPress();
    ASSERT_TRUE(waitForEvent(EventConstants::BACK_BUTTON_PRESSED, 2));
    EXPECT_FALSE(isPanelHidden());
    const auto loads = server.requests().size();
    find<UIButton>()->sendTouchUpInside();
    ASSERT_TRUE(waitForEvent(EventConstants::WEBVIEW_LOADED, 2));
    EXPECT_TRUE(isPanelHidden());
    EXPECT_EQ(evaluated("typeof zorvik_web"), "object");
    EXPECT_EQ(server.requests().size(), loads + 1) << "nothing was loaded by itself";
    EXPECT_EQ(countOf(EventConstants::WEBVIEW_FAILED), 1);
}

TEST_F(CheckoutRoad, AnOpenIdleScreenCausesNoWakeUp) {
    checkout();
    const auto page = find<WKWebView>();
    ASSERT_TRUE(waitUntil([&] { return !page->isHidden() && page->presentationAlpha() == 1; }));
    settle();  // the slide, and the tasks the fade left, are over by then
    const auto before = platform->wakeUps();
    settle(1.5);
    EXPECT_EQ(platform->wakeUps(), before);
}

}  // namespace
}  // namespace zorvik::tests
