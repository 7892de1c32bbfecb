#include <algorithm>
#include <map>
#include <tuple>
#include <utility>

#include "platform/headless/HeadlessPlatform.h"
#include "tests/contract/ContractTest.h"
#ifdef ZORVIK_RECORDED
#include "trace/Recording.h"
#endif

namespace zorvik::contract {

namespace {

using headless::ScriptedLoad;
using headless::ScriptedPage;

const std::string server = "http://shop.example";

std::optional<ScriptedLoad> answerLoad(const std::string& url) {
    using Ending = ScriptedLoad::Ending;
    const std::map<std::string, std::pair<Ending, std::vector<std::string>>> loads = {
        {server + "/plain", {}},
        {server + "/second", {}},
        {server + "/error-500", {}},
        {server + "/redirect-twice", {{}, {server + "/redirect-once", server + "/plain"}}},
        {server + "/redirect-upi", {{}, {"upi://pay?tr=1"}}},
        {server + "/no-content", {Ending::nothingToShow, {}}},
        {server + "/attachment", {Ending::nothingToShow, {}}},
        {server + "/closes-half-way", {Ending::failAfterCommit, {}}},
        {server + "/slow-forever", {Ending::hang, {}}},
        {server + "/slow-body", {Ending::hangAfterCommit, {}}},
    };
    const auto found = loads.find(url);
    if (found == loads.end()) return std::nullopt;  // fails before its commit, as the others must
    ScriptedLoad load;
    std::tie(load.ending, load.redirects) = found->second;
    return load;
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
        platform_.web().onEvaluate(
            [this](const auto& script) { return answerScript(platform_.web().page(), script); });
    }

    URL url(const std::string& path) override { return URL::parse(server + path).value(); }
    std::shared_ptr<UIViewController> presenter() override { return presenter_; }

    bool spinUntil(const std::function<bool()>& condition, double seconds) override {
        auto& scheduler = platform_.scheduler();
        const double end = scheduler.steadySeconds() + seconds;
        while (!condition()) {
            if (scheduler.runOneTurn()) continue;
            const double left = end - scheduler.steadySeconds();
            if (left <= 0) return false;
            scheduler.moveBy(std::min(scheduler.nextDelay().value_or(left), left));
        }
        return true;
    }

    void pagePosts(WKWebView& view, const std::string& name, const ScriptValue& body) override {
        pageOf(view).post(name, body);
    }
    void pageNavigates(WKWebView& view, const std::string& address) override {
        pageOf(view).navigate(address);
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

// Compiled once more with a recording under way, which must change nothing.
#ifdef ZORVIK_RECORDED
struct RecordedPort : HeadlessPort {
    trace::Recording recording;
};
using Port = RecordedPort;
#else
using Port = HeadlessPort;
#endif

std::unique_ptr<PortUnderTest> PortUnderTest::make() {
    return std::make_unique<Port>();
}

}  // namespace zorvik::contract
