#include "testkit/CheckoutTestKit.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "platform/foundation/Console.h"
#include "platform/foundation/Data.h"
#include "platform/foundation/Date.h"
#include "platform/foundation/JSONSerialization.h"
#include "platform/foundation/ProgrammingError.h"
#include "platform/foundation/URLComponents.h"
#include "platform/uikit/UIButton.h"
#include "trace/Recording.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutWebView.h"

namespace zorvik::testkit {

using platform::Dictionary;
using platform::Error;
using platform::JSONSerialization;
using platform::ScriptValue;
using platform::UIButton;
using platform::UIView;
using platform::headless::HeadlessStage;
using platform::headless::ScriptedLoad;
using platform::headless::ScriptedPage;

namespace {

constexpr const char* openingScheme = "testkit-opens";
constexpr const char* refusingScheme = "testkit-refuses";
constexpr const char* missingScheme = "testkit-missing";

const char* schemeOf(UPIApp app) {
    switch (app) {
        case UPIApp::opens:
            return openingScheme;
        case UPIApp::refusesToOpen:
            return refusingScheme;
        case UPIApp::notInstalled:
            break;
    }
    return missingScheme;
}

const char* wordFor(UPIStatus status) {
    switch (status) {
        case UPIStatus::success:
            return "success";
        case UPIStatus::failure:
            return "failure";
        case UPIStatus::cancelled:
            return "cancelled";
        case UPIStatus::unknown:
            break;
    }
    return "in-review";
}

Error failure(const std::string& description) {
    return {"testkit", 1, description};
}

std::string jsonOf(const Dictionary& dictionary) {
    const auto json = JSONSerialization::data(dictionary);
    if (!json) {
        platform::endOnProgrammingError("CheckoutTestKit: the payload cannot be written as JSON (" +
                                        json.error().localizedDescription +
                                        "); use UTF-8 strings and finite numbers");
    }
    return json.value();
}

std::string address(const std::string& base, const std::vector<platform::URLQueryItem>& items) {
    auto components = *platform::URLComponents::parse(base);
    components.setQueryItems(items);
    return components.string().value_or(base);
}

// What a page's string literal of this source text holds.
std::string evaluatedLiteral(std::string_view source) {
    constexpr std::string_view letters = "nrt";
    constexpr std::string_view meanings = "\n\r\t";
    std::string text;
    for (std::size_t index = 0; index < source.size(); ++index) {
        char character = source[index];
        if (character == '\\' && index + 1 < source.size()) {
            character = source[++index];
            const auto place = letters.find(character);
            if (place != std::string_view::npos) character = meanings[place];
        }
        text += character;
    }
    return text;
}

std::shared_ptr<UIButton> visibleButton(const UIView& root) {
    for (const auto& view : root.subviews()) {
        if (view->isHidden()) continue;
        if (auto button = std::dynamic_pointer_cast<UIButton>(view)) return button;
        if (auto button = visibleButton(*view)) return button;
    }
    return nullptr;
}

}  // namespace

CheckoutTestKit::ConsoleRecording::ConsoleRecording() {
    platform::setConsoleSink([this](std::string_view line) {
        const std::scoped_lock lock(mutex_);
        lines_.emplace_back(line);
    });
}

CheckoutTestKit::ConsoleRecording::~ConsoleRecording() {
    platform::setConsoleSink({});
}

std::vector<std::string> CheckoutTestKit::ConsoleRecording::lines() const {
    const std::scoped_lock lock(mutex_);
    return lines_;
}

CheckoutTestKit::CheckoutTestKit() {
    core().clear();
    ZorvikCheckoutSDK::reset();
    platform_->application().install(openingScheme);
    platform_->application().install(refusingScheme, false);
    platform_->web().onLoad([this](const std::string&) {
        ScriptedLoad load;
        if (pageError_) {
            load.ending = ScriptedLoad::Ending::failBeforeCommit;
            load.error = *pageError_;
        }
        return load;
    });
    platform_->web().onEvaluate([this](const std::string& script) {
        recordMessage(script);
        return ScriptValue();
    });
    openWindow();
    sdk().setDelegate(delegate_);
}

CheckoutTestKit::~CheckoutTestKit() {
    ZorvikCheckoutSDK::reset();
}

std::string CheckoutTestKit::orderToken() {
    std::string claims = jsonOf({{"order_id", orderId}, {"sub_merchant_id", subMerchantId}});
    // JSON may end in white space; of such a length base64 needs no padding, which some readers
    // refuse and others want.
    while (claims.size() % 3 != 0)
        claims += ' ';
    return "header." + platform::base64Encode(claims) + ".signature";
}

void CheckoutTestKit::orderUpdateFails(const std::string& description) {
    core().answers().orderUpdate = failure(description);
}

void CheckoutTestKit::appListFails(const std::string& description) {
    core().answers().appList = failure(description);
}

void CheckoutTestKit::appListIs(const std::vector<UPIAppsVO>& apps) {
    core().answers().appList = apps;
}

void CheckoutTestKit::enquiryAnswers(const Dictionary& response, const std::string& orderStatus) {
    core().answers().enquiry = TransactionEnquiryResponse{Order{orderStatus}, response};
}

void CheckoutTestKit::enquiryFails(const std::string& description) {
    core().answers().enquiry = failure(description);
}

void CheckoutTestKit::pageCannotBeReached(const std::string& description) {
    pageError_ = failure(description);
}

void CheckoutTestKit::pageCanBeReached() {
    pageError_.reset();
}

void CheckoutTestKit::openCheckout() {
    openCheckout({.orderToken = orderToken()});
}

void CheckoutTestKit::openCheckout(const ZorvikCheckoutOptions& options) {
    {
        const trace::Step step(trace::Lane::facade, "checkout");
        sdk().checkout(presenter_, options);
    }
    settle();
}

void CheckoutTestKit::customerPicks(UPIApp app) {
    ScriptedPage& checkoutPage = pageFor("customerPicks");
    const std::string scheme = schemeOf(app);
    checkoutPage.post("openUpiIntent",
                      {ScriptValue::Type::string,
                       jsonOf({{"url", address(scheme + "://pay", {{"tr", transactionId}})},
                               {"package_name", "example." + scheme},
                               {"transactionId", transactionId}})});
    settle();
}

void CheckoutTestKit::customerComesBackAfter(double seconds) {
    requireScreen("customerComesBackAfter");
    const auto stored = platform_->defaults().read("transaction_start_time");
    const auto* start = stored ? std::get_if<platform::Date>(&*stored) : nullptr;
    require(start != nullptr, "customerComesBackAfter",
            "no UPI app was opened; call customerPicks(UPIApp::opens) first");
    auto& scheduler = platform_->scheduler();
    const double back = start->secondsSince1970 + seconds;
    if (const double away = back - scheduler.wallSeconds(); away > 0) {
        scheduler.advanceBy(away);
        // To the very moment, whatever the sum of the steps came to.
        scheduler.setNow(back);
    }
    platform_->application().becomeActive();
    settle();
}

void CheckoutTestKit::customerPressesBack() {
    requireScreen("customerPressesBack");
    {
        const trace::Step step(trace::Lane::facade, "handleDeviceBackButtonPress");
        sdk().handleDeviceBackButtonPress();
    }
    settle();
}

void CheckoutTestKit::customerPressesRetry() {
    requireScreen("customerPressesRetry");
    require(isRetryShown(), "customerPressesRetry",
            "no Retry is shown; call pageCannotBeReached() before openCheckout()");
    {
        const trace::Step step(trace::Lane::screen, "the customer presses Retry");
        visibleButton(*screen()->view())->sendTouchUpInside();
    }
    settle();
}

void CheckoutTestKit::windowCloses() {
    requireScreen("windowCloses");
    const trace::Step step(trace::Lane::host, "the window closes");
    presenter_->dismiss(false);
    presenter_->setShownByStage(false);
    openWindow();
    settle();
}

void CheckoutTestKit::upiAppReturns(UPIStatus status,
                                    std::map<std::string, std::string> parameters) {
    ScriptedPage& checkoutPage = pageFor("upiAppReturns");
    parameters.try_emplace("status", wordFor(status));
    parameters.try_emplace("tr", transactionId);
    std::vector<platform::URLQueryItem> items;
    items.reserve(parameters.size());
    for (const auto& [name, value] : parameters)
        items.push_back({name, value});
    checkoutPage.navigate(
        address(std::string(ScriptedCoreServices::returnScheme) + "://upi", items));
    settle();
}

void CheckoutTestKit::pageAnswers(const Dictionary& payload, Encoding encoding) {
    const std::string json = jsonOf({{"payload", payload}});
    respond("pageAnswers", {encoding == Encoding::json ? json : platform::base64Encode(json)});
}

void CheckoutTestKit::pageAnswersTwice(const Dictionary& first, const Dictionary& second) {
    respond("pageAnswersTwice", {jsonOf({{"payload", first}}), jsonOf({{"payload", second}})});
}

void CheckoutTestKit::pageAnswersUnreadably() {
    respond("pageAnswersUnreadably", {"neither JSON nor base64"});
}

void CheckoutTestKit::pageAnswersWithoutResponse() {
    // Counts as a redirect for the text it holds, whose one query item has another name.
    const std::string responseUrl = ScriptedCoreServices::responseUrl;
    pageFor("pageAnswersWithoutResponse")
        .navigate(responseUrl + "?from=" + responseUrl + "?response=");
    settle();
}

void CheckoutTestKit::respond(const char* call, const std::vector<std::string>& responses) {
    ScriptedPage& checkoutPage = pageFor(call);
    for (const std::string& response : responses)
        checkoutPage.navigate(address(ScriptedCoreServices::responseUrl, {{"response", response}}));
    settle();
}

void CheckoutTestKit::settle() {
    advance(HeadlessStage::slideSeconds);
}

void CheckoutTestKit::advance(double seconds) {
    platform_->scheduler().settle();
    platform_->scheduler().advanceBy(seconds);
    platform_->scheduler().settle();
}

const Dictionary& CheckoutTestKit::lastResponse() const {
    require(!responses().empty(), "lastResponse",
            "the kit's delegate was given no response; let the page or the UPI app answer first, "
            "or look at the delegate that the test set");
    return responses().back();
}

bool CheckoutTestKit::isRetryShown() const {
    const auto shown = screen();
    return shown && visibleButton(*shown->view());
}

std::vector<std::string> CheckoutTestKit::eventNames() const {
    std::vector<std::string> names;
    for (Event& event : events())
        names.push_back(std::move(event.name));
    return names;
}

std::shared_ptr<ZorvikCheckoutWebView> CheckoutTestKit::screen() const {
    const auto& shown = platform_->stage().shown();
    if (shown.empty() || shown.back()->isBeingDismissed()) return nullptr;
    return std::dynamic_pointer_cast<ZorvikCheckoutWebView>(shown.back());
}

// Ends the process with a sentence that says what to do: what waits comes first, for it may well
// bring about what is missing.
void CheckoutTestKit::require(bool condition, const char* call,
                              const std::string& otherwise) const {
    if (condition) return;
    const std::size_t tasks = platform_->scheduler().backgroundCount();
    std::string sentence = otherwise;
    if (tasks > 0) {
        sentence = std::to_string(tasks) +
                   (tasks == 1 ? " background task waits" : " background tasks wait") +
                   "; call settle() first";
    } else if (platform_->scheduler().nextDelay() == 0) {
        sentence = "main-queue turns wait; call settle() first";
    }
    platform::endOnProgrammingError(std::string("CheckoutTestKit::") + call + ": " + sentence);
}

void CheckoutTestKit::requireScreen(const char* call) const {
    require(isScreenOpen(), call, "no screen is open; call openCheckout() first");
}

ScriptedPage& CheckoutTestKit::pageFor(const char* call) const {
    requireScreen(call);
    require(!isRetryShown(), call,
            "the page was not reached; call pageCanBeReached() and customerPressesRetry() first");
    return platform_->web().page();
}

void CheckoutTestKit::openWindow() {
    presenter_ = platform::makeOnMainThread<platform::UIViewController>();
    presenter_->setShownByStage(true);
}

void CheckoutTestKit::recordMessage(const std::string& script) {
    constexpr std::string_view before = "window.postMessage('";
    constexpr std::string_view after = "', '*');";
    if (!script.starts_with(before) || !script.ends_with(after)) return;
    const std::string text = evaluatedLiteral(std::string_view(script).substr(
        before.size(), script.size() - before.size() - after.size()));
    const auto message =
        JSONSerialization::jsonObject(text, JSONSerialization::ReadingOptions::none);
    const auto* object = message ? message.value().dictionary() : nullptr;
    messagesToPage_.push_back(object != nullptr ? *object : Dictionary{{"text", text}});
}

}  // namespace zorvik::testkit
