#include <signal.h>

#include "platform/webkit/WKWebView.h"
#include "tests/desktop/DesktopTest.h"
#include "tests/desktop/ProcessTree.h"
#include "tests/support/RawServer.h"

// What only a real engine and a real network can do to a page; what every port does the same is
// in the contract.
namespace zorvik::tests {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

class Delegate : public WKNavigationDelegate, public WKScriptMessageHandler {
  public:
    std::vector<std::string> events;
    bool holdsQuestions = false;
    std::vector<DecisionHandler> questions;

    void webViewDecidePolicyFor(WKWebView&, const WKNavigationAction& action,
                                const DecisionHandler& decide) override {
        const std::string address = action.request.url->absoluteString();
        events.push_back("ask " + address.substr(std::min(address.find('/', 7), address.size())));
        if (holdsQuestions) {
            questions.push_back(decide);
        } else {
            decide(WKNavigationActionPolicy::allow);
        }
    }
    void webViewDidStartProvisionalNavigation(WKWebView&) override {}
    void webViewDidCommit(WKWebView&) override { events.push_back("commit"); }
    void webViewDidFinish(WKWebView&) override { events.push_back("finish"); }
    void webViewDidFail(WKWebView&, const Error& error) override {
        events.push_back("late: " + error.localizedDescription);
    }
    void webViewDidFailProvisionalNavigation(WKWebView&, const Error& error) override {
        events.push_back("early: " + error.localizedDescription);
    }
    void userContentControllerDidReceive(WKUserContentController&,
                                         const WKScriptMessage& message) override {
        events.push_back("message " + message.body.text);
    }
};

class WebPageTest : public DesktopTest {
  protected:
    explicit WebPageTest(bool keepsSparePage = false) : DesktopTest(keepsSparePage) {}

    void showPage() {
        WKWebViewConfiguration configuration;
        configuration.preferences.javaScriptCanOpenWindowsAutomatically = true;
        configuration.userContentController->add(std::weak_ptr<WKScriptMessageHandler>(delegate),
                                                 "message");
        page = makeOnMainThread<WKWebView>(Rect{0, 0, 400, 300}, configuration);
        page->setNavigationDelegate(delegate);
        screen->view()->addSubview(page);
        show(screen);
    }
    void load(const std::string& path, double timeout = 60) {
        delegate->events.clear();
        URLRequest request{*URL::parse(server.address(path))};
        request.timeoutInterval = timeout;
        page->load(request);
        EXPECT_TRUE(waitUntil([&] {
            return !delegate->events.empty() &&
                   testing::Matches(testing::AnyOf("finish", StartsWith("early"),
                                                   StartsWith("late")))(delegate->events.back());
        }));
    }
    Result<ScriptValue> evaluate(const std::string& script) {
        std::optional<Result<ScriptValue>> answer;
        page->evaluateJavaScript(script, [&](const auto& result) { answer = result; });
        EXPECT_TRUE(waitUntil([&] { return answer.has_value(); }));
        return answer.value_or(Result<ScriptValue>(Error{}));
    }

    RawServer server;
    const std::shared_ptr<Delegate> delegate = std::make_shared<Delegate>();
    std::shared_ptr<WKWebView> page;
};

TEST_F(WebPageTest, ANewWindowIsAskedForOnceAndNeverOpens) {
    showPage();
    server.replyPage("/page", "<a id=a target=_blank href=/link>link</a>");
    load("/page");
    for (const auto& [script, question] :
         {std::pair<std::string, std::string>{"window.open('/opened') === null", "ask /opened"},
          {"document.getElementById('a').click(); true", "ask /link"}}) {
        delegate->events.clear();
        const auto result = evaluate(script);
        EXPECT_EQ(result.value().text, "true");
        settle();
        EXPECT_THAT(delegate->events, ElementsAre(question));
    }
    EXPECT_EQ(page->url()->absoluteString(), server.address("/page"));
    EXPECT_EQ(server.requests().size(), 1u);
}

TEST_F(WebPageTest, ADroppedAnswerToARedirectIsNoFailure) {
    server.replyRedirect("/redirect", "/page");
    showPage();
    page->load({*URL::parse(server.address("/redirect"))});
    ASSERT_TRUE(waitUntil([&] { return !delegate->events.empty(); }));
    delegate->holdsQuestions = true;
    ASSERT_TRUE(waitUntil([&] { return !delegate->questions.empty(); }));
    delegate->questions.clear();
    settle();
    EXPECT_THAT(delegate->events, ElementsAre("ask /redirect", "ask /page"));
}

TEST_F(WebPageTest, AnswersThatAreNoPagesEndClearly) {
    const std::string binary = "Content-Type: application/x-unknown\r\n";
    server.reply("/file", {"HTTP/1.1 200 OK\r\n" + binary + "Content-Length: 2\r\n\r\nab"});
    server.reply("/attached",
                 {RawServer::response("200 OK", "<p>receipt",
                                      "Content-Disposition: attachment; filename=r.html\r\n")});
    server.reply("/protected", {RawServer::response("401 Unauthorized", "<p>Who?",
                                                    "WWW-Authenticate: Basic realm=x\r\n")});
    server.reply("/garbage", {"this is no HTTP\r\n\r\n"});
    showPage();
    const struct {
        const char* path;
        testing::Matcher<std::vector<std::string>> expected;
    } cases[] = {
        {"/file", ElementsAre("ask /file", StartsWith("early: "))},
        {"/attached", ElementsAre("ask /attached", "commit", "finish")},
        {"/protected", ElementsAre("ask /protected", "commit", "finish")},
        {"/garbage", ElementsAre("ask /garbage", StartsWith("early: "))},
    };
    for (const auto& row : cases) {
        load(row.path);
        settle(0.1);
        EXPECT_THAT(delegate->events, row.expected) << row.path;
    }
}

TEST_F(WebPageTest, AServerThatSpeaksNoTlsIsAnOrdinaryFailure) {
    showPage();
    const std::string address = server.address("/secret");
    page->load({*URL::parse("https" + address.substr(4))});
    ASSERT_TRUE(waitUntil([&] { return delegate->events.size() == 2; }));
    settle(0.1);
    EXPECT_THAT(delegate->events, ElementsAre(StartsWith("ask "), StartsWith("early: ")));
}

TEST_F(WebPageTest, ASlowLoadLivesAsLongAsItMoves) {
    const std::string head =
        "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Length: 3600\r\n\r\n";
    const std::string piece(600, ' ');
    server.reply("/slow", {head, RawServer::Afterwards::close, {6, piece}, 0.25});
    server.reply("/stalls", {head + piece, RawServer::Afterwards::holdOpen, {2, piece}, 0.25});
    showPage();
    load("/slow", 0.8);
    EXPECT_EQ(delegate->events.back(), "finish") << "1.5 seconds in all, but never 0.8 of nothing";
    load("/stalls", 0.8);
    EXPECT_EQ(delegate->events.back(), "late: The request timed out.");
    settle();
    EXPECT_EQ(delegate->events.back(), "late: The request timed out.") << "told once";
}

TEST_F(WebPageTest, AnyTextCrossesWhole) {
    showPage();
    server.replyPage("/page", "");
    load("/page");
    const struct {
        const char* script;
        std::string expected;
    } cases[] = {
        {"'a\\ud800b\\0c\\u2028\\\\\"'",
         "a\xEF\xBF\xBD"
         "b" +
             std::string(1, '\0') + "c\xE2\x80\xA8\\\""},
        {"'\xF0\x9F\x92\xB3'.repeat(50000).length + ''", "100000"},
        {"'\\b\\f\\n\\r\\t\\u0001\\u007f/'", "\b\f\n\r\t\x01\x7f/"},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(evaluate(row.script).value().text, row.expected) << row.script;
    }
    evaluate("window.webkit.messageHandlers.message.postMessage('x'.repeat(2000000)); 0");
    EXPECT_EQ(delegate->events.back().size(), std::string("message ").size() + 2'000'000);
    EXPECT_FALSE(evaluate("'\xFF'")) << "not UTF-8";
    EXPECT_FALSE(evaluate("const o = {}; o.o = o; o")) << "circular";
}

TEST_F(WebPageTest, APageThatIsGoneRunsNoMoreEvenWhileItsQuestionIsOpen) {
    showPage();
    server.replyPage("/page", "<script>setInterval(() => fetch('/tick'), 20)</script>");
    load("/page");
    ASSERT_TRUE(waitUntil([&] { return server.requests().size() > 5; }));
    delegate->holdsQuestions = true;
    page->evaluateJavaScript("location.href = '/next'; 0", {});
    ASSERT_TRUE(waitUntil([&] { return !delegate->questions.empty(); }));
    page->removeFromSuperview();
    page.reset();
    settle();
    const std::size_t before = server.requests().size();
    settle(1);
    EXPECT_EQ(server.requests().size(), before);
    delegate->questions[0](WKNavigationActionPolicy::allow);
    settle();
    EXPECT_EQ(server.requests().size(), before);
}

TEST_F(WebPageTest, CookiesAreSharedAmongPagesAndEndWithThePlatform) {
    server.reply("/set", {RawServer::response("200 OK", "", "Set-Cookie: a=1; Max-Age=999\r\n")});
    server.replyPage("/page", "");
    showPage();
    load("/set");
    page->removeFromSuperview();
    bool isGone = false;
    screen->dismiss(false, [&] { isGone = true; });
    ASSERT_TRUE(waitUntil([&] { return isGone; }));
    showPage();
    load("/page");
    EXPECT_THAT(server.requests().back(), HasSubstr("Cookie: a=1"));
    EXPECT_FALSE(
        std::filesystem::exists(std::string(std::getenv("XDG_DATA_HOME")) + "/zorvik-test"));
}

class SparePageTest : public WebPageTest {
  protected:
    SparePageTest() : SparePageTest(descendantsNamed("WebKitWebProcess")) {}

    // The web processes of this test alone: the engine lets go of earlier ones in its own time.
    std::vector<pid_t> processes() const {
        std::vector<pid_t> result = descendantsNamed("WebKitWebProcess");
        std::erase_if(result, [this](pid_t process) {
            return std::find(earlier_.begin(), earlier_.end(), process) != earlier_.end();
        });
        return result;
    }

  private:
    explicit SparePageTest(std::vector<pid_t> earlier)
        : WebPageTest(true), earlier_(std::move(earlier)) {}

    const std::vector<pid_t> earlier_;
};

TEST_F(SparePageTest, EachPageTakesTheProcessThatIsThereAndAKilledOneIsReplaced) {
    ASSERT_TRUE(waitUntil([&] { return processes().size() == 1; }));
    settle();
    const pid_t ahead = processes().at(0);
    server.replyPage("/page", "");
    const auto leavePage = [&] {
        page->removeFromSuperview();
        page.reset();
        bool isGone = false;
        screen->dismiss(false, [&] { isGone = true; });
        ASSERT_TRUE(waitUntil([&] { return isGone; }));
    };
    for (int round = 0; round < 2; ++round) {
        showPage();
        load("/page");
        EXPECT_THAT(delegate->events, ElementsAre("ask /page", "commit", "finish"));
        EXPECT_THAT(processes(), ElementsAre(ahead));
        leavePage();
        settle();
    }

    showPage();
    load("/page");
    kill(ahead, SIGKILL);
    ASSERT_TRUE(waitUntil([&] { return !page->url(); }));
    leavePage();
    showPage();
    load("/page");
    EXPECT_THAT(delegate->events, ElementsAre("ask /page", "commit", "finish"));
}

}  // namespace
}  // namespace zorvik::tests
