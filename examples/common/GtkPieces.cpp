#include "examples/common/GtkPieces.h"

namespace zorvik::demo {

namespace {

constexpr const char* sharedRules = R"css(
window { background: #f5f6f8; color: #17212d; }
.head { background: @accent; color: #ffffff; padding: 18px 20px; }
.head .monogram { background: alpha(#ffffff, 0.18); border-radius: 12px; font-weight: 700; }
.head .name { font-weight: 700; font-size: 17px; }
.card { background: #ffffff; border: 1px solid #dfe4ea; border-radius: 16px; padding: 22px 20px; }
.quiet { color: #566273; }
.small { font-size: 13px; }
.heading { font-weight: 700; font-size: 19px; }
.amount { font-weight: 750; font-size: 40px; padding: 14px 0 10px 0; }
.rows { border-top: 1px solid #e6eaef; padding-top: 14px; margin-top: 10px; }
.good { color: #0b6560; }
.bad { color: #a3261b; }
button { background: none; border: none; box-shadow: none; border-radius: 12px; min-height: 48px; font-size: 15px; font-weight: 650; color: #2b3949; }
button:hover { background: #e9edf1; }
button.primary { background: @accent; color: #ffffff; }
button.primary:hover { background: shade(@accent, 0.88); }
button.primary:disabled { background: #d8dee5; color: #5a6675; }
button.outlined { border: 1px solid #aab4c0; background: #ffffff; }
button.outlined:hover { background: #f0f3f6; }
button:focus-visible { outline: 3px solid #2b6cb0; outline-offset: 2px; }
)css";

using Function = std::function<void()>;

void release(gpointer function) {
    delete static_cast<Function*>(function);
}

std::string initials(const std::string& name) {
    const std::size_t space = name.find(' ');
    return name.substr(0, 1) + (space == name.npos ? "" : name.substr(space + 1, 1));
}

}  // namespace

void addStyleSheet(const std::string& accent, const std::string& rules) {
    GtkCssProvider* provider = gtk_css_provider_new();
    const std::string css = "@define-color accent " + accent + ";" + sharedRules + rules;
    gtk_css_provider_load_from_data(provider, css.c_str(), -1);
    gtk_style_context_add_provider_for_display(gdk_display_get_default(),
                                               GTK_STYLE_PROVIDER(provider),
                                               GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    g_object_unref(provider);
}

GtkWidget* label(const std::string& text, std::initializer_list<const char*> styles) {
    GtkWidget* widget = gtk_label_new(text.c_str());
    gtk_label_set_wrap(GTK_LABEL(widget), TRUE);
    gtk_label_set_wrap_mode(GTK_LABEL(widget), PANGO_WRAP_WORD_CHAR);
    for (const char* style : styles)
        gtk_widget_add_css_class(widget, style);
    return widget;
}

GtkWidget* monogram(const std::string& name) {
    GtkWidget* widget = gtk_label_new(initials(name).c_str());
    gtk_widget_add_css_class(widget, "monogram");
    gtk_widget_set_size_request(widget, 42, 42);
    return widget;
}

GtkWidget* row(const std::string& name, const std::string& value) {
    GtkWidget* box = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 16);
    GtkWidget* left = gtk_label_new(name.c_str());
    gtk_widget_add_css_class(left, "quiet");
    gtk_widget_add_css_class(left, "small");
    GtkWidget* right = label(value, {"small"});
    gtk_widget_set_hexpand(right, TRUE);
    gtk_widget_set_valign(left, GTK_ALIGN_START);
    gtk_label_set_xalign(GTK_LABEL(left), 0);
    gtk_label_set_xalign(GTK_LABEL(right), 1);
    gtk_label_set_justify(GTK_LABEL(right), GTK_JUSTIFY_RIGHT);
    gtk_box_append(GTK_BOX(box), left);
    gtk_box_append(GTK_BOX(box), right);
    return box;
}

GtkWidget* head(const std::string& name) {
    GtkWidget* box = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 14);
    gtk_widget_add_css_class(box, "head");
    GtkWidget* text = gtk_label_new(name.c_str());
    gtk_widget_add_css_class(text, "name");
    gtk_box_append(GTK_BOX(box), monogram(name));
    gtk_box_append(GTK_BOX(box), text);
    return box;
}

GtkWidget* button(const std::string& text, const char* style, Function clicked) {
    GtkWidget* widget = gtk_button_new_with_label(text.c_str());
    gtk_widget_add_css_class(widget, style);
    g_signal_connect_data(
        widget, "clicked",
        G_CALLBACK(+[](GtkWidget*, gpointer function) { (*static_cast<Function*>(function))(); }),
        new Function(std::move(clicked)), [](gpointer function, GClosure*) { release(function); },
        GConnectFlags{});
    return widget;
}

void onMain(Function task, unsigned milliseconds) {
    g_timeout_add_full(
        G_PRIORITY_DEFAULT, milliseconds,
        [](gpointer function) -> gboolean {
            (*static_cast<Function*>(function))();
            return G_SOURCE_REMOVE;
        },
        new Function(std::move(task)), release);
}

}  // namespace zorvik::demo
