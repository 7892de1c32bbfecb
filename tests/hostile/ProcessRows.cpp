#include <sys/resource.h>

#include <fstream>

#include ZORVIK_PORT_HEADER
#include "tests/hostile/HostileCheckout.h"

namespace zorvik::tests {
namespace {

using Story = std::function<void(HostileCheckout&)>;

constexpr auto plain = "<p>page";
const std::string endless = "for (;;) {}";

// The page hangs once it is shown; only a customer who clicks notices.
Story hangs(const Story& cause) {
    return [cause](HostileCheckout& checkout) {
        checkout.waitForPage();
        if (cause) cause(checkout);
        checkout.clickUntilPanel();
    };
}

Story handedOff(const Story& then) {
    return [then](HostileCheckout& checkout) {
        checkout.waitForPage();
        checkout.handOff();
        then(checkout);
    };
}

void killWeb(HostileCheckout& checkout) {
    checkout.kill(EngineProcess::web);
    checkout.waitForPanel();
}

void killNetwork(HostileCheckout& checkout) {
    checkout.kill(EngineProcess::network);
    checkout.settle(0.5);
}

// Resident, in megabytes.
double memoryOf(pid_t process) {
    double pages = 0, resident = 0;
    std::ifstream("/proc/" + std::to_string(process) + "/statm") >> pages >> resident;
    return resident * 4096 / 1e6;
}

// As a system out of memory would, long before this one is.
void killAtMegabytes(HostileCheckout& checkout, double limit) {
    EXPECT_TRUE(checkout.askUntil([&] {
        for (const pid_t process : engineProcesses(EngineProcess::web))
            if (memoryOf(process) > limit) return true;
        return checkout.isPanelShown();
    })) << "the page did not grow";
    killWeb(checkout);
}

}  // namespace

std::vector<Row> processRows() {
    const std::string shown = "onload = () => setTimeout(() => { ";
    const std::string eats =
        "<script>const all = []; " + shown +
        "for (;;) all.push(new Uint8Array(1 << 22).fill(1)); }, 100);</script>";
    std::vector<Row> rows{
        {"HangsInItsLoad", "<script>" + endless + "</script>",
         [](HostileCheckout& checkout) { checkout.settle(0.3); }, Leaves::nothing},
        {"HangsInItsLoadForAMinute", "<script>" + endless + "</script>",
         [](HostileCheckout& checkout) { checkout.waitForPanel(80); }, Leaves::panel,
         Row::Opens::before, Row::Runs::atLength},
        {"HangsOnceShown", "<script>" + shown + endless + "}, 100)</script>", hangs({}),
         Leaves::panel},
        {"HangsInAClick", "<script>onmousedown = () => { " + endless + " };</script>", hangs({}),
         Leaves::panel, Row::Opens::before, Row::Runs::atLength},
        {"HangsInTheTransferOfAMessage", R"(<script>
             const list = []; list.length = 4294967295; setTimeout(() => post(list), 100);</script>)",
         hangs({}), Leaves::panel, Row::Opens::before, Row::Runs::atLength},
        {"HangsInTheAppList",
         "<script>window.zorvik_web = { UPIIntentAvailable: () => { " + endless + " } };</script>",
         hangs({}), Leaves::panel, Row::Opens::before, Row::Runs::atLength},
        {"HangsInAMessageItGets",
         "<script>addEventListener('message', () => { " + endless + " });</script>",
         hangs([](HostileCheckout& checkout) { checkout.back(); }), Leaves::panel,
         Row::Opens::before, Row::Runs::atLength},
        {"HangsInAScriptItIsGiven",
         "<script>window.postMessage = () => { " + endless + " };</script>",
         hangs([](HostileCheckout& checkout) { checkout.back(); }), Leaves::panel},
        {"HangsAsItGoes",
         "<script>onbeforeunload = onpagehide = onunload = () => { " + endless + " };</script>",
         [](HostileCheckout& checkout) { checkout.waitForPage(); }},
        {"HangsInAWorker", R"(<script>
             for (let i = 0; i < 4; ++i) new Worker(URL.createObjectURL(new Blob(['for (;;) {}'])));
             </script>)",
         [](HostileCheckout& checkout) { checkout.waitForPage(); }},
        {"EatsMemory", eats, [](HostileCheckout& checkout) { killAtMegabytes(checkout, 500); },
         Leaves::panel},
        {"EatsMemoryUntilItsOwnLimit", eats,
         [](HostileCheckout& checkout) {
             checkout.waitForPage();
             for (const pid_t process : engineProcesses(EngineProcess::web)) {
                 const rlimit limit{2000u << 20, 2000u << 20};
                 EXPECT_EQ(prlimit(process, RLIMIT_DATA, &limit, nullptr), 0);
             }
             killAtMegabytes(checkout, 3000);
         },
         Leaves::panel, Row::Opens::before, Row::Runs::atLength},
        {"WebProcessEndsBeforeTheCheckout", plain,
         [](HostileCheckout& checkout) {
             checkout.kill(EngineProcess::web);
             checkout.settle(0.3);
             checkout.open();
             checkout.waitForPage();
         },
         Leaves::page, Row::Opens::inStory},
        {"WebProcessEndsAtTheStart", plain,
         [](HostileCheckout& checkout) {
             EXPECT_TRUE(
                 checkout.askUntil([] { return !engineProcesses(EngineProcess::web).empty(); }));
             checkout.settle(0.2);
             const auto processes = engineProcesses(EngineProcess::web);
             checkout.open();
             HostileCheckout::kill(processes);
             // The load is lost with it, or has not begun and takes another.
             checkout.waitForPageOrPanel();
             if (!checkout.isPanelShown()) killWeb(checkout);
         },
         Leaves::panel, Row::Opens::inStory},
        {"WebProcessEndsBeforeTheAnswer", "",
         [](HostileCheckout& checkout) {
             checkout.open("/never");
             checkout.waitForRequest("/never");
             killWeb(checkout);
         },
         Leaves::panel, Row::Opens::inStory},
        {"WebProcessEndsHalfWay", "<p>half<img src=/never>",
         [](HostileCheckout& checkout) {
             checkout.waitForRequest("/never");
             killWeb(checkout);
         },
         Leaves::panel},
        {"WebProcessEndsUnderAnIdlePage", plain,
         [](HostileCheckout& checkout) {
             checkout.waitForPage();
             killWeb(checkout);
             checkout.back();  // finds no page
             EXPECT_EQ(checkout.server.requests().size(), 1u) << "nothing is loaded by itself";
         },
         Leaves::panel},
        {"WebProcessEndsInAnEvaluation",
         "<script>window.postMessage = () => { fetch('/in'); " + endless + " };</script>",
         [](HostileCheckout& checkout) {
             checkout.waitForPage();
             checkout.back();
             checkout.settle(0.3);
             killWeb(checkout);
             checkout.waitForLine("[BACK HANDLER] 📱 Handling device back pressed");
         },
         Leaves::panel},
        {"WebProcessEndsInAPanel", "<script>" + shown + "for (;;) alert('a'); }, 0)</script>",
         [](HostileCheckout& checkout) {
             checkout.waitForLine("[WEBVIEW] Alert: a", 100);
             killWeb(checkout);
         },
         Leaves::panel},
        {"WebProcessEndsWhileAnAppIsOpen", plain, handedOff([](HostileCheckout& checkout) {
             killWeb(checkout);
             checkout.becomeActive();
             checkout.waitForLine("[UPI BACK] ✅ Transaction enquiry successful");
         }),
         Leaves::panel},
    };
    if (!hasNetworkProcess) return rows;
    rows.insert(
        rows.end(),
        {
            {"NetworkProcessEndsBeforeTheAnswer", "",
             [](HostileCheckout& checkout) {
                 checkout.open("/never");
                 checkout.waitForRequest("/never");
                 checkout.kill(EngineProcess::network);
                 checkout.waitForPanel();
             },
             Leaves::panel, Row::Opens::inStory},
            {"NetworkProcessEndsHalfWay", "<p>half<img src=/never>",
             [](HostileCheckout& checkout) {
                 checkout.waitForRequest("/never");
                 killNetwork(checkout);
             }},
            {"NetworkProcessEndsUnderAnIdlePage", plain,
             [](HostileCheckout& checkout) {
                 checkout.waitForPage();
                 killNetwork(checkout);
             }},
            {"NetworkProcessEndsWhileAnAppIsOpen", plain, handedOff([](HostileCheckout& checkout) {
                 killNetwork(checkout);
                 checkout.becomeActive();
                 checkout.waitForValue(
                     "heard",
                     R"({"transaction_enquiry_api_response":"PENDING","upi_intent_back_response":"close"})");
             })},
        });
    return rows;
}

}  // namespace zorvik::tests
