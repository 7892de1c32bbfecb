#include <signal.h>

#include <filesystem>
#include <thread>

#include "platform/webkit/WKWebView.h"
#include "tests/contract/ContractTest.h"
#include "tests/platform/desktop/DesktopPortTest.h"
#include "tests/support/RawServer.h"

namespace zorvik::tests {
namespace {

using testing::ElementsAre;

class WebPageTest : public DesktopPortTest {
  protected:
    explicit WebPageTest(const PlatformOptions& options = {.applicationId = "zorvik-test",
                                                           .keepsSparePage = false,
                                                           .hungPageSeconds = 2})
        : DesktopPortTest(options) {
        server.replyPage("/page", "<a id=a target=_blank href=/link>link</a>");
    }

    void showPage() {
        WKWebViewConfiguration configuration;
        configuration.preferences.javaScriptCanOpenWindowsAutomatically = true;
        page = makeOnMainThread<WKWebView>(Rect{0, 0, 400, 300}, configuration);
        page->setNavigationDelegate(delegate);
        screen->view()->addSubview(page);
        show(screen);
    }
    void leavePage() {
        page->removeFromSuperview();
        page.reset();
        dismiss(screen);
    }
    // How a load ended.
    std::string load(const std::string& address) {
        delegate->events.clear();
        page->load({*URL::parse(address)});
        waitUntil([&] {
            return !delegate->events.empty() && (delegate->events.back().starts_with("finish ") ||
                                                 delegate->events.back() == "fail early");
        });
        return delegate->events.empty() ? "nothing" : delegate->events.back();
    }

    const std::string pdf = "HTTP/1.1 200 OK\r\nContent-Type: application/pdf\r\n\r\n%PDF-1.4\n";
    RawServer server;
    const std::shared_ptr<contract::Recorder> delegate = std::make_shared<contract::Recorder>();
    std::shared_ptr<WKWebView> page;
};

TEST_F(WebPageTest, ANewWindowIsAskedForOnceAndNeverOpens) {
    showPage();
    load(server.address("/page"));
    for (const auto& [script, question] :
         {std::pair<std::string, std::string>{"window.open('/opened')", "ask /opened"},
          {"document.getElementById('a').click()", "ask /link"}}) {
        delegate->events.clear();
        page->evaluateJavaScript(script, {});
        waitUntil([&] { return !delegate->events.empty(); });
        settle();
        EXPECT_THAT(delegate->events, ElementsAre(question));
    }
    EXPECT_EQ(page->url()->absoluteString(), server.address("/page"));
    EXPECT_EQ(server.requests().size(), 1u);
}

TEST_F(WebPageTest, WhatAServerMaySendInsteadOfAPageEndsClearly) {
    server.reply("/protected", RawServer::response("401 Unauthorized", "<p>Who?",
                                                   "WWW-Authenticate: Basic realm=x\r\n"));
    server.reply("/garbage", "this is no HTTP\r\n\r\n");
    server.reply("/document", pdf);
    showPage();
    const struct {
        const char* name;
        std::string address;
        std::string end;
    } cases[] = {
        {"a question for a password", server.address("/protected"), "finish /protected"},
        {"no HTTP", server.address("/garbage"), "fail early"},
        {"a PDF document", server.address("/document"), "fail early"},
        {"no TLS", "https" + server.address("/secret").substr(4), "fail early"},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(load(row.address), row.end) << row.name;
    }
}

TEST_F(WebPageTest, WhatCannotBeShownAndWhatIsDroppedLeaveThePageAlone) {
    server.reply("/document", pdf);
    showPage();
    const auto source =
        makeOnMainThread<WKWebView>(Rect{0, 400, 400, 300}, WKWebViewConfiguration());
    screen->view()->addSubview(source);
    server.replyPage("/source", "<a href=/dropped style='font-size:90px'>drag</a>");
    source->load({*URL::parse(server.address("/source"))});
    load(server.address("/page"));
    for (const std::string script :
         {"location.href = '/document'",
          "location.href = URL.createObjectURL(new Blob(['x'], {type: 'application/zip'}))"}) {
        delegate->events.clear();
        page->evaluateJavaScript("setTimeout(() => { " + script + " }, 0);0", {});
        ASSERT_TRUE(waitUntil([&] { return delegate->events.size() >= 2; })) << script;
        settle();
        EXPECT_THAT(delegate->events, ElementsAre(testing::StartsWith("ask "), "start")) << script;
    }
    delegate->events.clear();
    for (const char* step :
         {"mousemove 100 460", "mousedown 1", "mousemove 110 440", "mousemove 120 400",
          "mousemove 130 200", "mousemove 131 190", "mousemove 132 180", "mouseup 1"}) {
        xdotool(step);
    }
    EXPECT_THAT(delegate->events, ElementsAre());
    EXPECT_EQ(page->url()->absoluteString(), server.address("/page"));
}

TEST_F(WebPageTest, TheMenuHasTheEditingItemsAlone) {
    server.replyPage("/form",
                     R"(<style>* { font-size: 40px }</style><input id=card value=4111><p>text
        <script>window.keys = ''; onkeydown = event => { keys += event.key; }</script>)");
    showPage();
    load(server.address("/form"));
    const auto value = [&](const std::string& script) {
        std::optional<std::string> text;
        page->evaluateJavaScript(script, [&](const auto& result) { text = result.value().text; });
        waitUntil([&] { return text.has_value(); });
        return *text;
    };
    const auto choose = [&](int index) {
        xdotool("mousemove_relative 40 " + std::to_string(downToMenuItem(index)) +
                " sleep 0.1 click 1");
    };
    xdotool("mousemove 50 40 sleep 0.1 click --repeat 2 1 sleep 0.1 click 3");
    choose(0);
    EXPECT_EQ(value("card.value"), "") << "cut";
    xdotool("mousemove 50 40 sleep 0.1 click 3");
    choose(2);
    EXPECT_EQ(value("card.value"), "4111") << "pasted";
    // Over plain text there is no menu to take the keys.
    value("keys = ''");
    xdotool("mousemove 50 140 sleep 0.1 click 3 sleep 0.3 key x");
    EXPECT_EQ(value("keys"), "x");
}

TEST_F(WebPageTest, AProcessThatDoesNotAnswerEndsAndTheSamePageLoadsAgain) {
    const std::string hangs = "<script>setTimeout(() => { for (;;); }, 300)</script>";
    server.replyPage("/hangs", hangs);
    server.replyPage("/hangs-loading", hangs + "<img src=/slow>");
    server.reply("/slow", "", true);
    showPage();
    const struct {
        std::string path;
        double timeout;
        std::string expected;
    } cases[] = {
        {"/hangs-loading", 0.6,
         "ask /hangs-loading, start, commit /hangs-loading, fail late, fail early"},
        {"/hangs", 60, "ask /hangs, start, commit /hangs, finish /hangs, fail early"},
    };
    for (const auto& row : cases) {
        delegate->events.clear();
        URLRequest request{*URL::parse(server.address(row.path))};
        request.timeoutInterval = row.timeout;
        page->load(request);
        const auto hasEnded = [&] { return contract::joined(delegate->events) == row.expected; };
        // Where no load is under way, only the customer notices.
        for (int clicks = 0; row.timeout == 60 && clicks < 20 && !hasEnded(); ++clicks)
            click(100, 100);
        waitUntil(hasEnded);
        EXPECT_EQ(contract::joined(delegate->events), row.expected);
        EXPECT_EQ(load(server.address("/page")), "finish /page");
    }
}

class SparePageTest : public WebPageTest {
  protected:
    SparePageTest() : SparePageTest(webProcesses()) {}

    // The web processes of this test alone: the engine lets go of earlier ones in its own time.
    std::vector<pid_t> processes() const {
        std::vector<pid_t> result = webProcesses();
        std::erase_if(result, [this](pid_t process) {
            return std::ranges::find(earlier_, process) != earlier_.end();
        });
        return result;
    }

  private:
    explicit SparePageTest(std::vector<pid_t> earlier)
        : WebPageTest({.applicationId = "zorvik-test"}), earlier_(std::move(earlier)) {}

    const std::vector<pid_t> earlier_;
};

TEST_F(SparePageTest, EachPageTakesTheProcessThatIsThereAndAKilledOneIsReplaced) {
    settle();  // one that an earlier test was starting may still come and go
    pid_t past = 0;
    for (int round = 0; round < 5; ++round) {
        std::vector<pid_t> ahead;
        ASSERT_TRUE(askUntil([&] {
            ahead = processes();
            return ahead.size() == 1 && (handsProcessesOn || ahead.at(0) != past);
        }));
        if (handsProcessesOn && (round == 1 || round == 2)) {
            EXPECT_EQ(ahead.at(0), past);
        }
        past = ahead.at(0);
        showPage();
        EXPECT_EQ(load(server.address("/page")), "finish /page");
        if (round < 3) {
            EXPECT_EQ(processes(), ahead);
        }
        if (round == 2) {
            kill(past, SIGKILL);
            ASSERT_TRUE(waitUntil([&] { return !page->url(); }));
        }
        leavePage();
        settle();
        if (round == 3) {  // the one kept for the next page
            past = processes().at(0);
            kill(past, SIGKILL);
            EXPECT_TRUE(askUntil([&] { return processes() != std::vector{past}; }));
        }
    }
}

TEST_F(SparePageTest, AProcessThatDiedUnnoticedCostsTheNextPageNothing) {
    settle();
    ASSERT_TRUE(askUntil([&] { return processes().size() == 1; }));
    settle();
    kill(processes().at(0), SIGKILL);
    // No turn of the main loop: the port cannot have heard of it.
    for (int waited = 0; !processes().empty() && waited < 500; ++waited)
        usleep(10'000);
    ASSERT_THAT(processes(), testing::IsEmpty());
    page = makeOnMainThread<WKWebView>(Rect{0, 0, 400, 300}, WKWebViewConfiguration{});
    page->setNavigationDelegate(delegate);
    EXPECT_EQ(load(server.address("/page")), "finish /page");
    EXPECT_EQ(std::ranges::count(delegate->events, "ask /page"), 1);
    // From then on its process is its own, and the end of it is told.
    kill(processes().at(0), SIGKILL);
    ASSERT_TRUE(waitUntil([&] { return delegate->events.back() == "fail early"; }));
}

TEST_F(SparePageTest, AHungPageEndsWithItsProcessAndNeverHoldsUpTheNext) {
    const struct {
        const char* name;
        std::string script;
        double pause;  // until the next page is opened
    } cases[] = {
        {"after its load", "setTimeout(() => fetch('/hung').then(() => { for (;;); }), 0)", 0},
        {"in its load",
         "const r = new XMLHttpRequest(); r.open('GET', '/hung', false); r.send(); for (;;);", 0},
        {"as it goes", "onpagehide = () => { for (;;); }; fetch('/hung')", 0.3},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        ASSERT_TRUE(askUntil([&] { return processes().size() == 1; }));
        const pid_t hung = processes().at(0);
        server.replyPage("/hangs", "<script>" + row.script + "</script>");
        const auto before = server.requests().size();
        showPage();
        page->load({*URL::parse(server.address("/hangs"))});
        ASSERT_TRUE(waitUntil([&] { return server.requests().size() == before + 2; }));
        settle(0.1);
        leavePage();
        settle(row.pause);
        showPage();
        EXPECT_EQ(load(server.address("/page")), "finish /page");
        EXPECT_TRUE(askUntil([&] { return std::ranges::count(processes(), hung) == 0; }));
        leavePage();
    }
}

// What each of three pages, one after another, sees of those before it: its cookie, its stored
// entry, and whether the server is asked for its file again. The third belongs to a new platform.
std::vector<std::string> seenByPages(desktop::PageData data) {
    RawServer server;
    server.reply("/file", RawServer::response("200 OK", "", "Cache-Control: max-age=999\r\n"));
    server.replyPage("/page", R"(<script src=/file></script><script>
        fetch('/saw?' + document.cookie + '&' + localStorage.getItem('entry'));
        document.cookie = 'cookie=1; max-age=999'; localStorage.setItem('entry', 2);</script>)");
    const auto isFor = [](const std::string& path) {
        return [start = "GET " + path](const std::string& request) {
            return request.starts_with(start);
        };
    };
    std::vector<std::string> seen;
    const std::string folder = std::string(std::getenv("XDG_DATA_HOME")) + "/page-data/pages";
    for (const int pages : {2, 1}) {
        if (pages == 1 && data == desktop::PageData::onDisk) {
            const auto between = Platform::make({.applicationId = "zorvik-test"});
            EXPECT_TRUE(askUntil(*between, [&] { return hasWrittenCookies(folder); }));
        }
        const auto platform = Platform::make({.applicationId = "page-data", .pageData = data});
        for (int number = 0; number < pages; ++number) {
            const auto page = makeOnMainThread<WKWebView>(Rect{}, WKWebViewConfiguration());
            const auto before = std::ssize(server.requests());
            std::vector<std::string> requests;
            page->load({*URL::parse(server.address("/page"))});
            EXPECT_TRUE(platform->runUntil(
                [&] {
                    requests = server.requests();
                    requests.erase(requests.begin(), requests.begin() + before);
                    return std::ranges::any_of(requests, isFor("/saw"));
                },
                10));
            const bool fetches = std::ranges::any_of(requests, isFor("/file"));
            const std::string text = requests.back().substr(9);
            seen.push_back(text.substr(0, text.find(' ')) + (fetches ? " fetched" : " cached"));
            // The next page finds a spare view there.
            platform->runUntil([] { return false; }, 0.3);
        }
    }
    return seen;
}

TEST(PageDataTest, APageFindsOfEarlierOnesWhatTheHostChose) {
    using desktop::PageData, testing::StartsWith;
    const std::string none = "&null fetched";
    const auto all = StartsWith("cookie=1&2 ");  // the engine may drop a file at any time
    EXPECT_THAT(seenByPages(PageData::freshForEachPage), ElementsAre(none, none, none));
    EXPECT_THAT(seenByPages(PageData::inMemory), ElementsAre(none, all, none));
    EXPECT_FALSE(std::filesystem::exists(std::string(std::getenv("XDG_DATA_HOME")) + "/page-data"));
    EXPECT_THAT(seenByPages(PageData::onDisk), ElementsAre(none, all, all));
}

// A view with a load and a hung script under way that somebody holds past the platform's end.
std::shared_ptr<WKWebView> viewPastThePlatform() {
    RawServer server;
    server.reply("/slow",
                 "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\n\r\n<p>" + std::string(2000, '-'),
                 true);
    const auto platform = Platform::make({.applicationId = "zorvik-test"});
    const auto delegate = std::make_shared<contract::Recorder>();
    auto view = makeOnMainThread<WKWebView>(Rect{}, WKWebViewConfiguration());
    view->setNavigationDelegate(delegate);
    view->load({*URL::parse(server.address("/slow"))});
    EXPECT_TRUE(platform->runUntil([&] { return delegate->events.size() == 3; }, 20));
    // Another one, held by its own script alone.
    const auto other = makeOnMainThread<WKWebView>(Rect{}, WKWebViewConfiguration());
    for (const auto& each : {view, other}) {
        each->evaluateJavaScript("for (;;);",
                                 [each](const auto&) { FAIL() << "nobody is left to hear of it"; });
    }
    return view;
}

TEST(PagePastThePlatformTest, ItsProcessEndsAndAnyThreadMayUseItLast) {
    const auto earlier = webProcesses().size();
    const auto useLast = [](std::shared_ptr<WKWebView> view) {
        view->stopLoading();
        view->configuration().userContentController->removeAllUserScripts();
        EXPECT_EQ(view->url(), std::nullopt);
        EXPECT_EQ(view.use_count(), 1);
    };
    for (const bool isOnOtherThread : {false, true}) {
        auto view = viewPastThePlatform();
        {
            const auto next =
                Platform::make({.applicationId = "zorvik-test", .keepsSparePage = false});
            EXPECT_TRUE(askUntil(*next, [&] { return webProcesses().size() <= earlier; }));
        }
        if (isOnOtherThread) {
            std::thread(useLast, std::move(view)).join();
        } else {
            useLast(std::move(view));
        }
    }
}

}  // namespace
}  // namespace zorvik::tests
