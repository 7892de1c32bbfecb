#include "platform/webkit/WKUIDelegate.h"
#include "platform/webkit/WKWebView.h"
#include "tests/contract/ContractTest.h"
#include "tests/platform/desktop/DesktopPortTest.h"
#include "tests/support/RawServer.h"

namespace zorvik::tests {
namespace {

// What this engine does only with some help of the port's.
class QtWebPageTest : public DesktopPortTest, public WKUIDelegate {
  protected:
    void showPage(bool allowsScripts = true) {
        WKWebViewConfiguration configuration;
        configuration.preferences.javaScriptCanOpenWindowsAutomatically = true;
        configuration.defaultWebpagePreferences.allowsContentJavaScript = allowsScripts;
        configuration.userContentController->add(std::weak_ptr<WKScriptMessageHandler>(delegate),
                                                 "message");
        page = makeOnMainThread<WKWebView>(Rect{0, 0, 400, 300}, configuration);
        page->setNavigationDelegate(delegate);
        page->setUIDelegate(panelDelegate);
        screen->view()->addSubview(page);
        show(screen);
    }
    void load(const std::string& path) {
        delegate->events.clear();
        page->load({*URL::parse(server.address(path))});
        ASSERT_TRUE(waitFor("finish " + path));
        delegate->events.clear();
    }
    bool waitFor(const std::string& event) {
        return waitUntil([&] { return std::ranges::count(delegate->events, event) > 0; });
    }
    std::string evaluate(const std::string& script) {
        std::optional<std::string> text;
        page->evaluateJavaScript(script, [&](const Result<ScriptValue>& result) {
            text = result.isSuccess() ? result.value().text
                                      : "error " + result.error().localizedDescription;
        });
        EXPECT_TRUE(waitUntil([&] { return text.has_value(); })) << script;
        return text.value_or("");
    }
    void inPage(const std::string& script) {
        page->evaluateJavaScript("setTimeout(() => { " + script + " }, 0);0", {});
    }
    long asked(const std::string& line) const {
        return std::ranges::count_if(server.requests(), [&](const std::string& request) {
            return request.starts_with(line + " ");
        });
    }

    void webViewRunJavaScriptAlertPanelWithMessage(WKWebView&, const std::string& message,
                                                   const std::function<void()>& done) override {
        panels.push_back("alert " + message);
        answers.push_back(done);
    }
    void webViewRunJavaScriptConfirmPanelWithMessage(
        WKWebView&, const std::string& message, const std::function<void(bool)>& done) override {
        panels.push_back("confirm " + message);
        answers.push_back([done] { done(true); });
    }
    void webViewRunJavaScriptTextInputPanelWithPrompt(
        WKWebView&, const std::string& message, const std::optional<std::string>& text,
        const std::function<void(const std::optional<std::string>&)>& done) override {
        panels.push_back("prompt " + message + " " + text.value_or("none"));
        answers.push_back([done, text] { done(text); });
    }

    RawServer server;
    const std::shared_ptr<contract::Recorder> delegate = std::make_shared<contract::Recorder>();
    std::shared_ptr<WKWebView> page;
    const std::shared_ptr<WKUIDelegate> panelDelegate{this, [](WKUIDelegate*) {}};
    std::vector<std::string> panels;
    std::vector<std::function<void()>> answers;
};

TEST_F(QtWebPageTest, PagesThatForbidEvaluationsAreEvaluatedAllTheSame) {
    server.reply("/strict", RawServer::response("200 OK", "<!doctype html><body>",
                                                "Content-Security-Policy: default-src 'self'\r\n"));
    showPage();
    load("/strict");
    const struct {
        std::string script;
        std::string expected;
    } cases[] = {
        {"window.runs = (window.runs || 0) + 1", "1"},
        {"'a\"b'", "a\"b"},
        {"({b: [1.5, null], a: true})", R"({"a":true,"b":[1.5,null]})"},
        {"null // said", "null"},
        {"throw new Error('boom')", "error Error: boom"},
        {"(", "error The script could not be run."},
        {"window.runs", "1"},
    };
    for (const auto& row : cases)
        EXPECT_EQ(evaluate(row.script), row.expected) << row.script;
    inPage("window.webkit.messageHandlers.message.postMessage({a: 1})");
    EXPECT_TRUE(waitFor("message object {\"a\":1}"));
    inPage("window.answer = prompt('why', 'so')");
    ASSERT_TRUE(waitUntil([&] { return !answers.empty(); }));
    answers[0]();
    EXPECT_EQ(evaluate("window.answer"), "so");
}

TEST_F(QtWebPageTest, WithoutScriptsOfItsOwnAPageIsStillEvaluated) {
    server.replyPage("/page", "<p id=p>text</p><script>p.textContent = 'changed'</script>");
    showPage(false);
    load("/page");
    EXPECT_EQ(evaluate("document.getElementById('p').textContent"), "text");
    EXPECT_EQ(evaluate("webkit.messageHandlers.message.postMessage('x'); 1"), "1");
    EXPECT_TRUE(waitFor("message string x"));
}

TEST_F(QtWebPageTest, MessagesComeFromTheFirstScriptAndFromFramesInOrderAndOfAnySize) {
    server.replyPage("/frame",
                     "<script>webkit.messageHandlers.message.postMessage('frame')</script>");
    server.replyPage("/page", R"(<script>const post = body =>
        webkit.messageHandlers.message.postMessage(body);
        post('first'); for (let i = 0; i < 1000; ++i) post(i); post('\ud800 end');
        post('x'.repeat(10000000)); console.debug('mine');</script><iframe src=/frame></iframe>)");
    showPage();
    page->load({*URL::parse(server.address("/page"))});
    ASSERT_TRUE(waitFor("message string frame"));
    std::vector<std::string> expected = {"message string first"};
    for (int i = 0; i < 1000; ++i)
        expected.push_back("message number " + std::to_string(i));
    expected.push_back("message string \xEF\xBF\xBD end");
    expected.push_back("message string " + std::string(10'000'000, 'x'));
    std::vector<std::string> messages;
    for (const auto& event : delegate->events)
        if (event.starts_with("message ") && event != "message string frame")
            messages.push_back(event);
    EXPECT_TRUE(messages == expected) << messages.size();
}

TEST_F(QtWebPageTest, PanelsWaitForTheirAnswerWhileTheMainLoopGoesOn) {
    server.replyPage("/page", "");
    showPage();
    load("/page");
    inPage("alert('a\xC3\xA9'); window.said = [confirm('c'), prompt('p', 'text'), prompt('q')];");
    for (std::size_t number = 0; number < 4; ++number) {
        ASSERT_TRUE(waitUntil([&] { return answers.size() == number + 1; }));
        settle(0.1);
        answers[number]();
    }
    EXPECT_EQ(evaluate("window.said"), R"([true,"text",null])");
    EXPECT_THAT(panels, testing::ElementsAre("alert a\xC3\xA9", "confirm c", "prompt p text",
                                             "prompt q none"));
    // One that is open as the page goes.
    inPage("confirm('last')");
    ASSERT_TRUE(waitUntil([&] { return answers.size() == 5; }));
    page->removeFromSuperview();
    page.reset();
    settle();
    answers[4]();
}

TEST_F(QtWebPageTest, WhatThePageStartsWaitsForALateAnswerAndAPostedFormDoesNot) {
    server.replyPage("/second", "second");
    server.reply("/hop", RawServer::response("302 Found", "", "Location: /second\r\n"));
    const std::string form =
        "const f = document.createElement('form'); f.method = 'POST'; f.action = '/second'; "
        "document.body.append(f); f.submit()";
    const std::string goes = "location.href = '/second'";
    const struct {
        const char* name;
        std::string script;
        int question;  // that is answered late, counted from 0
        bool isAllowed;
        std::string expected;
        long requests;  // of the page it goes to
    } cases[] = {
        {"allowed", goes, 0, true, "ask /second, start, commit /second, finish /second", 1},
        {"cancelled", goes, 0, false, "ask /second", 0},
        {"a redirect allowed", "location.href = '/hop'", 1, true,
         "ask /hop, start, ask /second, commit /second, finish /second", 1},
        {"a redirect cancelled", "location.href = '/hop'", 1, false, "ask /hop, start, ask /second",
         0},
        {"a posted form", form, 0, true, "ask /second", 0},
        {"an unknown scheme", "location.href = 'upi:x'", 0, true, "ask upi:x, start, fail early",
         0},
    };
    server.replyPage("/page", "page");
    showPage();
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        delegate->holdsQuestions = false;
        load("/page");
        delegate->questions.clear();
        delegate->holdsQuestions = true;
        const long before = asked("GET /second") + asked("POST /second");
        inPage(row.script);
        for (int number = 0; number <= row.question; ++number) {
            const auto count = static_cast<std::size_t>(number + 1);
            ASSERT_TRUE(waitUntil([&] { return delegate->questions.size() == count; }));
            if (number == row.question) settle();
            const bool isAllowed = number < row.question || row.isAllowed;
            delegate->questions.back()(isAllowed ? WKNavigationActionPolicy::allow
                                                 : WKNavigationActionPolicy::cancel);
        }
        waitUntil([&] { return contract::joined(delegate->events) == row.expected; });
        settle();
        EXPECT_EQ(contract::joined(delegate->events), row.expected);
        EXPECT_EQ(asked("GET /second") + asked("POST /second") - before, row.requests);
        EXPECT_EQ(evaluate("20 + 2"), "22");
    }
}

TEST_F(QtWebPageTest, APageThatRefusesANavigationWhileItLoadsStillFinishes) {
    server.reply("/late.png", "", false);
    server.replyPage("/page", "<script>location.href = 'upi:x'</script><img src=/late.png>");
    delegate->cancelled = "upi:x";
    showPage();
    page->load({*URL::parse(server.address("/page"))});
    EXPECT_TRUE(waitFor("finish /page")) << contract::joined(delegate->events);
    settle();
    EXPECT_EQ(std::ranges::count(delegate->events, "finish /page"), 1);
}

TEST_F(QtWebPageTest, WhatTheEngineWouldOpenByItselfStaysClosed) {
    server.replyPage("/page", R"(<input id=i type=color style="width:300px;height:200px">
        <script>window.opened = window.open('/other'); window.leaves = 0;
        addEventListener('beforeunload', e => { ++leaves; e.preventDefault(); e.returnValue = 'x' });
        </script>)");
    server.replyPage("/second", "");
    showPage();
    load("/page");
    EXPECT_EQ(evaluate("String(window.opened)"), "null");
    click(100, 100);
    settle();
    click(100, 290);  // as a window with a choice of colours would not let it
    EXPECT_EQ(evaluate("document.hasFocus()"), "true");
    page->load({*URL::parse(server.address("/second"))});
    EXPECT_TRUE(waitFor("finish /second")) << "a page cannot hold the customer back";
    EXPECT_TRUE(panels.empty());
}

}  // namespace
}  // namespace zorvik::tests
