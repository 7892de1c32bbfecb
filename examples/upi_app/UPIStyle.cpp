#include "examples/upi_app/UPIStyle.h"

#include <gtk/gtk.h>

namespace zorvik::demo {

namespace {

constexpr const char* light =
    "@define-color ground #ffffff; @define-color surface #f6f8fa; @define-color ink #16212e;"
    "@define-color quiet #52606f; @define-color line #d9e0e7; @define-color control #76838f;"
    "@define-color good #0b6560; @define-color bad #a3261b; @define-color focus #1f5fae;";
constexpr const char* dark =
    "@define-color ground #10161c; @define-color surface #19212a; @define-color ink #e9eef3;"
    "@define-color quiet #a9b6c3; @define-color line #313c48; @define-color control #8391a0;"
    "@define-color good #62cbbf; @define-color bad #ffb3a8; @define-color focus #8ec1ff;";

// Text in points, which the desktop's text scale makes larger; pixels stay as they are.
constexpr const char* rules = R"css(
window { background: @ground; color: @ink; font-size: 12pt; }
.head { padding: 14px 16px; }
.head .name { font-size: 12pt; }
.head .monogram { font-size: 16px; }
.card { background: @surface; border-color: @line; border-radius: 14px; padding: 20px 16px; }
.quiet { color: @quiet; }
.small { font-size: 10pt; }
.heading { font-size: 15pt; }
.amount { font-size: 24pt; padding: 8px 0; }
.rows { border-color: @line; }
.mark { font-size: 30pt; font-weight: 700; color: @ground; border-radius: 999px; min-width: 2em; min-height: 2em; }
.mark.good { background: @good; }
.mark.bad { background: @bad; }
.outcome { font-weight: 700; font-size: 18pt; }
button { font-size: 12pt; color: @ink; min-height: 48px; }
button:hover { background: alpha(@control, 0.2); }
button.primary { background: @accent; color: #ffffff; }
button.primary:hover { background: shade(@accent, 0.88); }
button.primary:disabled { background: @line; color: @quiet; }
button.outlined { background: @ground; border-color: @control; }
button.outlined:hover { background: alpha(@control, 0.2); }
button:focus-visible { outline-color: @focus; }
)css";

bool isDark(GtkSettings* settings) {
    gboolean prefersDark = FALSE;
    char* theme = nullptr;
    g_object_get(settings, "gtk-application-prefer-dark-theme", &prefersDark, "gtk-theme-name",
                 &theme, nullptr);
    const bool isDarkTheme = theme && g_str_has_suffix(theme, "-dark");
    g_free(theme);
    return prefersDark || isDarkTheme;
}

}  // namespace

void followDesktopStyle(const std::string& accent) {
    GtkSettings* settings = gtk_settings_get_default();
    GtkCssProvider* provider = gtk_css_provider_new();
    g_object_set_data_full(G_OBJECT(provider), "accent", g_strdup(accent.c_str()), g_free);
    gtk_style_context_add_provider_for_display(gdk_display_get_default(),
                                               GTK_STYLE_PROVIDER(provider),
                                               GTK_STYLE_PROVIDER_PRIORITY_APPLICATION + 1);
    const auto load = +[](GtkSettings* changed, GParamSpec*, GtkCssProvider* style) {
        const auto* colour = static_cast<const char*>(g_object_get_data(G_OBJECT(style), "accent"));
        const std::string css = std::string(isDark(changed) ? dark : light) +
                                "@define-color accent " + colour + ";" + rules;
        gtk_css_provider_load_from_data(style, css.c_str(), -1);
    };
    load(settings, nullptr, provider);
    for (const char* change :
         {"notify::gtk-application-prefer-dark-theme", "notify::gtk-theme-name"}) {
        g_signal_connect_object(settings, change, G_CALLBACK(load), provider, GConnectFlags{});
    }
    g_object_unref(provider);
}

}  // namespace zorvik::demo
