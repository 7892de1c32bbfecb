#include <algorithm>

#include "platform/webkit/WKWebView.h"
#include "tests/contract/ContractTest.h"
#include "tests/platform/desktop/DesktopPortTest.h"
#include "tests/support/RawServer.h"
#include "trace/Recording.h"

namespace zorvik::tests {
namespace {

using trace::Lane;

constexpr const char* hostile = "</script><img src=x onerror=document.title='run'>\u2028'\"";

// A recording is made of a page on a real port, and then opened in it.
class TracePageTest : public DesktopPortTest {
  protected:
    TracePageTest() : DesktopPortTest({.applicationId = "zorvik-test", .keepsSparePage = false}) {}

    void showPage() {
        WKWebViewConfiguration configuration;
        configuration.userContentController = std::make_shared<WKUserContentController>();
        configuration.userContentController->add(std::weak_ptr<WKScriptMessageHandler>(delegate),
                                                 "door");
        page = makeOnMainThread<WKWebView>(Rect{0, 0, 600, 800}, configuration);
        page->setNavigationDelegate(delegate);
        screen->view()->addSubview(page);
        show(screen);
    }
    void load(const std::string& address) {
        delegate->events.clear();
        page->load({*URL::parse(address)});
        ASSERT_TRUE(waitUntil([&] {
            return std::ranges::any_of(delegate->events,
                                       [](const auto& e) { return e.starts_with("finish "); });
        })) << address;
    }
    std::string evaluate(const std::string& script) {
        std::string answer;
        page->evaluateJavaScript(script, [&](const Result<ScriptValue>& result) {
            answer = result ? result.value().text : result.error().localizedDescription;
        });
        EXPECT_TRUE(waitUntil([&] { return !answer.empty(); })) << script;
        return answer;
    }

    RawServer server;
    const std::shared_ptr<contract::Recorder> delegate = std::make_shared<contract::Recorder>();
    std::shared_ptr<WKWebView> page;
};

TEST_F(TracePageTest, IsReadByLaneSearchAndKeyboardAndShowsWhatPagesSaidAsText) {
    const std::string folder = std::getenv("XDG_CACHE_HOME");
    const std::string file = folder + "/trace.html";
    server.replyPage("/page",
                     "<style>body{background:#c00}</style><script>window.webkit."
                     "messageHandlers.door.postMessage('knock')</script>");
    {
        trace::Recording recording;
        showPage();
        load(server.address("/page"));
        EXPECT_TRUE(askUntil([&] {
            return picture().at(300, 700) == Pixel{204, 0, 0};
        })) << "the port shows the engine's own page";
        recording.note(Lane::host, hostile, {{hostile, hostile}});
        recording.picture("red", folder + "/picture.png");
        ASSERT_TRUE(recording.writeHtml(file));
    }
    load("file://" + file);  // by a page that was made while the recording lasted

    EXPECT_EQ(evaluate("[...document.querySelectorAll('#lanes button')].map(b => "
                       "b.children[1].textContent).join()"),
              "Main queue,Host,Facade,Screen,Page,Core services,UPI app");
    const std::string shown = evaluate(
        "[...document.querySelectorAll('.card .title')].filter(t => "
        "t.offsetParent).map(t => t.textContent).join('\\n')");
    EXPECT_THAT(
        shown, testing::AllOf(testing::HasSubstr("is to load " + server.address("/page")),
                              testing::HasSubstr("says door: knock"), testing::HasSubstr(hostile)));
    EXPECT_EQ(evaluate("[document.title, document.querySelectorAll('img[src=x]').length, "
                       "performance.getEntriesByType('resource').filter(r => "
                       "!r.name.startsWith('data:')).length].join()"),
              "Recording of a checkout,0,0");

    const std::string chosen = "chosen ? chosen.title : 'nothing'";
    const struct {
        const char* keys;
        std::string script;
        std::string answer;
    } steps[] = {
        {"mousemove 100 12 click 1", chosen, "nothing"},
        {"key j key k key j key j", "items.indexOf(chosen)", "2"},
        {"key slash type KNOCK", "document.getElementById('found').textContent", "1 match"},
        {"key Return", chosen, "says door: knock"},
        {"key Escape key Escape", "query.value + document.activeElement.localName", "body"},
        {"key 5", "[...document.querySelectorAll('.lane-page.entry')].every(e => e.hidden)",
         "true"},
        {"key 5", "document.querySelectorAll('.lane-page.entry[hidden]').length", "0"},
        {"key End", chosen, "red"},
        {"key Return", "document.querySelector('dialog[open] img').naturalWidth > 0", "true"},
        {"key Escape", "document.querySelectorAll('dialog[open]').length", "0"},
        {"key Escape", chosen, "nothing"},
        {"key question", "document.querySelector('dialog[open] h2').textContent", "Keys"},
        {"key Escape", "document.querySelectorAll('dialog[open]').length", "0"},
    };
    for (const auto& step : steps) {
        xdotool(step.keys);
        std::string answer;
        EXPECT_TRUE(askUntil([&] { return (answer = evaluate(step.script)) == step.answer; }))
            << step.keys << ": " << answer << " instead of " << step.answer;
    }
    EXPECT_EQ(evaluate("choose(entries.find(e => e.kind === 'finished')); "
                       "[document.querySelectorAll('#arrows path').length, "
                       "document.querySelectorAll('.cause').length, "
                       "document.querySelector('.cause .title').textContent].join()"),
              "1,1,is to load " + server.address("/page"));
}

}  // namespace
}  // namespace zorvik::tests
