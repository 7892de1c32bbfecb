// The checkout page's own logic and its keyboard path, in the real engine.
#include "tests/examples/CheckoutPageTest.h"

#include "platform/foundation/URLComponents.h"

namespace zorvik::tests {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::StartsWith;

// What the customer is shown: the view, the notice or the dialog on it, and what has the focus.
constexpr const char* shown = R"js((() => {
  const found = (id) => document.getElementById(id);
  const view = ['methods', 'waiting', 'outcome'].find((id) => !found(id).hidden);
  const above = found('leave').open ? 'leave?' : found('notice').hidden ? '' : found('notice').textContent;
  const active = document.activeElement;
  const focus = active === document.body ? '' : active.id || active.dataset.package || `${active.parentElement.id || 'order'} ${active.localName}`;
  return [view, above, focus].join(' | ');
})())js";

// The ways to pay after a payment request was closed.
const std::string closed = "methods | The payment request was closed. Nothing has been charged. | ";
constexpr const char* backAction = R"({"sdk_action":"device_back_initiated","source":"ios"})";
constexpr const char* askNilgiri =
    "document.querySelector('[data-package=\"demo.nilgiri.pay\"]').click();";
constexpr const char* openCard = "document.getElementById('card-method').open = true;";

class PageTest : public CheckoutPageTest {
  protected:
    void expectShown(const std::string& expected) {
        const bool isShown = askUntil([&] { return evaluate(shown) == expected; });
        EXPECT_TRUE(isShown) << "is " << evaluate(shown) << ", not " << expected;
    }
    // As the application posts it.
    void receive(const std::string& message) {
        evaluate("window.postMessage('" + message + "', '*');0");
    }
    void press(const std::string& keys, const std::string& expected) {
        SCOPED_TRACE("after " + keys);
        ASSERT_EQ(std::system(("timeout 10 xdotool key --delay 20 " + keys).c_str()), 0);
        expectShown(expected);
    }
    void type(const std::string& typed) {
        ASSERT_EQ(std::system(("timeout 10 xdotool type --delay 20 " + typed).c_str()), 0);
    }
    // The card form, filled in and sent.
    std::string payWith(const std::string& number, const std::string& expiry,
                        const std::string& cvv) {
        return std::string(openCard) + "for (const [id, value] of [['number', '" + number +
               "'], ['expiry', '" + expiry + "'], ['cvv', '" + cvv +
               "']]) document.getElementById(`card-${id}`).value = value;"
               "document.getElementById('card-pay').click();";
    }
    // The payload with which the page ended the checkout.
    Dictionary response() {
        const std::string start = "ask /payment/response?response=";
        const auto isResponse = [&](const std::string& event) { return event.starts_with(start); };
        const auto& events = recorder->events;
        std::vector<std::string>::const_iterator found;
        if (!waitUntil([&] {
                found = std::find_if(events.begin(), events.end(), isResponse);
                return found != events.end();
            })) {
            ADD_FAILURE() << "no response";
            return {};
        }
        const auto parts = URLComponents::parse(found->substr(4));
        const auto json =
            JSONSerialization::jsonObject(parts->queryItems()->front().value.value(), {});
        return *json.value().dictionary()->at("payload").dictionary();
    }
};

TEST_F(PageTest, EveryMessageOfTheApplicationHasItsAnswer) {
    const std::string declined = payWith("9900000000000028", "08/30", "123");
    const std::string waiting = "waiting |  | waiting-title";
    const struct {
        const char* name;
        std::string before;  // run on the ways to pay
        std::string view;    // what that leads to
        std::string message;
        std::string after;
    } cases[] = {
        {"a back action on the ways to pay", "", "methods |  | ", backAction,
         "methods | leave? | stay"},
        {"a back action with a way to pay open", openCard, "methods |  | ", backAction,
         "methods |  | card-method summary"},
        {"a back action while an app is waited for", askNilgiri, waiting, backAction,
         closed + "methods-title"},
        {"a back action after a declined card", declined, "outcome |  | outcome-title", backAction,
         "methods |  | methods-title"},
        {"a back action with the question open", "document.getElementById('leave').showModal()",
         "methods | leave? | stay", backAction, "methods |  | "},
        {"an app that is not installed", askNilgiri, waiting,
         R"({"sdk_transaction_enquiry_response":"x","sdk_upi_intent_response":"unregistered"})",
         "methods | Nilgiri Pay is not installed on this device. Choose another way to pay. | "
         "methods-title"},
        {"an app that cannot be opened", askNilgiri, waiting,
         R"({"sdk_transaction_enquiry_response":"x","sdk_upi_intent_response":"unavailable"})",
         "methods | Nilgiri Pay could not be opened. Choose another way to pay. | methods-title"},
        {"a quick return", askNilgiri, waiting,
         R"({"transaction_enquiry_api_response":"PENDING","upi_intent_back_response":"close"})",
         waiting},
        {"a return nobody waits for", "", "methods |  | ",
         R"({"transaction_enquiry_api_response":"","upi_intent_back_response":"close"})",
         "methods |  | "},
        {"another message", askNilgiri, waiting, R"({"sdk_action":"dance"})", waiting},
        {"no object", askNilgiri, waiting, "null", waiting},
        {"no JSON", askNilgiri, waiting, "{", waiting},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        open();
        evaluate(row.before + ";0");
        expectShown(row.view);
        receive(row.message);
        // Once a second message is there, the first one was answered.
        evaluate(
            "window.isThere = false; addEventListener('message', ({ data }) => {"
            " isThere ||= data === 'later'; }); window.postMessage('later', '*');0");
        waitFor("isThere");
        expectShown(row.after);
    }
    open();
    const std::string crossed = "document.getElementById('inspector-count').textContent";
    const std::string before = evaluate(crossed);
    evaluate(std::string("dispatchEvent(new MessageEvent('message', {data: '") + backAction +
             "'}))");
    expectShown("methods |  | ");  // it was a frame's
    EXPECT_EQ(evaluate(crossed), before);
}

TEST_F(PageTest, AProblemWithACardIsTiedToItsField) {
    const struct {
        const char* name;
        const char* number;
        const char* expiry;
        const char* cvv;
        const char* field;
        const char* words;
    } cases[] = {
        {"too short", "99000000", "08/30", "123", "card-number",
         "This card number is not complete"},
        {"a wrong checksum", "9900000000000011", "08/30", "123", "card-number",
         "This card number is not complete"},
        {"a thirteenth month", "9900000000000010", "13/30", "123", "card-expiry",
         "The expiry date must look like 08/30"},
        {"a short code", "9900000000000010", "08/30", "12", "card-cvv",
         "The security code has three or four digits"},
    };
    open();
    for (const auto& row : cases) {
        evaluate(payWith(row.number, row.expiry, row.cvv) + "0");
        EXPECT_EQ(evaluate("(() => { const [field, more] = document.querySelectorAll("
                           "'[aria-invalid=true][aria-describedby=card-error]');"
                           "return more ? 'several' : `${field.id}: "
                           "${document.getElementById('card-error').textContent}`; })()"),
                  std::string(row.field) + ": " + row.words)
            << row.name;
        expectShown(std::string("methods |  | ") + row.field);
    }
    evaluate(payWith("9900000000000036", "08/30", "123") + "0");
    waitFor("document.getElementById('card-error').textContent.includes('own cards')");
    EXPECT_EQ(evaluate("document.querySelectorAll('[aria-invalid]').length"), "0");

    // Impatience does not charge twice.
    evaluate(payWith("9900000000000028", "08/30", "123") +
             "document.getElementById('card-pay').click();");
    expectShown("outcome |  | outcome-title");
    const Dictionary order = post("/api/checkout/close", {{"token", token}});
    EXPECT_EQ(order.at("payments").array()->size(), 1U);
}

TEST_F(PageTest, ACardIsPaidWithTheKeyboardAlone) {
    open();
    press("Tab", "methods |  | order summary");
    press("Tab", "methods |  | demo.nilgiri.pay");
    press("Tab", "methods |  | demo.tamarind.upi");
    press("Tab", "methods |  | card-method summary");
    press("Tab", "methods |  | bank-method summary");
    press("Tab", "methods |  | inspector-toggle");
    press("shift+Tab shift+Tab space Tab", "methods |  | card-number");
    press("Return", "methods |  | card-number");
    waitFor("!document.getElementById('card-error').hidden");
    type("9900000000000010");
    press("Tab", "methods |  | card-expiry");
    type("0830");
    press("Tab", "methods |  | card-cvv");
    type("123");
    press("Tab", "methods |  | card-pay");
    press("Return", "outcome |  | outcome-title");
    const Dictionary paid = response();
    EXPECT_EQ(text(paid, "status"), "SUCCESS");
    EXPECT_EQ(text(paid, "payment_method"), "CARD");
}

TEST_F(PageTest, AnAppIsPickedAndTheQuestionToLeaveAnsweredWithTheKeyboardAlone) {
    open();
    press("Tab Tab Return", "waiting |  | waiting-title");
    ASSERT_THAT(
        recorder->events,
        ElementsAre(AllOf(
            StartsWith(R"(openUpiIntent string {"url":"zorvik-demo-nilgiri://pay?pa=)"),
            EndsWith(R"(","package_name":"demo.nilgiri.pay","transactionId":"TXN000000001"})"))));
    press("Tab", "waiting |  | open-again");
    receive(R"({"transaction_enquiry_api_response":"","upi_intent_back_response":"close"})");
    waitFor("document.getElementById('waiting-text').textContent.includes('not been confirmed')");
    expectShown("waiting |  | open-again");
    press("Tab space", closed + "methods-title");
    press("Tab", closed + "demo.nilgiri.pay");
    receive(backAction);
    expectShown("methods | leave? | stay");
    press("Tab", "methods | leave? | leave-now");
    press("Tab Tab Tab shift+Tab shift+Tab", "methods | leave? | stay");
    press("Escape", closed + "demo.nilgiri.pay");
    receive(backAction);
    press("Tab Return", closed + "demo.nilgiri.pay");
    EXPECT_EQ(text(response(), "status"), "CANCELLED");
}

TEST_F(PageTest, TheInspectorShowsWhatCrossedAndIsReachedWithTheKeyboard) {
    open();
    evaluate(std::string(askNilgiri) + "0");
    expectShown("waiting |  | waiting-title");
    const std::string sent =
        recorder->events.at(0).substr(std::string("openUpiIntent string ").size());
    receive(backAction);
    expectShown(closed + "methods-title");
    press("Tab Tab Tab Tab Tab Return", closed + "inspector-title");
    EXPECT_EQ(
        evaluate("[...document.querySelectorAll('#inspector li')].map((item) => ["
                 "/^\\d\\d:\\d\\d:\\d\\d\\.\\d{3}$/.test(item.querySelector('time').textContent),"
                 "item.querySelector('strong').textContent,"
                 "item.querySelector('.crossing code').textContent,"
                 "!!item.querySelector('details:not([open])'),"
                 "item.querySelector('.made')?.textContent].join()).join('\\n')"),
        "true,→ page,zorvik_web.UPIIntentAvailable,true,\n"
        "true,→ application,openUpiIntent,true,\n"
        "true,→ page,postMessage,false,Went back to the ways to pay.");
    EXPECT_EQ(evaluate("document.querySelectorAll('#inspector .body')[1].textContent"), sent);
    EXPECT_EQ(evaluate("document.querySelectorAll('#inspector .body')[2].textContent"), backAction);
    press("Tab", closed + "inspector-close");
    press("Tab Return Tab Return Tab", closed + "inspector-toggle");
    receive("{}");
    waitFor("document.querySelectorAll('#inspector li').length === 4");
    EXPECT_EQ(evaluate("document.querySelectorAll('#inspector details[open]').length"), "2");
    const std::string isOpen =
        "`${!document.getElementById('inspector').hidden} "
        "${document.getElementById('inspector-toggle').ariaExpanded}`";
    EXPECT_EQ(evaluate(isOpen), "true true");
    press("shift+Tab shift+Tab shift+Tab", closed + "inspector-close");
    press("Return", closed + "inspector-toggle");
    EXPECT_EQ(evaluate(isOpen), "false false");
    // Opened by the address, and open for the pages that follow, with what crossed before.
    for (const char* address : {"&x#inspector", "&y"}) {
        load("/checkout?token=" + token + address);
        waitFor("document.querySelectorAll('#inspector:not([hidden]) li').length === 4");
    }
}

TEST_F(PageTest, UntilTheOrderIsThereThePageHasTheSkeletonsColours) {
    open();
    // Black while the window is being drawn.
    const auto pixel = [&](int y) {
        const std::string path = std::string(std::getenv("XDG_CACHE_HOME")) + "/page.png";
        return platform->savePng(window, path) ? Picture(path).at(195, y) : Pixel{};
    };
    setDesktop("gtk-application-prefer-dark-theme", 1);
    orderLatency = 1200;
    load("/checkout?token=" + token);
    const Pixel white{255, 255, 255}, grey{0xE0, 0xE0, 0xE0}, dark{16, 22, 28};
    EXPECT_TRUE(askUntil([&] { return pixel(150) == grey && pixel(700) == white; }));
    EXPECT_TRUE(askUntil([&] { return pixel(700) == dark; }));
}

}  // namespace
}  // namespace zorvik::tests
