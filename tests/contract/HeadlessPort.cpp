#include <map>
#include <utility>

#include "platform/headless/HeadlessPlatform.h"
#include "tests/contract/PortUnderTest.h"

namespace zorvik::contract {

namespace {

using headless::ScriptedLoad;
using headless::ScriptedPage;
using Type = ScriptValue::Type;

const std::string server = "http://shop.example";
const std::string nobody = "http://nobody.example";

std::optional<ScriptedLoad> answerLoad(const std::string& url) {
    using Ending = ScriptedLoad::Ending;
    const auto ending = [](Ending how) {
        ScriptedLoad load;
        load.ending = how;
        return load;
    };
    const auto redirect = [](std::vector<std::string> targets) {
        ScriptedLoad load;
        load.redirects = std::move(targets);
        return load;
    };
    const std::map<std::string, ScriptedLoad> loads = {
        {server + "/plain", {}},
        {server + "/second", {}},
        {server + "/third", {}},
        {server + "/error-500", {}},
        {server + "/redirect-twice", redirect({server + "/redirect-once", server + "/plain"})},
        {server + "/redirect-upi", redirect({"upi://pay?tr=1"})},
        {nobody + "/refused", ending(Ending::failBeforeCommit)},
        {server + "/closes-before-headers", ending(Ending::failBeforeCommit)},
        {server + "/no-content", ending(Ending::failBeforeCommit)},
        {server + "/closes-half-way", ending(Ending::failAfterCommit)},
        {server + "/slow-forever", ending(Ending::hang)},
        {server + "/slow-body", ending(Ending::hangAfterCommit)},
    };
    const auto found = loads.find(url);
    return found == loads.end() ? std::nullopt : std::optional(found->second);
}

// What the real engine answers to the scripts of the contract.
Result<ScriptValue> answerScript(ScriptedPage& page, const std::string& script) {
    const std::map<std::string, ScriptValue> values = {
        {"'text \xF0\x9F\x92\xB3'", {Type::string, "text \xF0\x9F\x92\xB3"}},
        {"20 + 2", {Type::number, "22"}},
        {"1 === 2", {Type::boolean, "false"}},
        {"null", {}},
        {"undefined", {}},
        {"[1, 'two']", {Type::array, R"([1,"two"])"}},
        {"({a: 1})", {Type::object, R"({"a":1})"}},
        {"window.webkit.messageHandlers.message.postMessage('first');0", {Type::number, "0"}},
    };
    const auto found = values.find(script);
    if (found == values.end()) return Error{"headless", 1, "A JavaScript exception occurred"};
    if (found->second.text == "0") page.post("message", {Type::string, "first"});
    return found->second;
}

class HeadlessPort : public PortUnderTest {
  public:
    HeadlessPort() {
        presenter_->setShownByStage(true);
        platform_.web().onLoad(answerLoad);
        platform_.web().onEvaluate([this](const std::string& script) {
            return answerScript(platform_.web().page(), script);
        });
    }

    URL url(const std::string& path) override {
        return URL::parse((path == "/refused" ? nobody : server) + path).value();
    }
    std::shared_ptr<UIViewController> presenter() override { return presenter_; }

    bool spinUntil(const std::function<bool()>& condition, double seconds) override {
        auto& scheduler = platform_.scheduler();
        const double end = scheduler.steadySeconds() + seconds;
        while (!condition()) {
            if (scheduler.runOneTurn()) continue;
            const double now = scheduler.steadySeconds();
            const double delay = scheduler.nextDelay().value_or(seconds);
            if (now + delay > end) {
                scheduler.advanceBy(end - now);
                return condition();
            }
            scheduler.advanceBy(delay);
        }
        return true;
    }

    void pagePosts(WKWebView& view, const std::string& name, const ScriptValue& body) override {
        pageOf(view).post(name, body);
    }
    void pageShowsPanel(WKWebView& view, const ScriptPanel& panel) override {
        ScriptedPage& page = pageOf(view);
        page.showPanel(panel, [&page, kind = panel.kind](const ScriptPanelAnswer& answer) {
            ScriptValue posted;
            if (kind == ScriptPanel::Kind::confirm) {
                posted = {Type::boolean, answer.confirmed ? "true" : "false"};
            } else if (kind == ScriptPanel::Kind::prompt && answer.text) {
                posted = {Type::string, *answer.text};
            }
            page.post("answer", posted);
        });
    }
    void pageNavigates(WKWebView& view, const std::string& address) override {
        pageOf(view).navigate(address);
    }
    void pageChangesFragment(WKWebView& view, const std::string& fragment) override {
        const std::string address = view.url().value().absoluteString();
        pageOf(view).navigate(address.substr(0, address.find('#')) + "#" + fragment);
    }
    void pageAddsFrame(WKWebView& view, const std::string& address) override {
        pageOf(view).navigateSubframe(address);
    }
    void killWebProcess(WKWebView& view) override { pageOf(view).killWebProcess(); }

  private:
    static ScriptedPage& pageOf(WKWebView& view) { return static_cast<ScriptedPage&>(view.page()); }

    headless::HeadlessPlatform platform_;
    const std::shared_ptr<UIViewController> presenter_ = makeOnMainThread<UIViewController>();
};

}  // namespace

std::unique_ptr<PortUnderTest> PortUnderTest::make() {
    return std::make_unique<HeadlessPort>();
}

}  // namespace zorvik::contract
