#include "trace/Recording.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <limits>
#include <optional>
#include <set>
#include <sstream>
#include <thread>
#include <utility>

#include "platform/foundation/Console.h"
#include "platform/foundation/JSONSerialization.h"
#include "platform/runtime/Environment.h"
#include "platform/webkit/WKWebView.h"
#include "testkit/CheckoutTestKit.h"
#include "tests/contract/ContractTest.h"

namespace zorvik::trace {
namespace {

using platform::Array;
using platform::Dictionary;
using platform::Value;
using platform::headless::HeadlessPlatform;
using testing::ElementsAre;
using testing::HasSubstr;
using testkit::CheckoutTestKit;
using testkit::UPIApp;
using testkit::UPIStatus;

// Tests run side by side.
std::string pageFile() {
    return testing::TempDir() + testing::UnitTest::GetInstance()->current_test_info()->name() +
           ".html";
}

std::string contentOf(const std::string& file) {
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
}

// The entries of a page, as a script in it reads them.
class Page {
  public:
    explicit Page(const Recording& recording) {
        const std::string file = pageFile();
        EXPECT_TRUE(recording.writeHtml(file)) << file;
        text = contentOf(file);
        const std::string begin = "id=\"recording\">";
        const std::size_t start = text.find(begin) + begin.size();
        const auto read = platform::JSONSerialization::jsonObject(
            text.substr(start, text.find('<', start) - start),
            platform::JSONSerialization::ReadingOptions::none);
        EXPECT_TRUE(read);
        for (const Value& entry : *read.value().dictionary()->at("entries").array())
            entries.push_back(*entry.dictionary());
        about = *read.value().dictionary()->at("about").dictionary();
    }

    static std::string textOf(const Dictionary& entry, const char* key) {
        return *entry.at(key).string();
    }
    // "lane kind: title"
    static std::string lineOf(const Dictionary& entry) {
        return textOf(entry, "lane") + " " + textOf(entry, "kind") + ": " + textOf(entry, "title");
    }
    const Dictionary* find(std::string_view part) const {
        for (const Dictionary& entry : entries)
            if (lineOf(entry).find(part) != std::string::npos) return &entry;
        return nullptr;
    }
    // From the entry whose line has this part back to what has no cause.
    std::vector<std::string> chain(std::string_view part) const {
        std::vector<std::string> lines;
        for (const Dictionary* entry = find(part); entry != nullptr;) {
            lines.push_back(lineOf(*entry));
            const auto cause = *entry->at("cause").integer();
            entry = nullptr;
            for (const Dictionary& other : entries)
                if (*other.at("id").integer() == cause) entry = &other;
        }
        return lines;
    }

    std::string text;
    std::vector<Dictionary> entries;
    Dictionary about;
};

void payAndReturnTwice(CheckoutTestKit& kit) {
    kit.openCheckout();
    kit.customerPicks(UPIApp::opens);
    kit.customerComesBackAfter(3);
    kit.customerPressesBack();
    kit.enquiryAnswers({{"payment_status", "SUCCESS"}});
    kit.upiAppReturns(UPIStatus::success);
    kit.pageCannotBeReached();
    kit.openCheckout();
    kit.pageCanBeReached();
    kit.customerPressesRetry();
    kit.page().showPanel({platform::ScriptPanel::Kind::confirm, "Leave?", std::nullopt});
    kit.settle();
    kit.windowCloses();
}

// Everything that a checkout does and a recording might change.
std::vector<std::string> transcriptOf(CheckoutTestKit& kit) {
    std::vector<std::string> lines = kit.consoleLines();
    for (const auto& event : kit.events())
        lines.push_back(event.name + platform::description(event.additionalData));
    for (const auto& response : kit.responses())
        lines.push_back(platform::description(response));
    for (const auto& message : kit.messagesToPage())
        lines.push_back(platform::description(message));
    for (const auto& url : kit.platform().application().openedUrls())
        lines.push_back(url);
    lines.push_back(std::to_string(kit.platform().scheduler().turnCount()) + " turns");
    lines.push_back(kit.platform().scheduler().describePending());
    return lines;
}

TEST(RecordingTest, ChangesNothingOfACheckout) {
    std::vector<std::string> without;
    {
        CheckoutTestKit kit;
        payAndReturnTwice(kit);
        without = transcriptOf(kit);
    }
    CheckoutTestKit kit;
    {
        const Recording recording;
        payAndReturnTwice(kit);
        EXPECT_EQ(transcriptOf(kit), without);
        std::set<std::string> kinds;
        for (const Dictionary& entry : Page(recording).entries)
            kinds.insert(Page::textOf(entry, "lane") + " " + Page::textOf(entry, "kind"));
        EXPECT_THAT(
            kinds,
            ElementsAre("coreServices answer", "coreServices call", "coreServices event",
                        "facade call", "host call", "mainQueue task", "mainQueue timer",
                        "mainQueue turn", "page committed", "page failed", "page finished",
                        "page load", "page message", "page panel", "page post", "page question",
                        "page script", "page scriptAnswer", "page started", "page stop",
                        "screen call", "screen console", "screen hidden", "screen hide",
                        "screen remove", "screen show", "screen shown", "screen write",
                        "upiApp active", "upiApp canOpen", "upiApp open", "upiApp opened"));
    }
    // And nothing is left of it in the way of the next checkout.
    EXPECT_EQ(&platform::Environment::scheduler(), &kit.platform().scheduler());
    EXPECT_EQ(&platform::Environment::stage(), &kit.platform().stage());
    kit.openCheckout();
    kit.customerPicks(UPIApp::opens);
    const std::size_t told = kit.messagesToPage().size();
    kit.customerComesBackAfter(3);
    EXPECT_EQ(kit.messagesToPage().size(), told + 1);
}

struct Shop : ZorvikCheckoutSDKDelegate {
    int told = 0;
    void onCheckoutResponse(const Dictionary&) override { ++told; }
};

TEST(RecordingTest, AnEffectLeadsBackToItsCause) {
    CheckoutTestKit kit;
    Recording recording;
    auto shop = std::make_shared<Shop>();
    const auto receiver = recording.delegate(shop);
    kit.sdk().setDelegate(receiver);
    kit.openCheckout();
    kit.customerPicks(UPIApp::opens);
    kit.customerComesBackAfter(2);
    kit.upiAppReturns(UPIStatus::success);
    const Page page(recording);
    EXPECT_THAT(
        page.chain("onCheckoutResponse"),
        ElementsAre("host call: onCheckoutResponse", "mainQueue turn: turn",
                    "coreServices answer: getTransactionEnquiry", "mainQueue task: background task",
                    "coreServices call: getTransactionEnquiry",
                    "page question: may it go to "
                    "testkit-return://upi?status=success&tr=transaction-1"));
    EXPECT_THAT(
        page.chain("page post"),
        ElementsAre(HasSubstr("upi_intent_back_response"), "mainQueue turn: turn",
                    "coreServices answer: getTransactionEnquiry", "mainQueue task: background task",
                    "coreServices call: getTransactionEnquiry", "mainQueue turn: turn",
                    "upiApp active: the customer is back", "upiApp open: opens: testkit-opens",
                    HasSubstr("page message: says openUpiIntent: {")));
    EXPECT_EQ(page.chain("remembers").at(1), "upiApp opened: came to the front");
    EXPECT_EQ(page.chain("JavaScript executed").at(1), "page scriptAnswer: script answers null");
    EXPECT_EQ(shop->told, 1);
    shop.reset();
    kit.openCheckout();
    kit.pageAnswersUnreadably();
    EXPECT_NE(Page(recording).find("nobody is left to be told"), nullptr);
}

TEST(RecordingTest, KeepsNoSecretAndNoMoreThanItsBounds) {
    const HeadlessPlatform port;
    const std::string token = CheckoutTestKit::orderToken();
    Recording recording;
    for (int i = 0; i < 20'001; ++i)
        recording.note(Lane::host, "note " + std::to_string(i));
    recording.note(Lane::host, token + " of asha@bank.example",
                   {{"+91 98765 43210", Array{token, 9876543210, Dictionary{{"to", token}}}},
                    {"bytes", std::string("\xff</script>")},
                    {"endless", std::numeric_limits<double>::infinity()},
                    {"long", std::string(3'998, 'x') + " " + token}});
    const Page page(recording);
    EXPECT_EQ(page.entries.size(), 20'000U);
    EXPECT_EQ(*page.about.at("dropped").integer(), 2);
    EXPECT_EQ(Page::textOf(page.entries.front(), "title"), "note 2");
    const Dictionary& last = page.entries.back();
    EXPECT_EQ(Page::textOf(last, "title"), "header… of a…@bank.example");
    Dictionary data = *last.at("data").dictionary();
    EXPECT_EQ(*std::exchange(data["long"], 0).string(),
              std::string(3'998, 'x') + " h… (8 bytes more)");
    EXPECT_EQ(platform::description(data),
              "[\"+91…\": [\"header…\", \"98…\", [\"to\": \"header…\"]], "
              "\"bytes\": \"\uFFFD</script>\", \"endless\": \"inf\", \"long\": 0]");
    EXPECT_EQ(page.text.find("</script>", page.text.find("id=\"recording\">")),
              page.text.rfind("]}</script>") + 2)
        << "nothing recorded ends the element";
}

TEST(RecordingTest, TellsOfAnswersThatComeLateOrNever) {
    HeadlessPlatform port;
    port.web().onLoad([](const std::string&) { return platform::headless::ScriptedLoad(); });
    const Recording recording;
    const auto view = platform::makeOnMainThread<platform::WKWebView>(
        platform::Rect{}, platform::WKWebViewConfiguration());
    const auto delegate = std::make_shared<contract::Recorder>();
    delegate->holdsQuestions = true;
    view->setNavigationDelegate(delegate);
    const auto ask = [&](const char* address) {
        view->load({*platform::URL::parse(address)});
        port.scheduler().settle();
    };
    ask("https://pay.example/late");
    port.scheduler().advanceBy(2);
    std::exchange(delegate->questions, {})[0](platform::WKNavigationActionPolicy::allow);
    port.scheduler().settle();
    const auto navigate = [&](const char* address) {
        port.web().page().navigate(address);
        port.scheduler().settle();
        delegate->questions.clear();
    };
    ask("https://pay.example/refused");
    std::exchange(delegate->questions, {})[0](platform::WKNavigationActionPolicy::cancel);
    navigate("https://pay.example/own");
    ask("https://pay.example/never");
    delegate->questions.clear();
    navigate("https://pay.example/other");
    const Page page(recording);
    const auto decision = [&](const char* question) {
        return Page::textOf(*page.find(question)->at("data").dictionary(), "decision");
    };
    EXPECT_EQ(decision("go to https://pay.example/late"), "allowed");
    EXPECT_EQ(decision("go to https://pay.example/never"), "never answered");
    EXPECT_EQ(*page.find("answers the page's question: allowed")->at("seconds").number(), 2.0);
    for (const char* own : {"go to https://pay.example/own", "go to https://pay.example/other"})
        EXPECT_THAT(page.chain(own), testing::SizeIs(1));
    EXPECT_THAT(
        page.chain("has loaded"),
        ElementsAre("page finished: has loaded", "page load: is to load https://pay.example/late"));
}

TEST(RecordingTest, LeavesTheConsoleToWhoeverHadIt) {
    const HeadlessPlatform port;
    std::vector<std::string> before;
    std::vector<std::string> after;
    platform::setConsoleSink([&](std::string_view line) { before.emplace_back(line); });
    for (const bool isTakenOver : {false, true}) {
        Recording recording;
        platform::printLine("recorded");
        if (isTakenOver) {
            platform::setConsoleSink([&](std::string_view line) { after.emplace_back(line); });
        }
        EXPECT_EQ(Page(recording).entries.size(), 1U);
    }
    platform::printLine("last");
    platform::setConsoleSink({});
    EXPECT_THAT(before, ElementsAre("recorded", "recorded"));
    EXPECT_THAT(after, ElementsAre("last"));
}

TEST(RecordingTest, OtherThreadsMayReportWhenItEnds) {
    HeadlessPlatform port(platform::headless::HeadlessScheduler::Background::threads);
    std::atomic<int> ran = 0;
    std::atomic<bool> isDone = false;
    platform::setConsoleSink([](std::string_view) {});
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 3; ++i) {
            threads.emplace_back([&] {
                while (!isDone) {
                    platform::printLine("line");
                    Step::event("event", {});
                    platform::Environment::runInBackground([&] { ++ran; });
                    std::this_thread::yield();
                }
            });
        }
        for (int round = 0; round < 15; ++round) {
            Recording recording;
            while (Page(recording).entries.size() < 20)
                port.scheduler().runUntilIdle();
        }
        isDone = true;
    }
    platform::setConsoleSink({});
    port.scheduler().settle();
    EXPECT_GT(ran, 15);
}

TEST(OnFailureTest, WritesThePageOnlyWhenTheTestFailed) {
    const std::string file = pageFile();
    for (const bool fails : {false, true}) {
        std::filesystem::remove(file);
        CheckoutTestKit kit;
        {
            const OnFailure trace(file, [&] { return fails; });
            kit.openCheckout();
            kit.pageAnswers({{"status", "FAILED"}});
        }
        EXPECT_EQ(std::filesystem::exists(file), fails);
    }
    EXPECT_THAT(contentOf(file), HasSubstr("\"onCheckoutResponse\""));
}

}  // namespace
}  // namespace zorvik::trace
