#include "examples/merchant/AutomaticCustomer.h"

#include <signal.h>
#include <unistd.h>

#include <string>

#include "platform/foundation/JSONSerialization.h"
#include "platform/runtime/Environment.h"

namespace zorvik::demo {

namespace {

constexpr double patienceSeconds = 20;
constexpr double lookSeconds = 0.06;
constexpr double settleSeconds = 0.7;

using platform::Environment;
using platform::UIView;
using platform::WKWebView;

std::shared_ptr<WKWebView> webViewIn(const std::shared_ptr<UIView>& view) {
    if (auto found = std::dynamic_pointer_cast<WKWebView>(view)) return found;
    for (const auto& subview : view->subviews()) {
        if (auto found = webViewIn(subview)) return found;
    }
    return nullptr;
}

std::string scriptLiteral(const std::string& text) {
    // JSON of a one-element array is a script literal of that array.
    const auto json = platform::JSONSerialization::data(platform::Array{platform::Value(text)});
    return json ? json.value() + "[0]" : "''";
}

std::string findScript(const std::string& selector, const std::string& action) {
    return "(() => { const found = document.querySelector(" + scriptLiteral(selector) +
           "); if (!found || found.disabled || !found.getClientRects().length) return false; " +
           action + "; return true; })()";
}

std::string waitedFor(const Step& step) {
    using enum Step::Action;
    switch (step.action) {
        case see:
            return "the page to show: " + step.text;
        case click:
            return "something to click: " + step.text;
        case fill:
            return "a field: " + step.text;
        case seeScreen:
            return "the checkout screen";
        case savePng:
            return "a picture of the window";
        case setFault:
            return "the back end to take over a fault";
        case seeButton:
        case press:
            return "a button \"" + step.text + "\"";
        case dieAtHandOff:
            return "the hand-off to a UPI app";
        case seeApp:
            return "a UPI app";
        case seeBack:
            return "the return from a UPI app";
        default:
            return "the next step";
    }
}

}  // namespace

AutomaticCustomer::AutomaticCustomer(std::vector<Step> steps, Surroundings surroundings)
    : steps_(steps.begin(), steps.end()), surroundings_(std::move(surroundings)) {}

AutomaticCustomer::~AutomaticCustomer() {
    *self_ = nullptr;
}

void AutomaticCustomer::start(std::function<void(const std::string&)> stuck) {
    stuck_ = std::move(stuck);
    stepStart_ = Environment::scheduler().steadySeconds();
    next();
}

void AutomaticCustomer::next() {
    if (steps_.empty()) return;
    if (attempt(steps_.front())) {
        if (!steps_.front().story.empty()) surroundings_.tell(steps_.front().story);
        steps_.pop_front();
        stepStart_ = Environment::scheduler().steadySeconds();
        hasAnswer_ = false;
    } else if (secondsInStep() > patienceSeconds) {
        const std::string missed = waitedFor(steps_.front());
        steps_.clear();
        return stuck_(missed);
    }
    Environment::scheduler().runOnMainAfter(lookSeconds, [self = self_] {
        if (*self) (*self)->next();
    });
}

bool AutomaticCustomer::attempt(const Step& step) {
    using enum Step::Action;
    switch (step.action) {
        case see:
            if (!hasAnswer_) look("!!(" + step.text + ")");
            return hasAnswer_;
        case click:
            if (!hasAnswer_) look(findScript(step.text, ""));
            // The story tells of the click before what comes of it.
            if (hasAnswer_ && page())
                page()->evaluateJavaScript(findScript(step.text, "found.click()"), {});
            return hasAnswer_;
        case fill:
            if (!hasAnswer_) {
                look(findScript(step.text,
                                "found.value = " + scriptLiteral(step.value) +
                                    "; found.dispatchEvent(new Event('input', {bubbles: true}))"));
            }
            return hasAnswer_;
        case seeScreen:
            return page() != nullptr;
        case seeButton:
            return surroundings_.desktop.hasButton(step.text);
        case press:
            return surroundings_.desktop.press(step.text);
        case deviceBack:
            surroundings_.deviceBack();
            return true;
        case setFault:
            this->setFault(step);
            return hasAnswer_;
        case savePng:
            if (!surroundings_.takesPictures) return true;
            // A picture shows what it means to once the screen's fades have ended.
            return secondsInStep() > (step.value.empty() ? settleSeconds : std::stod(step.value)) &&
                   surroundings_.savePng(step.text);
        case seeApp:
            return surroundings_.isInApp();
        case seeBack:
            return !surroundings_.isInApp();
        case dieAtHandOff:
            if (!surroundings_.isHandedOff()) return false;
            surroundings_.tell(step.story);
            kill(getpid(), SIGKILL);
    }
    return true;
}

void AutomaticCustomer::look(const std::string& script) {
    const auto shown = page();
    if (!shown || isAsking_) return;
    isAsking_ = true;
    shown->evaluateJavaScript(script, [self = self_](const auto& value) {
        if (!*self) return;
        (*self)->isAsking_ = false;
        (*self)->hasAnswer_ = value && value.value().text == "true";
    });
}

void AutomaticCustomer::setFault(const Step& step) {
    if (hasAnswer_ || isAsking_) return;
    isAsking_ = true;
    surroundings_.setFault(step.text, step.value == "true", [self = self_] {
        if (!*self) return;
        (*self)->isAsking_ = false;
        (*self)->hasAnswer_ = true;
    });
}

std::shared_ptr<WKWebView> AutomaticCustomer::page() const {
    const auto presenter = surroundings_.desktop.presenter();
    const auto screen = presenter ? presenter->presentedViewController() : nullptr;
    return screen ? webViewIn(screen->view()) : nullptr;
}

double AutomaticCustomer::secondsInStep() const {
    return Environment::scheduler().steadySeconds() - stepStart_;
}

}  // namespace zorvik::demo
