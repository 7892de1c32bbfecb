#include "examples/merchant/MerchantWindow.h"

#include "examples/common/GtkPieces.h"
#include "examples/common/OrderRecordJSON.h"

namespace zorvik::demo {

using platform::Dictionary;

namespace {

constexpr const char* shopName = "Teal Heron";
constexpr const char* ownRules = R"css(
.card.list { padding: 6px 20px; }
.item { padding: 14px 0; }
.item.more { border-top: 1px solid #e6eaef; }
.title { font-weight: 620; font-size: 16px; }
.price { font-weight: 620; font-size: 16px; }
.total { font-weight: 700; font-size: 20px; }
.section { font-weight: 700; font-size: 22px; padding: 4px 2px; }
.outcome { font-weight: 700; font-size: 24px; padding-top: 8px; }
.mark { border-radius: 99px; color: #ffffff; font-size: 26px; font-weight: 800; }
.mark.good { background: #0b6560; color: #ffffff; }
.mark.bad { background: #a3261b; color: #ffffff; }
.mark.open { background: #80590b; color: #ffffff; }
)css";

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

// The order's status wherever the answer keeps it: at the top, as the checkout page writes it, or
// within "order", as an enquiry does.
std::string statusIn(const Dictionary& data) {
    if (data.contains("error")) return "FAILED";
    const auto order = data.find("order");
    if (order != data.end() && order->second.dictionary()) {
        return textOf(*order->second.dictionary(), "status");
    }
    return textOf(data, "status");
}

struct Outcome {
    const char* sign;
    const char* style;
    const char* title;
    std::string words;
};

Outcome outcomeOf(const Dictionary& data) {
    const std::string status = statusIn(data);
    if (status == "SUCCESS") return {"✓", "good", "Thank you", "Your order is on its way to you."};
    if (status == "PENDING" || status == "CREATED") {
        return {"…", "open", "Payment under way",
                "We will write as soon as your bank confirms it."};
    }
    if (status == "CANCELLED") return {"×", "bad", "Not paid", "Your basket is waiting for you."};
    const std::string error = textOf(data, "error");
    return {"×", "bad", "Payment not completed", error.empty() ? textOf(data, "message") : error};
}

// An order token is longer than anybody reads.
std::string shortened(const std::string& text) {
    constexpr std::size_t most = 32;
    if (text.size() <= most) return text;
    std::size_t end = most;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80)
        --end;
    return text.substr(0, end) + "…";
}

}  // namespace

MerchantWindow::MerchantWindow(const std::vector<BasketItem>& items, const std::string& total,
                               std::function<void()> pay)
    : items_(items), total_(total), pay_(std::move(pay)) {
    addStyleSheet("#0b6560", ownRules);
    window_ = GTK_WINDOW(gtk_window_new());
    gtk_window_set_title(window_, shopName);
    gtk_window_set_default_size(window_, 440, 820);
    g_signal_connect(window_, "destroy",
                     G_CALLBACK(+[](GtkWidget*, MerchantWindow* self) { self->window_ = nullptr; }),
                     this);

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
    showBasket("", false);
    gtk_window_present(window_);
}

MerchantWindow::~MerchantWindow() {
    if (window_) gtk_window_destroy(window_);
}

void MerchantWindow::showBasket(const std::string& note, bool isBad) {
    while (GtkWidget* child = gtk_widget_get_first_child(column_)) {
        gtk_box_remove(GTK_BOX(column_), child);
    }
    gtk_box_append(GTK_BOX(column_), leftLabel("Your basket", {"section"}));
    GtkWidget* card = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    gtk_widget_add_css_class(card, "card");
    gtk_widget_add_css_class(card, "list");
    for (const BasketItem& item : items_) {
        GtkWidget* box = itemLine(item);
        if (&item != &items_.front()) gtk_widget_add_css_class(box, "more");
        gtk_box_append(GTK_BOX(card), box);
    }
    GtkWidget* total = line(leftLabel("Total", {"total"}), price(total_, "total"));
    gtk_widget_add_css_class(total, "item");
    gtk_widget_add_css_class(total, "more");
    gtk_box_append(GTK_BOX(card), total);
    gtk_box_append(GTK_BOX(column_), card);
    gtk_box_append(GTK_BOX(column_),
                   leftLabel("Delivered within four days. Free returns.", {"quiet", "small"}));
    if (!note.empty()) {
        gtk_box_append(GTK_BOX(column_), leftLabel(note, {isBad ? "bad" : "quiet"}));
    }
    payButton_ = button("Pay " + moneyText(total_, "INR"), "primary", pay_);
    gtk_widget_set_valign(payButton_, GTK_ALIGN_END);
    gtk_widget_set_vexpand(payButton_, TRUE);
    gtk_box_append(GTK_BOX(column_), payButton_);
}

void MerchantWindow::showBusy() {
    gtk_widget_set_sensitive(payButton_, FALSE);
}

void MerchantWindow::showProblem(const std::string& words) {
    showBasket(words, true);
}

void MerchantWindow::showResult(const Dictionary& data) {
    while (GtkWidget* child = gtk_widget_get_first_child(column_)) {
        gtk_box_remove(GTK_BOX(column_), child);
    }
    const Outcome outcome = outcomeOf(data);
    GtkWidget* card = gtk_box_new(GTK_ORIENTATION_VERTICAL, 6);
    gtk_widget_add_css_class(card, "card");
    GtkWidget* mark = gtk_label_new(outcome.sign);
    gtk_widget_add_css_class(mark, "mark");
    gtk_widget_add_css_class(mark, outcome.style);
    gtk_widget_set_size_request(mark, 56, 56);
    gtk_widget_set_halign(mark, GTK_ALIGN_CENTER);
    gtk_box_append(GTK_BOX(card), mark);
    gtk_box_append(GTK_BOX(card), label(outcome.title, {"outcome"}));
    gtk_box_append(GTK_BOX(card), label(outcome.words, {"quiet"}));
    gtk_box_append(GTK_BOX(column_), card);

    gtk_box_append(GTK_BOX(column_), leftLabel("What the checkout told the shop", {"quiet"}));
    GtkWidget* told = gtk_box_new(GTK_ORIENTATION_VERTICAL, 10);
    gtk_widget_add_css_class(told, "card");
    for (const auto& [key, value] : data) {
        gtk_box_append(GTK_BOX(told), row(key, shortened(platform::description(value))));
    }
    gtk_box_append(GTK_BOX(column_), told);
    payButton_ = button("Close", "primary", [this] {
        if (window_) gtk_window_close(window_);
    });
    gtk_widget_set_valign(payButton_, GTK_ALIGN_END);
    gtk_widget_set_vexpand(payButton_, TRUE);
    gtk_box_append(GTK_BOX(column_), payButton_);
}

}  // namespace zorvik::demo
