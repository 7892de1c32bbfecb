#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <memory>

#include "platform/foundation/Console.h"
#include "platform/foundation/Data.h"
#include "platform/headless/HeadlessPlatform.h"
#include "platform/uikit/UILabel.h"
#include "platform/uikit/UIViewController.h"
#include "platform/webkit/WKWebView.h"
#include "tests/component/ScriptedCore.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutSDK.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutWebView.h"

namespace zorvik {

using Apps = std::vector<UPIAppsVO>;
using Screen = std::shared_ptr<ZorvikCheckoutWebView>;
using Policy = platform::WKNavigationActionPolicy;
using platform::Date, platform::DefaultsValue, platform::Rect, platform::ScriptValue;
using platform::WKWebView, platform::headless::ScriptedLoad;
using testing::Contains, testing::Each, testing::ElementsAre, testing::HasSubstr;
using testing::IsEmpty, testing::SizeIs, testing::StartsWith;

// A host, and a receiver of a screen's outcome.
struct Receiver : ZorvikCheckoutSDKDelegate, ZorvikCheckoutWebViewDelegate {
    std::string name = "host";

    void onCheckoutResponse(const Dictionary& data) override { hear(name, data); }
    void zorvikCheckoutWebViewDidSucceed(const Screen&, const Dictionary& payload) override {
        hear("success", payload);
    }
    void zorvikCheckoutWebViewDidFail(const Screen&, const Dictionary& payload) override {
        hear("failure", payload);
    }
    static void hear(const std::string& word, const Dictionary& data) {
        ScriptedCore::current->transcript.add(word + ' ' + description(data));
    }
};

inline std::string urlSafeBase64(const std::string& bytes) {
    std::string text = platform::base64Encode(bytes);
    std::replace(text.begin(), text.end(), '+', '-');
    std::replace(text.begin(), text.end(), '/', '_');
    return text;
}
// header.<claims in base64 without padding>.signature
inline std::string tokenOf(const std::string& claims) {
    const std::string segment = platform::base64Encode(claims);
    return "header." + segment.substr(0, segment.find('=')) + ".signature";
}
inline ZorvikCheckoutOptions optionsOf(const std::optional<std::string>& token) {
    return {token, std::nullopt, std::nullopt, std::nullopt, std::nullopt};
}
inline platform::Error someError(const std::string& description) {
    return {"test", 5, description};
}
inline ScriptValue stringBody(const std::string& text) {
    return {ScriptValue::Type::string, text};
}
template <class View>
std::shared_ptr<View> findView(const platform::UIView& root) {
    for (const auto& subview : root.subviews()) {
        if (auto view = std::dynamic_pointer_cast<View>(subview)) return view;
        if (auto view = findView<View>(*subview)) return view;
    }
    return nullptr;
}

// The headless port, scripted core services, a host, and a presenter whose window is shown. Pages
// load and scripts succeed unless a test says otherwise. The transcript holds the console's lines
// as they are and, with a word before each, "call"s and "event"s of the core services, "load"s of
// the page and "script"s it runs, what the "host" got and a screen's "success" or "failure".
class CheckoutTest : public testing::Test {
  protected:
    static constexpr double now = 1'800'000'000;  // 2027-01-15 08:00 UTC

    CheckoutTest() {
        platform::setConsoleSink(
            [this](std::string_view line) { core.transcript.add(std::string(line)); });
        port.web().onLoad([this](const std::string& url) {
            core.transcript.add("load " + url);
            return load;
        });
        port.web().onEvaluate([this](const std::string& script) {
            core.transcript.add("script " + script);
            return evaluation;
        });
        presenter = platform::makeOnMainThread<platform::UIViewController>();
        presenter->setShownByStage(true);
        sdk.setDelegate(host);
        scheduler.settle();  // the facade's first use
        forget();
    }
    ~CheckoutTest() override {
        ZorvikCheckoutSDK::reset();
        presenter.reset();
        platform::setConsoleSink({});
    }

    // Starts a checkout at the facade and runs until its page is shown.
    void checkout() {
        sdk.checkout(presenter, optionsOf(plainToken()));
        runAll();
        screen_ =
            std::dynamic_pointer_cast<ZorvikCheckoutWebView>(presenter->presentedViewController());
        ASSERT_TRUE(screen());
    }
    // One that reports to `host` itself, not yet shown; the caller owns it.
    Screen makeScreen(const ZorvikCheckoutOptions& options = optionsOf(plainToken())) {
        const auto made = ZorvikCheckoutWebView::initWithOptions(options, std::nullopt);
        made->setDelegate(host);
        screen_ = made;
        return made;
    }
    // Presents one; runs no turn.
    void presentScreen(const ZorvikCheckoutOptions& options = optionsOf(plainToken())) {
        presenter->present(makeScreen(options), false);
    }
    // The same, runs until its page is shown, then forgets what was seen.
    void openScreen(const ZorvikCheckoutOptions& options = optionsOf(plainToken())) {
        presentScreen(options);
        runAll();
        forget();
    }
    // One that nobody presents, in a window all the same.
    Screen loadUnpresentedScreen() {
        auto made = makeScreen();
        made->setShownByStage(true);
        runAll();
        forget();
        return made;
    }
    void dismissScreen() {
        presenter->dismiss(true);
        runAll();
        EXPECT_FALSE(screen()) << "somebody still holds the screen";
    }
    // Runs one turn, marked by its number since the transcript began; false: there was none.
    bool runTurn() {
        core.transcript.mark("turn " + std::to_string(turn + 1));
        const bool hasRun = scheduler.runOneTurn();
        turn += hasRun ? 1 : 0;
        return hasRun;
    }
    // Turns and background tasks, marked too, until neither is left.
    void run() {
        do {
            while (runTurn()) {
            }
            core.transcript.mark("background");
        } while (scheduler.runOneBackgroundTask());
        scheduler.settle();
    }
    // The same, then a second in which fades and slides end.
    void runAll() {
        run();
        core.transcript.mark("later");
        scheduler.advanceBy(1);
        run();
    }
    void forget() {
        take();
        scheduler.setNow(now);
    }
    std::string take(const std::string& from = "") {
        turn = 0;
        return core.transcript.take(from);
    }
    // Whether the transcript, from its first entry with this beginning on, is the text to the
    // character. It starts anew.
    testing::AssertionResult hasTranscript(const std::string& from, const std::string& text) {
        const std::string all = take(from);
        if (all == text) return testing::AssertionSuccess();
        const auto differs = std::mismatch(all.begin(), all.end(), text.begin(), text.end());
        return testing::AssertionFailure()
               << "from line " << std::count(all.begin(), differs.first, '\n') << " on:" << all;
    }
    // The same for what comes until nothing is left to run.
    testing::AssertionResult leadsTo(const std::string& from, const std::string& text) {
        run();
        return hasTranscript(from, text);
    }
    // Every entry; those with this word before them, without it; the last one.
    Lines heard() const { return core.transcript.entries(""); }
    Lines seen(const std::string& word) const { return core.transcript.entries(word + ' '); }
    std::string last() const { return heard().back(); }

    Screen screen() const { return screen_.lock(); }
    platform::headless::ScriptedPage& page() { return port.web().page(); }
    const Lines& scripts() { return page().evaluatedScripts(); }
    template <class View>
    std::shared_ptr<View> find() const {
        return findView<View>(*screen()->view());
    }
    bool isErrorShown() const { return !find<platform::UILabel>()->superview()->isHidden(); }
    // Asks the policy directly; it must answer exactly once, before it returns.
    Policy decide(const std::optional<std::string>& url) {
        platform::WKNavigationAction action;
        if (url) action.request.url = platform::URL::fromEngine(*url);
        std::vector<Policy> answers;
        screen()->webViewDecidePolicyFor(*find<WKWebView>(), action,
                                         [&](Policy policy) { answers.push_back(policy); });
        EXPECT_EQ(answers.size(), 1u);
        return answers.at(0);
    }
    Policy redirect(const std::string& response) {
        return decide(core.webViewRespCheckUrl + "?response=" + response);
    }
    void postIntent(const ScriptValue& body) { EXPECT_TRUE(page().post("openUpiIntent", body)); }
    // The record of a hand-off with the id "T1".
    void storeRecord(const DefaultsValue& startTime = Date{now}) {
        port.defaults().write("current_transaction_id", std::string("T1"));
        port.defaults().write("current_package_name", std::string("app.one"));
        port.defaults().write("transaction_start_time", startTime);
    }
    void comeBackAfter(double seconds) {  // since then
        scheduler.setNow(now + seconds);
        port.application().becomeActive();
    }

    ScriptedCore core;
    platform::headless::HeadlessPlatform port;
    platform::headless::HeadlessScheduler& scheduler = port.scheduler();
    ZorvikCheckoutSDK& sdk = ZorvikCheckoutSDK::shared();
    std::shared_ptr<Receiver> host = std::make_shared<Receiver>();
    std::shared_ptr<platform::UIViewController> presenter;
    ScriptedLoad load;
    platform::Result<ScriptValue> evaluation = ScriptValue{};
    int turn = 0;

  private:
    std::weak_ptr<ZorvikCheckoutWebView> screen_;
};

}  // namespace zorvik
