#include "examples/common/GtkPieces.h"

#include <string_view>

namespace zorvik::demo {

namespace {

constexpr const char* lightColors = R"css(
@define-color paper #f5f6f8;
@define-color sheet #ffffff;
@define-color ink #17212d;
@define-color quiet #566273;
@define-color edge #dfe4ea;
@define-color hover #e9edf1;
@define-color outline #8793a1;
@define-color off #d8dee5;
@define-color off_ink #566273;
@define-color good #0b6560;
@define-color bad #a3261b;
@define-color focus #2b6cb0;
)css";
constexpr const char* darkColors = R"css(
@define-color paper #12171d;
@define-color sheet #1b222b;
@define-color ink #e8ecf1;
@define-color quiet #a8b4c1;
@define-color edge #323d49;
@define-color hover #27313c;
@define-color outline #76838f;
@define-color off #2a343f;
@define-color off_ink #a8b4c1;
@define-color good #5cc2b8;
@define-color bad #ff9a8f;
@define-color focus #8abdf5;
)css";

// Sizes of type in points: they follow the desktop's text scale, which pixels do not.
constexpr const char* sharedRules = R"css(
window { background: @paper; color: @ink; font-size: 11pt; }
.head { background: @accent; color: #ffffff; padding: 18px 20px; }
.head .monogram { background: alpha(#ffffff, 0.18); border-radius: 12px; font-size: 14px; font-weight: 700; }
.head .name { font-weight: 700; font-size: 12.75pt; }
.card { background: @sheet; border: 1px solid @edge; border-radius: 16px; padding: 22px 20px; }
.quiet { color: @quiet; }
.small { font-size: 9.75pt; }
.heading { font-weight: 700; font-size: 14.25pt; }
.amount { font-weight: 750; font-size: 30pt; padding: 14px 0 10px 0; }
.rows { border-top: 1px solid @edge; padding-top: 14px; margin-top: 10px; }
.good { color: @good; }
.bad { color: @bad; }
button { background: none; border: none; box-shadow: none; border-radius: 12px; min-height: 48px; font-size: 11.25pt; font-weight: 650; color: @ink; }
button:hover { background: @hover; }
button.primary { background: @accent; color: #ffffff; }
button.primary:hover { background: shade(@accent, 0.88); }
button.primary:disabled { background: @off; color: @off_ink; }
button.outlined { border: 1px solid @outline; background: @sheet; }
button.outlined:hover { background: @hover; }
button:focus-visible { outline: 3px solid @focus; outline-offset: 2px; }
)css";

// scripts/demo stands for the settings of a desktop, which a bare X server has not.
void takeSettings() {
    const char* look = g_getenv("ZORVIK_DEMO_LOOK");
    if (look && std::string_view(look) == "dark") {
        g_object_set(gtk_settings_get_default(), "gtk-application-prefer-dark-theme", TRUE,
                     nullptr);
    }
    const char* scale = g_getenv("ZORVIK_DEMO_TEXT_SCALE");
    if (scale && std::string_view(scale) != "1") {
        const int dotsPerInch = static_cast<int>(g_ascii_strtod(scale, nullptr) * 96 * PANGO_SCALE);
        g_object_set(gtk_settings_get_default(), "gtk-xft-dpi", dotsPerInch, nullptr);
    }
}

// Whatever told the desktop so: its own theme's background.
bool isDark(GtkWidget* widget) {
    GdkRGBA background;
    if (!gtk_style_context_lookup_color(gtk_widget_get_style_context(widget), "theme_bg_color",
                                        &background)) {
        return false;
    }
    return background.red + background.green + background.blue < 1.5F;
}

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
    takeSettings();
    GtkWidget* asked = gtk_label_new(nullptr);
    g_object_ref_sink(asked);
    const std::string css = "@define-color accent " + accent + ";" +
                            (isDark(asked) ? darkColors : lightColors) + sharedRules + rules;
    g_object_unref(asked);
    GtkCssProvider* provider = gtk_css_provider_new();
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
    gtk_label_set_justify(GTK_LABEL(widget), GTK_JUSTIFY_CENTER);
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
    GtkLabel* words = GTK_LABEL(gtk_button_get_child(GTK_BUTTON(widget)));
    gtk_label_set_wrap(words, TRUE);
    gtk_label_set_justify(words, GTK_JUSTIFY_CENTER);
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
