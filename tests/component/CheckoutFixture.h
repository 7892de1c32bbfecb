#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/Console.h"
#include "platform/foundation/Data.h"
#include "platform/foundation/JSONSerialization.h"
#include "platform/headless/HeadlessPlatform.h"
#include "platform/uikit/UILabel.h"
#include "platform/uikit/UIViewController.h"
#include "platform/webkit/WKWebView.h"
#include "tests/component/ScriptedCore.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutSDK.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutWebView.h"

namespace zorvik {

namespace platform {
inline void PrintTo(const Value& value, std::ostream* out) {
    *out << description(value).substr(0, 400);
}
}  // namespace platform

using Apps = std::optional<std::vector<UPIAppsVO>>;
using Lines = std::vector<std::string>;
using Policy = platform::WKNavigationActionPolicy;
using platform::Date, platform::DefaultsValue, platform::Dictionary, platform::Rect;
using platform::ScriptValue, platform::Value, platform::WKWebView, platform::headless::ScriptedLoad;
using testing::Contains, testing::Each, testing::ElementsAre, testing::HasSubstr;
using testing::IsEmpty, testing::Not, testing::SizeIs, testing::StartsWith;

struct RecordingHost : ZorvikCheckoutSDKDelegate {
    std::vector<Dictionary> responses;
    std::function<void()> whenCalled = [] {};

    void onCheckoutResponse(const Dictionary& data) override {
        responses.push_back(data);
        whenCalled();
    }
};

struct RecordingScreenDelegate : ZorvikCheckoutWebViewDelegate {
    std::vector<Dictionary> successes;
    std::vector<Dictionary> failures;

    std::size_t count() const { return successes.size() + failures.size(); }
    void zorvikCheckoutWebViewDidSucceed(const std::shared_ptr<ZorvikCheckoutWebView>&,
                                         const Dictionary& payload) override {
        successes.push_back(payload);
    }
    void zorvikCheckoutWebViewDidFail(const std::shared_ptr<ZorvikCheckoutWebView>&,
                                      const Dictionary& payload) override {
        failures.push_back(payload);
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
    ZorvikCheckoutOptions options;
    options.orderToken = token;
    return options;
}
inline platform::Error someError(const std::string& description) {
    return {"test", 5, description};
}
// What a single-quoted script literal of this source text evaluates to.
inline std::string evaluatedLiteral(const std::string& source) {
    std::string text;
    for (std::size_t index = 0; index < source.size(); ++index) {
        char character = source[index];
        EXPECT_EQ(std::string("'\n\r").find(character), std::string::npos) << "ends the literal";
        if (character == '\\') {
            const char escaped = source.at(++index);
            const auto place = std::string("nrt").find(escaped);
            character = place == std::string::npos ? escaped : "\n\r\t"[place];
        }
        text += character;
    }
    return text;
}
inline Dictionary parsedObject(const std::string& json) {
    using platform::JSONSerialization;
    const auto value = JSONSerialization::jsonObject(json, JSONSerialization::ReadingOptions::none);
    const bool isObject = value && value.value().dictionary() != nullptr;
    EXPECT_TRUE(isObject) << json.substr(0, 400);
    return isObject ? *value.value().dictionary() : Dictionary();
}
inline ScriptValue stringBody(const std::string& text) {
    return {ScriptValue::Type::string, text};
}
// The failure payload of the checkout of plainToken().
inline Dictionary failurePayload(const std::string& error) {
    return {{"error", error},
            {"order_id", "order-7"},
            {"zorvik_order_id", "order-7"},
            {"token", plainToken()},
            {"subMerchantId", "sub-3"}};
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
// load and scripts succeed unless a test says otherwise.
class CheckoutTest : public testing::Test {
  protected:
    using Background = platform::headless::HeadlessScheduler::Background;
    static constexpr double now = 1'800'000'000;  // 2027-01-15 08:00 UTC

    explicit CheckoutTest(Background background = Background::manual) : port(background) {
        scheduler.setNow(now);
        platform::setConsoleSink([this](std::string_view line) { lines.emplace_back(line); });
        port.web().onLoad([this](const std::string&) { return load; });
        port.web().onEvaluate([this](const std::string&) { return evaluation; });
        presenter = platform::makeOnMainThread<platform::UIViewController>();
        presenter->setShownByStage(true);
        EXPECT_TRUE(background == Background::threads || core.events().empty())
            << "not in background";
        scheduler.settle();
        firstUseEvents = core.takeEvents();
        sdk.setDelegate(host);
    }
    ~CheckoutTest() override {
        sdk.setDelegate({});
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
    // Presents a screen whose delegate is `outcome`; runs no turn.
    void presentScreen(const ZorvikCheckoutOptions& options = optionsOf(plainToken()),
                       const Apps& apps = std::nullopt) {
        const auto made = ZorvikCheckoutWebView::initWithOptions(options, apps);
        made->setDelegate(outcome);
        screen_ = made;
        presenter->present(made, false);
    }
    // The same, runs until its page is shown, then forgets what was seen.
    void openScreen(const ZorvikCheckoutOptions& options = optionsOf(plainToken()),
                    const Apps& apps = std::nullopt) {
        presentScreen(options, apps);
        runAll();
        forget();
    }
    // One that is never shown; the caller owns it.
    std::shared_ptr<ZorvikCheckoutWebView> loadUnshownScreen() {
        auto made = ZorvikCheckoutWebView::initWithOptions(optionsOf(plainToken()), std::nullopt);
        made->setDelegate(outcome);
        made->view();
        screen_ = made;
        runAll();
        forget();
        return made;
    }
    void dismissScreen() {
        presenter->dismiss(true);
        runAll();
        EXPECT_FALSE(screen()) << "somebody still holds the screen";
    }
    // Turns, background tasks and fades until nothing moves.
    void runAll() {
        scheduler.settle();
        scheduler.advanceBy(1);
        scheduler.settle();
    }
    void forget() {
        lines.clear();
        core.takeEvents();
        core.takeCalls();
    }

    std::shared_ptr<ZorvikCheckoutWebView> screen() const { return screen_.lock(); }
    platform::headless::ScriptedPage& page() { return port.web().page(); }
    const Lines& scripts() { return page().evaluatedScripts(); }
    template <class View>
    std::shared_ptr<View> find() const {
        return findView<View>(*screen()->view());
    }
    bool isErrorShown() const { return !find<platform::UILabel>()->superview()->isHidden(); }
    std::string errorText() const { return find<platform::UILabel>()->text(); }

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
    // The redirect with this response, decided at once.
    Policy redirect(const std::string& response) {
        return decide(core.webViewRespCheckUrl + "?response=" + response);
    }
    void postIntent(const ScriptValue& body) {
        EXPECT_TRUE(page().post("openUpiIntent", body));
        scheduler.runOneTurn();
    }
    // The record of a hand-off with the id "T1".
    void storeRecord(const DefaultsValue& startTime = Date{now}) {
        port.defaults().write("current_transaction_id", std::string("T1"));
        port.defaults().write("current_package_name", std::string("app.one"));
        port.defaults().write("transaction_start_time", startTime);
    }
    void comeBackAfter(double seconds) {
        scheduler.setNow(now + seconds);
        port.application().becomeActive();
        scheduler.runOneTurn();
    }
    // Main-queue turns until the screen has reported; -1 when none is left before that.
    int turnsUntilReport() {
        for (int turns = 0;; ++turns) {
            if (outcome->count() > 0) return turns;
            if (!scheduler.runOneTurn()) return -1;
        }
    }

    Lines takeLines() { return std::exchange(lines, {}); }
    // The JSON object the page was posted by the last script, by way of a single-quoted literal.
    Dictionary lastPostedMessage() {
        const std::string before = "window.postMessage('";
        const std::string after = "', '*');";
        const std::string script = scripts().at(scripts().size() - 1);
        EXPECT_TRUE(script.starts_with(before) && script.ends_with(after)) << script;
        return parsedObject(evaluatedLiteral(
            script.substr(before.size(), script.size() - before.size() - after.size())));
    }

    ScriptedCore core;
    std::shared_ptr<void> outlivesThePort;
    platform::headless::HeadlessPlatform port;
    platform::headless::HeadlessScheduler& scheduler = port.scheduler();
    ZorvikCheckoutSDK& sdk = ZorvikCheckoutSDK::shared();
    Lines firstUseEvents;  // of the facade, the first in this process
    std::shared_ptr<RecordingHost> host = std::make_shared<RecordingHost>();
    std::shared_ptr<RecordingScreenDelegate> outcome = std::make_shared<RecordingScreenDelegate>();
    std::shared_ptr<platform::UIViewController> presenter;
    ScriptedLoad load;
    platform::Result<ScriptValue> evaluation = ScriptValue{};
    Lines lines;

  private:
    std::weak_ptr<ZorvikCheckoutWebView> screen_;
};

}  // namespace zorvik
