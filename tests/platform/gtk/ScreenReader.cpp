#include "tests/platform/desktop/ScreenReader.h"

#include <gtk/gtk.h>

#include <cmath>

namespace zorvik::tests {
namespace {

// Before GTK starts: without a bus it tells of its accessible objects in this way alone.
const bool isToldOf = g_setenv("GTK_A11Y", "test", TRUE) != FALSE;

std::string textOf(GtkAccessible* accessible, GtkAccessibleProperty property) {
    if (!gtk_test_accessible_has_property(accessible, property)) return "";
    // Answers what there is when it is not what is asked for.
    char* const other = gtk_test_accessible_check_property(accessible, property, "\1");
    const std::string text = other != nullptr ? other : "";
    g_free(other);
    return text;
}

bool is(GtkAccessible* accessible, GtkAccessibleState state) {
    if (!gtk_test_accessible_has_state(accessible, state)) return false;
    char* const other = gtk_test_accessible_check_state(accessible, state, TRUE);
    g_free(other);
    return other == nullptr;
}

void hear(GtkWidget* widget, std::vector<std::string>& lines) {
    GtkAccessible* const accessible = GTK_ACCESSIBLE(widget);
    if (!gtk_widget_get_mapped(widget) || !gtk_widget_is_sensitive(widget)) return;
    if (is(accessible, GTK_ACCESSIBLE_STATE_HIDDEN)) return;
    const std::pair<GtkAccessibleRole, const char*> roles[] = {
        {GTK_ACCESSIBLE_ROLE_ALERT, "alert"},          {GTK_ACCESSIBLE_ROLE_STATUS, "status"},
        {GTK_ACCESSIBLE_ROLE_LABEL, "text"},           {GTK_ACCESSIBLE_ROLE_BUTTON, "button"},
        {GTK_ACCESSIBLE_ROLE_SCROLLBAR, "scroll bar"},
    };
    std::string line;
    for (const auto& [role, name] : roles)
        if (gtk_test_accessible_has_role(accessible, role)) line = name;
    const char* const type = G_OBJECT_TYPE_NAME(widget);
    if (type == std::string_view("WebKitWebView")) line = "page";
    if (line.empty() && gtk_widget_get_first_child(widget) == nullptr) line = type;
    if (!line.empty()) {
        const std::string name = textOf(accessible, GTK_ACCESSIBLE_PROPERTY_LABEL);
        const std::string description = textOf(accessible, GTK_ACCESSIBLE_PROPERTY_DESCRIPTION);
        if (!name.empty()) line += ": " + name;
        if (!description.empty()) line += " (" + description + ")";
        if (is(accessible, GTK_ACCESSIBLE_STATE_BUSY)) line += " busy";
        if (gtk_widget_is_focus(widget)) line += " focused";
        lines.push_back(line);
    }
    if (line.starts_with("button") || line.starts_with("page")) return;
    for (GtkWidget* child = gtk_widget_get_first_child(widget); child != nullptr;
         child = gtk_widget_get_next_sibling(child))
        hear(child, lines);
}

}  // namespace

std::vector<std::string> heard(void* window) {
    std::vector<std::string> lines;
    hear(gtk_window_get_child(GTK_WINDOW(window)), lines);
    return lines;
}

void setTextScale(double scale) {
    const int dpi = static_cast<int>(std::lround(96 * scale * PANGO_SCALE));
    g_object_set(gtk_settings_get_default(), "gtk-xft-dpi", dpi, nullptr);
}

}  // namespace zorvik::tests
