#include "examples/upi_app/UPIWindow.h"

#include <algorithm>
#include <cmath>
#include <thread>

#include "examples/common/GtkPieces.h"
#include "examples/common/HttpClient.h"
#include "examples/common/Money.h"
#include "examples/common/Words.h"

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

constexpr const char* ownRules =
    ".outcome { font-weight: 700; font-size: 22px; padding-top: 24px; }";

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
    addStyleSheet(app_.accent, ownRules);
    window_ = gtk_window_new();
    gtk_window_set_title(GTK_WINDOW(window_), app_.name.c_str());
    gtk_window_set_default_size(GTK_WINDOW(window_), 420, 760);
    g_signal_connect(window_, "destroy",
                     G_CALLBACK(+[](GtkWidget*, UPIWindow* self) { self->window_ = nullptr; }),
                     this);

    GtkWidget* column = gtk_box_new(GTK_ORIENTATION_VERTICAL, 18);
    gtk_widget_set_size_request(column, 320, -1);
    gtk_widget_set_margin_top(column, 24);
    gtk_widget_set_margin_bottom(column, 24);
    gtk_widget_set_margin_start(column, 18);
    gtk_widget_set_margin_end(column, 18);
    gtk_widget_set_vexpand(column, TRUE);
    gtk_box_append(GTK_BOX(column), details());

    actions_ = gtk_box_new(GTK_ORIENTATION_VERTICAL, 10);
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
    gtk_box_append(GTK_BOX(column), actions_);

    GtkWidget* all = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    gtk_box_append(GTK_BOX(all), head(app_.name));
    gtk_box_append(GTK_BOX(all), column);
    gtk_window_set_child(GTK_WINDOW(window_), all);
    gtk_window_present(GTK_WINDOW(window_));
    say("step " + app_.name + " opens");
}

GtkWidget* UPIWindow::details() {
    GtkWidget* card = gtk_box_new(GTK_ORIENTATION_VERTICAL, 4);
    gtk_widget_add_css_class(card, "card");
    if (!request_) {
        gtk_box_append(GTK_BOX(card), label("This payment cannot be shown", {"heading"}));
        gtk_box_append(GTK_BOX(card), label(request_.error().localizedDescription, {"quiet"}));
        return card;
    }
    const PaymentRequest& request = request_.value();
    gtk_box_append(GTK_BOX(card), label("Paying", {"quiet"}));
    gtk_box_append(
        GTK_BOX(card),
        label(request.payeeName.empty() ? request.payeeAddress : request.payeeName, {"heading"}));
    gtk_box_append(GTK_BOX(card), label(request.payeeAddress, {"quiet", "small"}));
    gtk_box_append(GTK_BOX(card), label(moneyText(request.amount, request.currency), {"amount"}));
    GtkWidget* rows = gtk_box_new(GTK_ORIENTATION_VERTICAL, 8);
    gtk_widget_add_css_class(rows, "rows");
    gtk_box_append(GTK_BOX(rows), row("From", "Savings account ••• 4417"));
    if (!request.note.empty()) gtk_box_append(GTK_BOX(rows), row("For", request.note));
    gtk_box_append(GTK_BOX(rows), row("Reference", request.transactionReference));
    gtk_box_append(GTK_BOX(card), rows);
    title_ = label("", {"outcome"});
    words_ = label("", {"quiet"});
    gtk_widget_set_visible(title_, FALSE);
    gtk_widget_set_visible(words_, FALSE);
    gtk_box_append(GTK_BOX(card), title_);
    gtk_box_append(GTK_BOX(card), words_);
    return card;
}

GtkWidget* UPIWindow::answerButton(const std::string& text, const char* style,
                                   const char* answerName) {
    const Answer* chosen = answerByName(answerName);
    return button(text, style, [this, chosen] { answer(*chosen); });
}

void UPIWindow::answer(const Answer& answer) {
    if (!window_) return;
    if (answer.status.empty() || !request_) {
        say("step customer leaves " + app_.name + " without paying");
        return closeAfter(0);
    }
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
        showOutcome("Not paid", *report.problem, false);
        gtk_widget_set_sensitive(actions_, TRUE);
        return closeAfter(2500);
    }
    const bool isPaid = report.answer.status == "SUCCESS";
    say("step " + storyOf(report.answer) + " in " + app_.name);
    showOutcome(isPaid ? "Payment sent" : std::string(report.answer.words),
                "Going back to the shop…", report.answer.status != "FAILED");
    closeAfter(700);
}

void UPIWindow::showOutcome(const std::string& title, const std::string& words, bool isGood) {
    gtk_label_set_text(GTK_LABEL(title_), title.c_str());
    gtk_label_set_text(GTK_LABEL(words_), words.c_str());
    gtk_widget_remove_css_class(title_, isGood ? "bad" : "good");
    gtk_widget_add_css_class(title_, isGood ? "good" : "bad");
    gtk_widget_set_visible(title_, TRUE);
    gtk_widget_set_visible(words_, TRUE);
}

void UPIWindow::closeAfter(unsigned milliseconds) {
    onMain(
        [self = self_] {
            if (*self && (*self)->window_) gtk_window_destroy(GTK_WINDOW((*self)->window_));
        },
        milliseconds);
}

void UPIWindow::answerAfter(double seconds, const Answer& answer, const std::string& pngFolder) {
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
