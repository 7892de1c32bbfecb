#include "tests/component/CheckoutFixture.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "platform/foundation/Console.h"
#include "platform/foundation/Data.h"
#include "platform/foundation/JSONSerialization.h"
#include "platform/uikit/UILabel.h"

namespace zorvik {

using platform::JSONSerialization;
using platform::UIViewController;

std::string tokenOf(const std::string& claims) {
    std::string segment = platform::base64Encode(claims);
    while (segment.ends_with('='))
        segment.pop_back();
    return "header." + segment + ".signature";
}

std::string urlSafeBase64(const std::string& bytes) {
    std::string text = platform::base64Encode(bytes);
    std::replace(text.begin(), text.end(), '+', '-');
    std::replace(text.begin(), text.end(), '/', '_');
    return text;
}

ZorvikCheckoutOptions optionsOf(const std::optional<std::string>& token) {
    ZorvikCheckoutOptions options;
    options.orderToken = token;
    return options;
}

platform::Error someError(const std::string& description) {
    return {"test", 5, description};
}

std::string escapedForQuery(const std::string& text) {
    std::string escaped;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (std::isalnum(byte) != 0 || std::string("-._~").find(character) != std::string::npos) {
            escaped += character;
        } else {
            char buffer[4];
            std::snprintf(buffer, sizeof buffer, "%%%02X", byte);
            escaped += buffer;
        }
    }
    return escaped;
}

std::string evaluatedLiteral(const std::string& source) {
    std::string text;
    for (std::size_t index = 0; index < source.size(); ++index) {
        const char character = source[index];
        EXPECT_TRUE(character != '\'' && character != '\n' && character != '\r')
            << "ends the literal";
        if (character != '\\') {
            text += character;
            continue;
        }
        const char escaped = source.at(++index);
        text += escaped == 'n' ? '\n' : escaped == 'r' ? '\r' : escaped == 't' ? '\t' : escaped;
    }
    return text;
}

Dictionary parsedObject(const std::string& json) {
    const auto value = JSONSerialization::jsonObject(json, JSONSerialization::ReadingOptions::none);
    if (!value || value.value().dictionary() == nullptr) {
        ADD_FAILURE() << "no JSON object: " << json.substr(0, 400);
        return {};
    }
    return *value.value().dictionary();
}

ScriptValue stringBody(const std::string& text) {
    return {ScriptValue::Type::string, text};
}

Dictionary failurePayload(const std::string& error) {
    return {{"error", error},
            {"order_id", "order-7"},
            {"zorvik_order_id", "order-7"},
            {"token", plainToken()},
            {"subMerchantId", "sub-3"}};
}

CheckoutTest::CheckoutTest(Background background) : port(background) {
    platform::setConsoleSink([this](std::string_view line) { lines.emplace_back(line); });
    port.web().onLoad([this](const std::string&) { return load; });
    port.web().onEvaluate([this](const std::string&) { return evaluation; });
    presenter = platform::makeOnMainThread<UIViewController>();
    presenter->setShownByStage(true);
    EXPECT_TRUE(background == Background::threads || core.events().empty()) << "not in background";
    scheduler.settle();
    firstUseEvents = core.takeEvents();
    sdk.setDelegate(host);
}

CheckoutTest::~CheckoutTest() {
    sdk.setDelegate({});
    presenter.reset();
    platform::setConsoleSink({});
}

void CheckoutTest::checkout(const ZorvikCheckoutOptions& options) {
    sdk.checkout(presenter, options);
    runAll();
    screen_ =
        std::dynamic_pointer_cast<ZorvikCheckoutWebView>(presenter->presentedViewController());
    ASSERT_TRUE(screen());
}

void CheckoutTest::presentScreen(const ZorvikCheckoutOptions& options, const Apps& apps) {
    const auto made = ZorvikCheckoutWebView::initWithOptions(options, apps);
    made->setDelegate(outcome);
    screen_ = made;
    presenter->present(made, false);
}

void CheckoutTest::openScreen(const ZorvikCheckoutOptions& options, const Apps& apps) {
    presentScreen(options, apps);
    runAll();
    forget();
}

std::shared_ptr<ZorvikCheckoutWebView> CheckoutTest::loadUnshownScreen() {
    auto made = ZorvikCheckoutWebView::initWithOptions(optionsOf(plainToken()), std::nullopt);
    made->setDelegate(outcome);
    made->view();
    screen_ = made;
    runAll();
    forget();
    return made;
}

void CheckoutTest::dismissScreen() {
    presenter->dismiss(true);
    runAll();
    EXPECT_FALSE(screen()) << "somebody still holds the screen";
}

void CheckoutTest::runAll() {
    scheduler.settle();
    scheduler.advanceBy(1);
    scheduler.settle();
}

void CheckoutTest::forget() {
    lines.clear();
    core.takeEvents();
    core.takeCalls();
}

bool CheckoutTest::isErrorShown() const {
    return !find<platform::UILabel>()->superview()->isHidden();
}

std::string CheckoutTest::errorText() const {
    return find<platform::UILabel>()->text();
}

Policy CheckoutTest::decide(const std::optional<std::string>& url) {
    platform::WKNavigationAction action;
    if (url) action.request.url = platform::URL::fromEngine(*url);
    const auto view = find<platform::WKWebView>();
    std::vector<Policy> answers;
    screen()->webViewDecidePolicyFor(*view, action,
                                     [&](Policy policy) { answers.push_back(policy); });
    EXPECT_EQ(answers.size(), 1u);
    return answers.empty() ? Policy::cancel : answers.front();
}

void CheckoutTest::postIntent(const ScriptValue& body) {
    EXPECT_TRUE(page().post("openUpiIntent", body));
    scheduler.runOneTurn();
}

void CheckoutTest::becomeActive() {
    port.application().becomeActive();
    scheduler.runOneTurn();
}

int CheckoutTest::turnsUntil(const std::function<bool()>& condition) {
    for (int turns = 0;; ++turns) {
        if (condition()) return turns;
        if (!scheduler.runOneTurn()) return -1;
    }
}

Lines CheckoutTest::takeLines() {
    return std::exchange(lines, {});
}

Dictionary CheckoutTest::lastPostedMessage() {
    const std::string before = "window.postMessage('";
    const std::string after = "', '*');";
    if (page().evaluatedScripts().empty()) {
        ADD_FAILURE() << "no script was evaluated";
        return {};
    }
    const std::string script = page().evaluatedScripts().back();
    EXPECT_TRUE(script.starts_with(before) && script.ends_with(after)) << script;
    return parsedObject(evaluatedLiteral(
        script.substr(before.size(), script.size() - before.size() - after.size())));
}

}  // namespace zorvik
