#include "tests/hostile/HostileCheckout.h"

namespace zorvik::tests {
namespace {

constexpr auto allowed = "[URL INTERCEPT] 📋 URL type: String";

// Each navigation of these pages costs the engine a process.
void stormOfProcesses(HostileCheckout& checkout) {
    checkout.waitForLine(allowed, 150);
    EXPECT_LT(engineProcesses(EngineProcess::web).size(), 40u);
}

}  // namespace

std::vector<Row> navigationRows() {
    return {
        // A load that another one replaces has failed, which the panel shows.
        {"LocationsByTimer", R"(<script>let n = 0;
             setInterval(() => { location.href = '/never?' + ++n; }, 1);</script>)",
         [](HostileCheckout& checkout) {
             checkout.waitForLine(allowed, 100);
             checkout.waitForPanel();
         },
         Leaves::panel},
        {"HistoryFlood", R"(<script>
             let i = 0;
             const timer = setInterval(() => {
                 try { for (let n = 0; n < 1000; ++n) history.pushState(++i, '', '?' + i); } catch {}
                 history.back(); history.go(-2); history.forward();
                 if (i > 50) clearInterval(timer);
             }, 1);</script>)",
         [](HostileCheckout& checkout) {
             checkout.waitForPage();
             checkout.settle(0.5);
         }},
        {"HashFlood", "<script>for (let i = 0; i < 3000; ++i) location.hash = 'part' + i;</script>",
         [](HostileCheckout& checkout) {
             // An engine may have enough of them.
             checkout.waitForValue("location.hash.startsWith('#part')", "true");
             checkout.waitForPage();
             EXPECT_FALSE(checkout.isPanelShown());
         }},
        {"WindowFlood", R"(<body><script>let opened = 0;
             for (let i = 0; i < 1000; ++i) if (window.open('/window?' + i)) ++opened;
             for (let i = 0; i < 100; ++i) {
                 const link = document.createElement('a'); link.href = '/window'; link.target = 'x' + i;
                 document.body.append(link); link.click();
             }</script>)",
         [](HostileCheckout& checkout) {
             checkout.waitForLine(allowed, 1101);
             EXPECT_EQ(checkout.evaluated("opened"), "0");
         }},
        {"FormPosts", R"(<body><iframe name=inside></iframe><script>
             for (let i = 0; i < 300; ++i) {
                 const form = document.createElement('form');
                 form.method = 'post'; form.action = '/posted'; form.target = i % 2 ? 'inside' : '_blank';
                 form.innerHTML = '<input name=x value="' + 'x'.repeat(10000) + '">';
                 document.body.append(form); form.submit();
             }</script>)",
         [](HostileCheckout& checkout) { checkout.waitForLine(allowed, 2); }},
        {"RedirectsWithoutEndByTheServer", "",
         [](HostileCheckout& checkout) {
             checkout.server.reply("/loop",
                                   RawServer::response("302 Found", "", "Location: /loop\r\n"));
             checkout.open("/loop");
             checkout.waitForPanel();
         },
         Leaves::panel, Row::Opens::inStory},
        {"RedirectsWithoutEndByScripts",
         "<script>setTimeout(() => location.replace('/hostile?' + Math.random()), 0);</script>",
         [](HostileCheckout& checkout) { checkout.waitForPage(10); }},
        {"RedirectsThatNeverFinish",
         "<script>location.replace('/hostile?' + Math.random());</script><img src=/never>",
         [](HostileCheckout& checkout) { checkout.waitForRequest("/hostile", 30); }},
        {"FrameStorm", R"(<body><script>
             setInterval(() => {
                 const frame = document.createElement('iframe');
                 frame.src = ['/framed', 'nobody-opens:x', 'data:,x', 'about:blank'][n++ % 4];
                 document.body.append(frame);
                 if (n > 30) document.querySelector('iframe').remove();
             }, 1); let n = 0;</script>)",
         [](HostileCheckout& checkout) { checkout.waitForLine(allowed, 300); }},
        {"UnknownSchemes", R"(<body><script>let n = 0;
             const timer = setInterval(() => {
                 location.href = 'nobody-opens:' + ++n;
                 if (n === 150) clearInterval(timer);
             }, 5);</script>)",
         [](HostileCheckout& checkout) {
             stormOfProcesses(checkout);
             checkout.waitForPanel();
         },
         Leaves::panel},
        {"OtherSites", R"(<script>let n = 0;
             setInterval(() => { location.href = `http://localhost:${location.port}/never?${++n}`; }, 5);</script>)",
         stormOfProcesses, Leaves::page, Row::Opens::before, Row::Runs::atLength},
        {
            "AnAddressOfAMegabyte",
            R"(<script>
             setTimeout(() => { location.href = '/long?' + 'x'.repeat(1000000); }, 0);</script>)",
            [](HostileCheckout& checkout) { checkout.waitForLine(allowed, 2); },
        },
        {"AResponseInEveryFrame", R"(<body><script>
             for (let i = 0; i < 100; ++i) {
                 const frame = document.createElement('iframe');
                 frame.src = response;
                 document.body.append(frame);
             }</script>)",
         [](HostileCheckout& checkout) {
             EXPECT_TRUE(checkout.waitUntil([&] { return !checkout.isScreenOpen(); }));
         },
         Leaves::outcome},
        {"AServerThatNeverAnswers", "",
         [](HostileCheckout& checkout) {
             checkout.open("/never");
             checkout.waitForRequest("/never");
             checkout.settle(0.5);
         },
         Leaves::nothing, Row::Opens::inStory},
        {"ANextPageThatNeverAnswers",
         "<script>onload = () => { location.href = '/never'; };</script>",
         [](HostileCheckout& checkout) { checkout.waitForRequest("/never"); }},
        {"APageInDrops", "",
         [](HostileCheckout& checkout) {
             const std::string page =
                 "<script>const response = '/response?response={\"payload\":"
                 "{\"paid\":true}}';</script><p>" +
                 std::string(100, 'x');
             checkout.server.reply("/drops", RawServer::response("200 OK", page), false, 0.002);
             checkout.open("/drops");
             checkout.waitForPage();
         },
         Leaves::page, Row::Opens::inStory},
        {"AMinuteWithoutAnAnswer", "",
         [](HostileCheckout& checkout) {
             checkout.open("/never");
             checkout.waitForPanel(70);
         },
         Leaves::panel, Row::Opens::inStory, Row::Runs::atLength},
        {"AByteAMinute", "",
         [](HostileCheckout& checkout) {
             checkout.server.reply("/byte", RawServer::response("200 OK", "x"), false, 45);
             checkout.open("/byte");
             checkout.waitForPanel(70);
         },
         Leaves::panel, Row::Opens::inStory, Row::Runs::atLength},
    };
}

}  // namespace zorvik::tests
