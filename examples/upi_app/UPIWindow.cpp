#include "examples/upi_app/UPIWindow.h"

#include <algorithm>
#include <cmath>
#include <thread>

#include "examples/common/GtkPieces.h"
#include "examples/common/HttpClient.h"
#include "examples/common/Money.h"
#include "examples/common/Words.h"
#include "examples/upi_app/UPIStyle.h"

namespace zorvik::demo {

using platform::Dictionary;
using platform::Result;

namespace {

// Buttons and automatic mode alike.
constexpr Answer answers[] = {
    {"pay", "SUCCESS", "success", true, "Paid"},
    {"decline", "FAILED", "failure", true, "Declined in the app"},
    {"cancel", "FAILED", "cancelled", true, "Cancelled in the app"},
    {"back", "", "", false, ""},
    {"pending", "PENDING", "success", true, "The bank is still working on it"},
    {"odd", "PENDING", "submitted", true, "The bank is still working on it"},
    {"quiet", "SUCCESS", "", true, "Paid"},
    {"silent", "PENDING", "", false, "The bank is still working on it"},
};

std::string storyOf(const Answer& answer) {
    if (answer.status == "FAILED")
        return answer.name == "cancel" ? "customer cancels" : "customer declines";
    return answer.status == "PENDING" ? "customer pays, which the bank has not confirmed yet,"
                                      : "customer pays";
}

GtkWidget* centred(const std::string& text, std::initializer_list<const char*> styles) {
    GtkWidget* widget = label(text, styles);
    gtk_label_set_justify(GTK_LABEL(widget), GTK_JUSTIFY_CENTER);
    return widget;
}

GtkWidget* column(int spacing) {
    GtkWidget* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, spacing);
    gtk_widget_set_margin_top(box, 20 - spacing);
    gtk_widget_set_margin_bottom(box, 20);
    gtk_widget_set_margin_start(box, 16);
    gtk_widget_set_margin_end(box, 16);
    gtk_widget_set_halign(box, GTK_ALIGN_CENTER);
    // As wide as the page's column where there is room, narrower where there is not.
    GdkPaintable* width = gdk_paintable_new_empty(448, 1);
    gtk_box_append(GTK_BOX(box), gtk_picture_new_for_paintable(width));
    g_object_unref(width);
    return box;
}

}  // namespace

struct UPIWindow::Report {
    const Answer& answer;
    std::optional<std::string> problem;
};

const Answer* answerByName(std::string_view name) {
    const auto* found = std::find_if(std::begin(answers), std::end(answers),
                                     [name](const Answer& one) { return one.name == name; });
    return found == std::end(answers) ? nullptr : found;
}

UPIWindow::UPIWindow(const DemoUPIApp& app, Result<PaymentRequest> request, std::string backendUrl)
    : app_(app), request_(std::move(request)), backendUrl_(std::move(backendUrl)) {
    build();
}

UPIWindow::~UPIWindow() {
    *self_ = nullptr;
    if (window_) gtk_window_destroy(GTK_WINDOW(window_));
}

void UPIWindow::build() {
    addStyleSheet(app_.accent);
    followDesktopStyle(app_.accent);
    window_ = gtk_window_new();
    gtk_window_set_title(GTK_WINDOW(window_), app_.name.c_str());
    gtk_window_set_default_size(GTK_WINDOW(window_), 390, 844);
    g_signal_connect(window_, "destroy",
                     G_CALLBACK(+[](GtkWidget*, UPIWindow* self) { self->window_ = nullptr; }),
                     this);
    GtkEventController* keys = gtk_event_controller_key_new();
    g_signal_connect(keys, "key-pressed", G_CALLBACK(keyPressed), this);
    gtk_widget_add_controller(window_, keys);

    stack_ = gtk_stack_new();
    GtkWidget* scroller = gtk_scrolled_window_new();
    gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scroller), GTK_POLICY_NEVER,
                                   GTK_POLICY_AUTOMATIC);
    gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scroller), stack_);
    gtk_widget_set_vexpand(scroller, TRUE);
    gtk_stack_add_child(GTK_STACK(stack_), requestView());

    GtkWidget* all = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    gtk_box_append(GTK_BOX(all), head(app_.name));
    gtk_box_append(GTK_BOX(all), scroller);
    gtk_window_set_child(GTK_WINDOW(window_), all);
    gtk_widget_grab_focus(gtk_widget_get_first_child(actions_));
    gtk_window_present(GTK_WINDOW(window_));
    say("step " + app_.name + " opens");
}

gboolean UPIWindow::keyPressed(GtkEventControllerKey*, guint key, guint, GdkModifierType,
                               UPIWindow* self) {
    if (key != GDK_KEY_Escape) return FALSE;
    self->answer(*answerByName("cancel"));
    return TRUE;
}

GtkWidget* UPIWindow::requestView() {
    GtkWidget* view = column(16);
    gtk_box_append(GTK_BOX(view), details());
    actions_ = gtk_box_new(GTK_ORIENTATION_VERTICAL, 8);
    gtk_widget_set_valign(actions_, GTK_ALIGN_END);
    gtk_widget_set_vexpand(actions_, TRUE);
    if (request_) {
        const PaymentRequest& request = request_.value();
        const std::string pay = "Pay " + moneyText(request.amount, request.currency);
        gtk_box_append(GTK_BOX(actions_), answerButton(pay, "primary", "pay"));
        gtk_box_append(GTK_BOX(actions_), answerButton("Decline", "outlined", "decline"));
        gtk_box_append(GTK_BOX(actions_), answerButton("Cancel", "outlined", "cancel"));
        gtk_box_append(GTK_BOX(actions_), answerButton("Just go back", "plain", "back"));
    } else {
        gtk_box_append(GTK_BOX(actions_), answerButton("Close", "primary", "back"));
    }
    gtk_box_append(GTK_BOX(view), actions_);
    return view;
}

GtkWidget* UPIWindow::details() {
    GtkWidget* card = gtk_box_new(GTK_ORIENTATION_VERTICAL, 4);
    gtk_widget_add_css_class(card, "card");
    if (!request_) {
        gtk_box_append(GTK_BOX(card), centred("This payment cannot be shown", {"heading"}));
        gtk_box_append(GTK_BOX(card), centred(request_.error().localizedDescription, {"quiet"}));
        return card;
    }
    const PaymentRequest& request = request_.value();
    gtk_box_append(GTK_BOX(card), centred("Paying", {"quiet"}));
    gtk_box_append(
        GTK_BOX(card),
        centred(request.payeeName.empty() ? request.payeeAddress : request.payeeName, {"heading"}));
    gtk_box_append(GTK_BOX(card), centred(request.payeeAddress, {"quiet", "small"}));
    gtk_box_append(GTK_BOX(card), centred(moneyText(request.amount, request.currency), {"amount"}));
    GtkWidget* rows = gtk_box_new(GTK_ORIENTATION_VERTICAL, 8);
    gtk_widget_add_css_class(rows, "rows");
    gtk_box_append(GTK_BOX(rows), row("From", "Savings account ••• 4417"));
    if (!request.note.empty()) gtk_box_append(GTK_BOX(rows), row("For", request.note));
    gtk_box_append(GTK_BOX(rows), row("Reference", request.transactionReference));
    gtk_box_append(GTK_BOX(card), rows);
    return card;
}

GtkWidget* UPIWindow::answerButton(const std::string& text, const char* style,
                                   const char* answerName) {
    const Answer* chosen = answerByName(answerName);
    GtkWidget* widget = button(text, style, [this, chosen] { answer(*chosen); });
    GtkLabel* words = GTK_LABEL(gtk_button_get_child(GTK_BUTTON(widget)));
    gtk_label_set_wrap(words, TRUE);
    gtk_label_set_justify(words, GTK_JUSTIFY_CENTER);
    return widget;
}

void UPIWindow::answer(const Answer& answer) {
    if (!window_ || isAnswered_) return;
    if (answer.status.empty() || !request_) {
        say("step customer leaves " + app_.name + " without paying");
        return closeAfter(0);
    }
    isAnswered_ = true;
    gtk_widget_set_sensitive(actions_, FALSE);
    Dictionary report{{"status", answer.status},
                      {"message", answer.words},
                      {"return_reference", answer.returnsReference}};
    if (!answer.returnStatus.empty()) report["return_status"] = answer.returnStatus;
    const std::string url =
        backendUrl_ + "/api/bank/upi/" + percentEncoded(request_.value().transactionReference);
    // The window stays alive and drawn while the bank is asked.
    std::thread([self = self_, url, report, &answer] {
        const auto result = exchange("POST", url, report);
        std::optional<std::string> problem;
        if (!result) problem = result.error().localizedDescription;
        onMain([self, &answer, problem] {
            if (*self) (*self)->finish(Report{answer, problem});
        });
    }).detach();
}

void UPIWindow::finish(const Report& report) {
    if (!window_) return;
    if (report.problem) {
        say("step customer cannot pay in " + app_.name + ": " + *report.problem);
        showResult("Not paid", "Nothing has been charged. " + *report.problem, "bad");
        return closeAfter(2500);
    }
    const bool isPaid = report.answer.status == "SUCCESS";
    say("step " + storyOf(report.answer) + " in " + app_.name);
    showResult(isPaid ? "Payment sent" : std::string(report.answer.words),
               "Going back to the shop…", report.answer.status == "FAILED" ? "bad" : "good");
    closeAfter(resultMilliseconds_);
}

void UPIWindow::showResult(const std::string& title, const std::string& words, const char* kind) {
    GtkWidget* view = column(10);
    gtk_widget_set_valign(view, GTK_ALIGN_CENTER);
    GtkWidget* mark = centred(std::string_view(kind) == "bad" ? "✕" : "✓", {"mark", kind});
    gtk_widget_set_halign(mark, GTK_ALIGN_CENTER);
    gtk_box_append(GTK_BOX(view), mark);
    gtk_box_append(GTK_BOX(view), centred(title, {"outcome"}));
    gtk_box_append(GTK_BOX(view), centred(words, {"quiet"}));
    gtk_accessible_update_property(GTK_ACCESSIBLE(view), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                   (title + ". " + words).c_str(), -1);
    gtk_stack_add_child(GTK_STACK(stack_), view);
    gtk_stack_set_visible_child(GTK_STACK(stack_), view);
    // A screen reader reads what has the focus.
    gtk_widget_set_focusable(view, TRUE);
    gtk_widget_grab_focus(view);
}

void UPIWindow::closeAfter(unsigned milliseconds) {
    onMain(
        [self = self_] {
            if (*self && (*self)->window_) gtk_window_destroy(GTK_WINDOW((*self)->window_));
        },
        milliseconds);
}

void UPIWindow::answerAfter(double seconds, const Answer& answer, const std::string& pngFolder) {
    resultMilliseconds_ = 700;  // nobody reads it
    // Late enough for the window to be drawn.
    constexpr double drawn = 0.6;
    if (!pngFolder.empty()) {
        onMain(
            [self = self_, path = pngFolder + "/upi-app.png"] {
                if (!*self) return;
                if (!(*self)->savePng(path))
                    return g_printerr("%s was not written\n", path.c_str());
                say("png " + path);
            },
            static_cast<unsigned>(drawn * 1000));
    }
    onMain(
        [self = self_, &answer] {
            if (*self) (*self)->answer(answer);
        },
        static_cast<unsigned>(std::max(seconds, drawn + 0.1) * 1000));
}

bool UPIWindow::savePng(const std::string& path) {
    GskRenderer* renderer = window_ ? gtk_native_get_renderer(GTK_NATIVE(window_)) : nullptr;
    if (!renderer) return false;
    GdkPaintable* paintable = gtk_widget_paintable_new(window_);
    GtkSnapshot* snapshot = gtk_snapshot_new();
    gdk_paintable_snapshot(paintable, snapshot, gtk_widget_get_width(window_),
                           gtk_widget_get_height(window_));
    g_object_unref(paintable);
    GskRenderNode* node = gtk_snapshot_free_to_node(snapshot);
    if (!node) return false;
    GdkTexture* texture = gsk_renderer_render_texture(renderer, node, nullptr);
    gsk_render_node_unref(node);
    const bool isSaved = gdk_texture_save_to_png(texture, path.c_str());
    g_object_unref(texture);
    return isSaved;
}

}  // namespace zorvik::demo
