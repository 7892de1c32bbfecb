#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/headless/HeadlessPlatform.h"
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
using platform::Dictionary;
using platform::ScriptValue;
using platform::Value;

class RecordingHost : public ZorvikCheckoutSDKDelegate {
  public:
    std::vector<Dictionary> responses;
    std::function<void()> whenCalled;

    void onCheckoutResponse(const Dictionary& data) override {
        responses.push_back(data);
        if (whenCalled) whenCalled();
    }
};

class RecordingScreenDelegate : public ZorvikCheckoutWebViewDelegate {
  public:
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

// header.<claims in base64>.signature; unpadded unless the text's length needs no padding.
std::string tokenOf(const std::string& claims);
// Base64 in the URL-safe alphabet.
std::string urlSafeBase64(const std::string& bytes);
ZorvikCheckoutOptions optionsOf(const std::optional<std::string>& token);
platform::Error someError(const std::string& description);
// As encodeURIComponent: everything but unreserved characters is escaped.
std::string escapedForQuery(const std::string& text);
// What a single-quoted script literal of this source text evaluates to.
std::string evaluatedLiteral(const std::string& source);
Dictionary parsedObject(const std::string& json);
ScriptValue stringBody(const std::string& text);
// The failure payload of the checkout of plainToken().
Dictionary failurePayload(const std::string& error);

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

    explicit CheckoutTest(Background background = Background::manual);
    ~CheckoutTest() override;

    // Starts a checkout at the facade and runs until its page is shown and nothing moves.
    void checkout(const ZorvikCheckoutOptions& options = optionsOf(plainToken()));
    // Makes a screen of its own, with `outcome` as its delegate, and presents it; runs no turn.
    void presentScreen(const ZorvikCheckoutOptions& options = optionsOf(plainToken()),
                       const Apps& apps = std::nullopt);
    // The same, and runs until its page is shown and nothing moves; then forgets what was seen.
    void openScreen(const ZorvikCheckoutOptions& options = optionsOf(plainToken()),
                    const Apps& apps = std::nullopt);
    // Makes one that is never shown, lets its page load and forgets what was seen; the caller owns
    // it.
    std::shared_ptr<ZorvikCheckoutWebView> loadUnshownScreen();
    // The screen over the presenter slides away and nobody holds it any more.
    void dismissScreen();
    // Turns, background tasks and fades until nothing moves.
    void runAll();
    void forget();

    std::shared_ptr<ZorvikCheckoutWebView> screen() const { return screen_.lock(); }
    platform::headless::ScriptedPage& page() { return port.web().page(); }
    template <class View>
    std::shared_ptr<View> find() const {
        return findView<View>(*screen()->view());
    }
    bool isErrorShown() const;
    std::string errorText() const;

    // Asks the policy directly; it must answer exactly once, before it returns.
    Policy decide(const std::optional<std::string>& url);
    // The page posts an "openUpiIntent" message, which arrives.
    void postIntent(const ScriptValue& body);
    void becomeActive();
    // Main-queue turns until the condition holds; -1 when none is left before that.
    int turnsUntil(const std::function<bool()>& condition);
    int turnsUntilReport() {
        return turnsUntil([this] { return outcome->count() > 0; });
    }

    Lines takeLines();
    // The JSON object the page was posted by the last script, by way of a single-quoted literal.
    Dictionary lastPostedMessage();

    ScriptedCore core;
    std::shared_ptr<void> outlivesThePort;
    platform::headless::HeadlessPlatform port;
    platform::headless::HeadlessScheduler& scheduler = port.scheduler();
    ZorvikCheckoutSDK& sdk = ZorvikCheckoutSDK::shared();
    Lines firstUseEvents;  // of the facade, the first in this process
    std::shared_ptr<RecordingHost> host = std::make_shared<RecordingHost>();
    std::shared_ptr<RecordingScreenDelegate> outcome = std::make_shared<RecordingScreenDelegate>();
    std::shared_ptr<platform::UIViewController> presenter;
    platform::headless::ScriptedLoad load;
    platform::Result<ScriptValue> evaluation = ScriptValue{};
    Lines lines;

  private:
    std::weak_ptr<ZorvikCheckoutWebView> screen_;
};

}  // namespace zorvik
