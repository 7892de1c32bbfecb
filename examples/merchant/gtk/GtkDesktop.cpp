#include <gtk/gtk.h>

#include "examples/common/GtkPieces.h"
#include "examples/common/Money.h"
#include "examples/merchant/Desktop.h"
#include "platform/gtk/GtkPlatform.h"

namespace zorvik::demo {

using platform::Dictionary;
using platform::gtk::GtkPlatform;

namespace {

constexpr const char* ownRules = R"css(
.card.list { padding: 6px 20px; }
.item { padding: 14px 0; }
.item.more { border-top: 1px solid @edge; }
.title { font-weight: 620; font-size: 12pt; }
.price { font-weight: 620; font-size: 12pt; }
.total { font-weight: 700; font-size: 15pt; }
.section { font-weight: 700; font-size: 16.5pt; padding: 4px 2px; }
.outcome { font-weight: 700; font-size: 18pt; padding-top: 8px; }
.mark { border-radius: 99px; color: #ffffff; font-size: 34px; font-weight: 800; }
.mark.success { background: #0b6560; }
.mark.failure { background: #a3261b; }
.mark.cancelled { background: #56606d; }
.mark.unknown { background: #80590b; }
.message .dialog-vbox { padding-top: 18px; }
.message .dialog-action-area { padding: 0 18px 18px 18px; }
.message .dialog-action-area button { margin: 0 4px; border: 1px solid @outline; }
)css";

struct Mark {
    const char* sign;
    const char* style;
};

Mark markOf(Outcome::Kind kind) {
    switch (kind) {
        case Outcome::Kind::success:
            return {"✓", "success"};
        case Outcome::Kind::failure:
            return {"!", "failure"};
        case Outcome::Kind::cancelled:
            return {"×", "cancelled"};
        case Outcome::Kind::unknown:
            break;
    }
    return {"…", "unknown"};
}

// Both on one line, the right one at the end.
GtkWidget* line(GtkWidget* left, GtkWidget* right) {
    GtkWidget* box = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 16);
    gtk_widget_set_hexpand(left, TRUE);
    gtk_widget_set_valign(right, GTK_ALIGN_START);
    gtk_label_set_xalign(GTK_LABEL(right), 1);
    gtk_box_append(GTK_BOX(box), left);
    gtk_box_append(GTK_BOX(box), right);
    return box;
}

GtkWidget* leftLabel(const std::string& text, std::initializer_list<const char*> styles) {
    GtkWidget* widget = label(text, styles);
    gtk_label_set_xalign(GTK_LABEL(widget), 0);
    gtk_label_set_justify(GTK_LABEL(widget), GTK_JUSTIFY_LEFT);
    return widget;
}

GtkWidget* price(const std::string& amount, const char* style) {
    GtkWidget* widget = gtk_label_new(moneyText(amount, "INR").c_str());
    gtk_widget_add_css_class(widget, style);
    return widget;
}

GtkWidget* itemLine(const BasketItem& item) {
    GtkWidget* words = gtk_box_new(GTK_ORIENTATION_VERTICAL, 2);
    gtk_box_append(GTK_BOX(words), leftLabel(item.name, {"title"}));
    gtk_box_append(GTK_BOX(words), leftLabel(item.detail, {"quiet", "small"}));
    GtkWidget* box = line(words, price(item.amount, "price"));
    gtk_widget_add_css_class(box, "item");
    return box;
}

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

class GtkDesktop : public Desktop {
  public:
    explicit GtkDesktop(std::unique_ptr<GtkPlatform> platform) : platform_(std::move(platform)) {}
    ~GtkDesktop() override {
        if (window_) gtk_window_destroy(window_);
    }

    void start(Events events) override;
    std::shared_ptr<platform::UIViewController> presenter() override {
        return platform_->presenterFor(window_);
    }
    bool isOpen() const override { return window_ != nullptr; }
    bool runUntil(const std::function<bool()>& condition, double seconds) override {
        return platform_->runUntil(condition, seconds);
    }
    void showBasket(const std::string& problem) override;
    void showBusy() override;
    void showResult(const Dictionary& data) override;
    bool savePng(const std::string& path) override { return platform_->savePng(window_, path); }
    bool hasButton(const std::string& title) const override { return buttonTitled(title); }
    bool press(const std::string& title) override {
        GtkWidget* button = buttonTitled(title);
        if (button) g_signal_emit_by_name(button, "clicked");
        return button;
    }

  private:
    void watchKeys();
    void watchClose();
    bool mayClose();
    void clear();
    void addAction(const std::string& text, std::function<void()> act);
    GtkWidget* buttonTitled(const std::string& title) const;

    const std::unique_ptr<GtkPlatform> platform_;
    Events events_;
    GtkWindow* window_ = nullptr;
    GtkWidget* column_ = nullptr;
    GtkWidget* action_ = nullptr;
    bool isAsking_ = false;
};

void GtkDesktop::start(Events events) {
    events_ = std::move(events);
    addStyleSheet("#0b6560", ownRules);
    window_ = GTK_WINDOW(gtk_window_new());
    gtk_window_set_title(window_, shopName);
    gtk_window_set_default_size(window_, 390, 844);
    g_signal_connect(window_, "destroy",
                     G_CALLBACK(+[](GtkWidget*, GtkDesktop* self) { self->window_ = nullptr; }),
                     this);
    watchKeys();
    watchClose();

    column_ = gtk_box_new(GTK_ORIENTATION_VERTICAL, 16);
    gtk_widget_set_margin_top(column_, 22);
    gtk_widget_set_margin_bottom(column_, 22);
    gtk_widget_set_margin_start(column_, 18);
    gtk_widget_set_margin_end(column_, 18);
    GtkWidget* scroll = gtk_scrolled_window_new();
    gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scroll), GTK_POLICY_NEVER,
                                   GTK_POLICY_AUTOMATIC);
    gtk_widget_set_vexpand(scroll, TRUE);
    gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scroll), column_);
    GtkWidget* all = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    gtk_box_append(GTK_BOX(all), head(shopName));
    gtk_box_append(GTK_BOX(all), scroll);
    gtk_window_set_child(window_, all);
    showBasket("");
    gtk_window_present(window_);
}

void GtkDesktop::watchKeys() {
    GtkEventController* keys = gtk_event_controller_key_new();
    // Before the page: Escape means back wherever the focus is.
    gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
    g_signal_connect(keys, "key-pressed",
                     G_CALLBACK(+[](GtkEventControllerKey*, guint key, guint, GdkModifierType state,
                                    GtkDesktop* self) -> gboolean {
                         // GTK shows no ring where Tab finds nowhere else to go.
                         if (key == GDK_KEY_Tab) gtk_window_set_focus_visible(self->window_, TRUE);
                         const bool isAltLeft = key == GDK_KEY_Left && (state & GDK_ALT_MASK) != 0;
                         if (key != GDK_KEY_Escape && key != GDK_KEY_Back && !isAltLeft)
                             return FALSE;
                         if (!self->events_.isCheckoutOpen()) return FALSE;
                         self->events_.back();
                         return TRUE;
                     }),
                     this);
    gtk_widget_add_controller(GTK_WIDGET(window_), keys);
}

void GtkDesktop::watchClose() {
    g_signal_connect(window_, "close-request",
                     G_CALLBACK(+[](GtkWindow*, GtkDesktop* self) -> gboolean {
                         return self->mayClose() ? FALSE : TRUE;
                     }),
                     this);
}

// Asks; whoever closes the window again while the question stands means it.
bool GtkDesktop::mayClose() {
    if (!events_.isCheckoutOpen() || std::exchange(isAsking_, true)) return true;
    GtkWidget* question = gtk_message_dialog_new(
        window_, static_cast<GtkDialogFlags>(GTK_DIALOG_MODAL | GTK_DIALOG_DESTROY_WITH_PARENT),
        GTK_MESSAGE_QUESTION, GTK_BUTTONS_NONE, "Leave the payment?");
    gtk_message_dialog_format_secondary_text(
        GTK_MESSAGE_DIALOG(question),
        "A payment that is under way in another app goes on without this window.");
    gtk_dialog_add_buttons(GTK_DIALOG(question), "Stay", GTK_RESPONSE_CANCEL, "Leave",
                           GTK_RESPONSE_ACCEPT, nullptr);
    gtk_dialog_set_default_response(GTK_DIALOG(question), GTK_RESPONSE_CANCEL);
    g_signal_connect(question, "response",
                     G_CALLBACK(+[](GtkWindow* asked, int response, GtkDesktop* self) {
                         self->isAsking_ = false;
                         gtk_window_destroy(asked);
                         if (response == GTK_RESPONSE_ACCEPT && self->window_)
                             gtk_window_destroy(self->window_);
                     }),
                     this);
    gtk_window_present(GTK_WINDOW(question));
    return false;
}

void GtkDesktop::clear() {
    while (GtkWidget* child = gtk_widget_get_first_child(column_))
        gtk_box_remove(GTK_BOX(column_), child);
}

void GtkDesktop::addAction(const std::string& text, std::function<void()> act) {
    action_ = button(text, "primary", std::move(act));
    gtk_widget_set_valign(action_, GTK_ALIGN_END);
    gtk_widget_set_vexpand(action_, TRUE);
    gtk_box_append(GTK_BOX(column_), action_);
}

void GtkDesktop::showBasket(const std::string& problem) {
    clear();
    gtk_box_append(GTK_BOX(column_), leftLabel("Your basket", {"section"}));
    GtkWidget* card = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    gtk_widget_add_css_class(card, "card");
    gtk_widget_add_css_class(card, "list");
    for (const BasketItem& item : basket()) {
        GtkWidget* box = itemLine(item);
        if (&item != &basket().front()) gtk_widget_add_css_class(box, "more");
        gtk_box_append(GTK_BOX(card), box);
    }
    GtkWidget* total = line(leftLabel("Total", {"total"}), price(basketTotal(), "total"));
    gtk_widget_add_css_class(total, "item");
    gtk_widget_add_css_class(total, "more");
    gtk_box_append(GTK_BOX(card), total);
    gtk_box_append(GTK_BOX(column_), card);
    gtk_box_append(GTK_BOX(column_),
                   leftLabel("Delivered within four days. Free returns.", {"quiet", "small"}));
    if (!problem.empty()) gtk_box_append(GTK_BOX(column_), leftLabel(problem, {"bad"}));
    addAction(payTitle(), events_.pay);
}

void GtkDesktop::showBusy() {
    GtkWidget* content = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 10);
    gtk_widget_set_halign(content, GTK_ALIGN_CENTER);
    GtkWidget* spinner = gtk_spinner_new();
    gtk_spinner_start(GTK_SPINNER(spinner));
    gtk_box_append(GTK_BOX(content), spinner);
    gtk_box_append(GTK_BOX(content), gtk_label_new("Preparing your order"));
    gtk_button_set_child(GTK_BUTTON(action_), content);
    gtk_widget_set_sensitive(action_, FALSE);
}

void GtkDesktop::showResult(const Dictionary& data) {
    clear();
    const Outcome outcome = outcomeOf(data);
    const auto [sign, style] = markOf(outcome.kind);
    GtkWidget* card = gtk_box_new(GTK_ORIENTATION_VERTICAL, 6);
    gtk_widget_add_css_class(card, "card");
    GtkWidget* mark = gtk_label_new(sign);
    gtk_widget_add_css_class(mark, "mark");
    gtk_widget_add_css_class(mark, style);
    gtk_widget_set_size_request(mark, 72, 72);
    gtk_widget_set_halign(mark, GTK_ALIGN_CENTER);
    gtk_box_append(GTK_BOX(card), mark);
    gtk_box_append(GTK_BOX(card), label(outcome.title, {"outcome"}));
    gtk_box_append(GTK_BOX(card), label(outcome.words, {"quiet"}));
    gtk_box_append(GTK_BOX(column_), card);

    GtkWidget* told = gtk_box_new(GTK_ORIENTATION_VERTICAL, 10);
    gtk_widget_add_css_class(told, "card");
    for (const auto& [key, value] : rowsOf(data))
        gtk_box_append(GTK_BOX(told), row(key, value));
    gtk_widget_set_visible(told, FALSE);
    gtk_box_append(GTK_BOX(column_), button(detailsTitle, "outlined", [told] {
                       gtk_widget_set_visible(told, !gtk_widget_get_visible(told));
                   }));
    gtk_box_append(GTK_BOX(column_), told);
    const bool isDone =
        outcome.kind == Outcome::Kind::success || outcome.kind == Outcome::Kind::unknown;
    addAction(outcome.action, [this, isDone] {
        if (!isDone) return showBasket("");
        if (window_) gtk_window_close(window_);
    });
}

GtkWidget* GtkDesktop::buttonTitled(const std::string& title) const {
    return find(GTK_WIDGET(window_), [&](GtkWidget* widget) {
        if (!GTK_IS_BUTTON(widget)) return false;
        GtkWidget* content = gtk_button_get_child(GTK_BUTTON(widget));
        return GTK_IS_LABEL(content) && title == gtk_label_get_text(GTK_LABEL(content));
    });
}

}  // namespace

std::unique_ptr<Desktop> Desktop::open() {
    auto platform = GtkPlatform::make({.applicationId = "zorvik-demo-merchant"});
    if (!platform) return nullptr;
    return std::make_unique<GtkDesktop>(std::move(platform));
}

}  // namespace zorvik::demo
