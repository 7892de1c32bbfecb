#include <algorithm>

#include ZORVIK_PORT_HEADER
#include "tests/hostile/HostileCheckout.h"

namespace zorvik::tests {
namespace {

constexpr auto noString = "[UPI INTENT] Invalid message format - expected string";
constexpr auto noJson = "[UPI INTENT] Failed to parse JSON from message body";
constexpr auto notInstalled = "[UPI LAUNCH] ❌ UPI app not installed";
const std::string notInstalledMessage =
    R"({"sdk_transaction_enquiry_response":"UPI app not installed","sdk_upi_intent_response":"unregistered"})";
const std::string backMessage = R"({"sdk_action":"device_back_initiated","source":"ios"})";

// What the page does to the functions it shares with the scripts it is spoken to with.
const std::string vandal = R"(
    const broken = () => { throw new Error('broken by the page'); };
    const vandalise = () => {
        for (const key of ['url', 'package_name', 'UPIApps', 'source', 'toJSON', 'then', 'length'])
            Object.defineProperty(Object.prototype, key, { get: broken, set: broken });
        for (const type of [String, Array, Promise, Function, Number, RegExp])
            for (const key of Object.getOwnPropertyNames(type.prototype))
                try { type.prototype[key] = broken; } catch {}
        JSON.parse = JSON.stringify = Object.keys = broken;
        window.Promise = window.JSON = window.Object = window.console = null;
        window.postMessage = (text, origin) => { heard += text + origin; };
    };)";

}  // namespace

std::vector<Row> messageRows() {
    return {
        {"AFloodOfMessages", "<script>for (let i = 0; i < 20000; ++i) post('no json');</script>",
         [](HostileCheckout& checkout) {
             checkout.waitForLine(noJson, 20000);
             EXPECT_EQ(checkout.eventCount("UPI_INTENT_STARTED"), 20000u);
         }},
        {"AFloodOfAnswers", "<script>for (let i = 0; i < 1000; ++i) post(intent);</script>",
         [](HostileCheckout& checkout) {
             checkout.waitForLine(notInstalled, 1000);
             checkout.waitForValue("heard.length",
                                   std::to_string(1000 * notInstalledMessage.size()));
         }},
        {"MessagesOfUnknownNames", R"(<script>
             let failures = 0;
             for (let i = 0; i < 20000; ++i)
                 for (const name of ['other', '__proto__', 'constructor'])
                     try { webkit.messageHandlers[name].postMessage(i); } catch { ++failures; }
             </script>)",
         [](HostileCheckout& checkout) {
             checkout.waitForValue("failures", "60000");
             EXPECT_EQ(checkout.eventCount("UPI_INTENT_STARTED"), 0u);
         }},
        {"UnreadableBodies", R"(<script>
             const circle = []; circle.push({ circle });
             let nested = []; for (let i = 0; i < 100000; ++i) nested = [nested];
             const bodies = [circle, nested, NaN, -0, new Date(NaN), /x/, new Map([[1, 2]]),
                             new Error('x'), document, new Proxy({}, {}), 10n ** 1000n,
                             { get url() { throw 1; } }, Symbol('x'), () => {}, new Blob(['x'])];
             let refused = 0;
             for (const body of bodies)
                 try { post(body)?.catch?.(() => {}); } catch { ++refused; }
             </script>)",
         [](HostileCheckout& checkout) {
             checkout.waitForPage();
             const auto refused = std::stoul(checkout.evaluated("refused"));
             const auto answered = checkout.timesPrinted(noString);
             EXPECT_GE(answered, 5u);
             EXPECT_LE(answered + refused, 15u);
         }},
        {"AnObjectThatUnfoldsWithoutEnd", R"(<script>
             let body = ['x']; for (let i = 0; i < 40; ++i) body = [body, body];
             post(body); post('no json');</script>)",
         [](HostileCheckout& checkout) { checkout.waitForLine(noJson); }},
        {"AnObjectOfLongTexts", R"(<script>
             const text = 'x'.repeat(1000000); post(new Array(1000).fill(text)); post('no json');
             </script>)",
         [](HostileCheckout& checkout) { checkout.waitForLine(noJson); }},
        {"AHundredThousandItems",
         "<script>post(new Array(100000).fill(1)); post('no json');</script>",
         [](HostileCheckout& checkout) { checkout.waitForLine(noJson); }},
        {"TenMegabytesOfText", "<script>post('x'.repeat(10000000));</script>",
         [](HostileCheckout& checkout) { checkout.waitForLine(noJson); }},
        {"ThreeMegabytesOfEscapes", R"(<script>post('\u0001"\\'.repeat(1000000));</script>)",
         [](HostileCheckout& checkout) { checkout.waitForLine(noJson); }},
        {"FourMegabytesOfAddress", R"(<script>post(JSON.stringify({
             url: 'nobody-opens:' + 'x'.repeat(4000000), package_name: 'app' }));</script>)",
         [](HostileCheckout& checkout) {
             checkout.waitForLine(notInstalled);
             checkout.waitForValue("heard", notInstalledMessage);
         }},
        {"MessagesFromFrames", R"(<body><script>
             const inner = '<script>webkit.messageHandlers.openUpiIntent.postMessage("no json");' +
                           'parent.postMessage("forged", "*");</' + 'script>';
             for (const attributes of [{ srcdoc: inner }, { srcdoc: inner, sandbox: 'allow-scripts' },
                                       { src: 'data:text/html,' + encodeURIComponent(inner) }])
                 document.body.append(Object.assign(document.createElement('iframe'), attributes));
             </script>)",
         [](HostileCheckout& checkout) {
             checkout.waitForLine(noJson, 3);
             checkout.waitForValue("heard", "forgedforgedforged");
         }},
        {"MessagesBeforeTheLoadEnds", "<img src=/never><script>post(intent);</script>",
         [](HostileCheckout& checkout) {
             checkout.waitForLine(notInstalled);
             checkout.waitForValue("heard", notInstalledMessage);
             EXPECT_EQ(checkout.eventCount("WEBVIEW_LOADED"), 0u);
         }},
        {"MessagesToTheLastAndBeyond", R"(<script>
             setInterval(() => { for (let i = 0; i < 100; ++i) post(intent); }, 0);
             onpagehide = onunload = () => { for (let i = 0; i < 10000; ++i) post(intent); };
             </script>)",
         [](HostileCheckout& checkout) { checkout.waitForLine(notInstalled, 500); },
         Leaves::nothing},
        {"MessagesWithoutEnd", R"(<script>
             setTimeout(() => { for (;;) post('no json'); }, 300);</script>)",
         [](HostileCheckout& checkout) {
             checkout.waitForLine(noJson, 1000);
             checkout.clickUntilPanel();
         },
         Leaves::panel},
        {"FunctionsBrokenBeforeTheLoadEnds",
         "<script>" + vandal + "vandalise(); post(intent);</script>",
         [](HostileCheckout& checkout) {
             checkout.waitForPage();
             checkout.waitForValue("heard", notInstalledMessage + '*');
             checkout.back();
             checkout.waitForValue("heard", notInstalledMessage + '*' + backMessage + '*');
         }},
        {"FunctionsBrokenByTheAppList",
         "<script>" + vandal +
             "window.zorvik_web = { UPIIntentAvailable: text => "
             "{ heard = text.slice(0, 13); vandalise(); post(intent); broken(); } };</script>",
         [](HostileCheckout& checkout) {
             checkout.waitForValue("heard", R"({"UPIApps":[{)" + notInstalledMessage + '*');
         }},
        // The engine brings the value of each script back.
        {"ScriptsThatAnswerWithTooMuch", R"(<script>
             let value = ['x']; for (let i = 0; i < 40; ++i) value = [value, value];
             window.setTimeout = () => value;
             window.postMessage = text => { heard += text; return value; };</script>)",
         [](HostileCheckout& checkout) {
             checkout.waitForPage();
             checkout.back();
             checkout.waitForValue("heard", backMessage);
         }},
        {"ScriptsThatAreThrownOut", R"(<script>
             window.setTimeout = window.postMessage = () => { throw 'x'.repeat(3000000); };
             </script>)",
         [](HostileCheckout& checkout) {
             checkout.waitForPage();
             checkout.back();
             checkout.waitForLine("[BACK HANDLER] 📱 Handling device back pressed");
         }},
        {"ManyPanels", R"(<script>
             for (let i = 0; i < 1000; ++i) { alert('a'); confirm('c'); prompt('p', 'text'); }
             window.answers = [confirm('x'.repeat(10000000)), prompt('', 'y'.repeat(1000000)).length];
             </script>)",
         [](HostileCheckout& checkout) {
             checkout.waitForLine("[WEBVIEW] Alert: a", 1000);
             checkout.waitForLine("[WEBVIEW] Confirm: c", 1000);
             checkout.waitForLine("[WEBVIEW] Prompt: p", 1000);
             const auto length = std::min(longestPanelText, 1'000'000);
             checkout.waitForValue("String(answers)", "true," + std::to_string(length));
         }},
        {"PanelsWithoutEnd", R"(<script>onload = () => setTimeout(() => {
             for (;;) { alert('a'); confirm('c'); prompt('p'); } }, 100);</script>)",
         [](HostileCheckout& checkout) {
             checkout.waitForLine("[WEBVIEW] Alert: a", 100);
             checkout.clickUntilPanel();
         },
         Leaves::panel},
        {"PanelsOnTheWayOut", R"(<script>
             onbeforeunload = event => { confirm('c'); event.preventDefault(); return 'stay'; };
             onpagehide = onunload = () => { for (let i = 0; i < 100; ++i) alert('a'); };
             </script>)",
         [](HostileCheckout& checkout) { checkout.waitForPage(); }},
    };
}

}  // namespace zorvik::tests
