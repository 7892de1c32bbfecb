#include "examples/merchant/AutomaticCustomer.h"

#include <signal.h>
#include <unistd.h>
#include <webkit/webkit.h>

#include "examples/common/GtkPieces.h"
#include "platform/foundation/JSONSerialization.h"

namespace zorvik::demo {

namespace {

constexpr double patienceSeconds = 20;
constexpr unsigned lookMilliseconds = 60;

// The first widget below this one, itself included, for which the condition holds.
GtkWidget* find(GtkWidget* widget, const std::function<bool(GtkWidget*)>& condition) {
    if (!widget || !gtk_widget_get_mapped(widget)) return nullptr;
    if (condition(widget)) return widget;
    for (GtkWidget* child = gtk_widget_get_first_child(widget); child;
         child = gtk_widget_get_next_sibling(child)) {
        if (GtkWidget* found = find(child, condition)) return found;
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
        case seeHandOff:
            return "the hand-off to a UPI app";
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
    stepStart_ = g_get_monotonic_time();
    next();
}

void AutomaticCustomer::next() {
    if (steps_.empty()) return;
    if (attempt(steps_.front())) {
        steps_.pop_front();
        stepStart_ = g_get_monotonic_time();
        hasAnswer_ = false;
    } else if (static_cast<double>(g_get_monotonic_time() - stepStart_) > patienceSeconds * 1e6) {
        const std::string missed = waitedFor(steps_.front());
        steps_.clear();
        return stuck_(missed);
    }
    onMain(
        [self = self_] {
            if (*self) (*self)->next();
        },
        lookMilliseconds);
}

bool AutomaticCustomer::attempt(const Step& step) {
    using enum Step::Action;
    switch (step.action) {
        case see:
            if (!hasAnswer_) look("!!(" + step.text + ")");
            return hasAnswer_;
        case click:
            if (!hasAnswer_) look(findScript(step.text, "found.click()"));
            return hasAnswer_;
        case fill:
            if (!hasAnswer_) {
                look(findScript(step.text,
                                "found.value = " + scriptLiteral(step.value) +
                                    "; found.dispatchEvent(new Event('input', {bubbles: true}))"));
            }
            return hasAnswer_;
        case pay:
            surroundings_.pay();
            return true;
        case seeScreen:
            return page() != nullptr;
        case seeButton:
            return buttonTitled(step.text) != nullptr;
        case press: {
            GtkWidget* button = buttonTitled(step.text);
            return button && gtk_widget_activate(button);
        }
        case deviceBack:
            surroundings_.deviceBack();
            return true;
        case setFault:
            this->setFault(step);
            return hasAnswer_;
        case savePng:
            return surroundings_.savePng(step.text);
        case wait:
            return static_cast<double>(g_get_monotonic_time() - stepStart_) >
                   g_ascii_strtod(step.text.c_str(), nullptr) * 1e6;
        case seeHandOff:
            return surroundings_.isHandedOff();
        case dieAtHandOff:
            if (surroundings_.isHandedOff()) kill(getpid(), SIGKILL);
            return false;
    }
    return true;
}

void AutomaticCustomer::look(const std::string& script) {
    GtkWidget* shown = page();
    if (!shown || isAsking_) return;
    isAsking_ = true;
    webkit_web_view_evaluate_javascript(
        WEBKIT_WEB_VIEW(shown), script.c_str(), -1, nullptr, nullptr, nullptr,
        [](GObject* view, GAsyncResult* result, gpointer data) {
            const std::unique_ptr<std::shared_ptr<AutomaticCustomer*>> self(
                static_cast<std::shared_ptr<AutomaticCustomer*>*>(data));
            JSCValue* value =
                webkit_web_view_evaluate_javascript_finish(WEBKIT_WEB_VIEW(view), result, nullptr);
            if (**self) {
                (**self)->isAsking_ = false;
                (**self)->hasAnswer_ = value && jsc_value_to_boolean(value);
            }
            if (value) g_object_unref(value);
        },
        new std::shared_ptr<AutomaticCustomer*>(self_));
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

GtkWidget* AutomaticCustomer::page() const {
    return find(GTK_WIDGET(surroundings_.window),
                [](GtkWidget* widget) { return WEBKIT_IS_WEB_VIEW(widget) != FALSE; });
}

GtkWidget* AutomaticCustomer::buttonTitled(const std::string& title) const {
    return find(GTK_WIDGET(surroundings_.window), [&](GtkWidget* widget) {
        if (!GTK_IS_BUTTON(widget)) return false;
        GtkWidget* content = gtk_button_get_child(GTK_BUTTON(widget));
        return GTK_IS_LABEL(content) && title == gtk_label_get_text(GTK_LABEL(content));
    });
}

}  // namespace zorvik::demo
