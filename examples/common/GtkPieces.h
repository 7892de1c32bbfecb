#pragma once

#include <gtk/gtk.h>

#include <functional>
#include <initializer_list>
#include <string>

namespace zorvik::demo {

// Small pieces of the demonstration's windows. Main thread, unless a line says otherwise; widgets
// are owned by what they are added to.

// The look that all windows share, light or dark as the desktop is now, with this accent colour
// (#rrggbb), and more rules after it. Those may use its colours: @paper, @sheet, @ink, @quiet,
// @edge.
void addStyleSheet(const std::string& accent, const std::string& rules = "");

GtkWidget* label(const std::string& text, std::initializer_list<const char*> styles);
GtkWidget* monogram(const std::string& name);
// A name on the left, a value on the right, which wraps.
GtkWidget* row(const std::string& name, const std::string& value);
// The accent-coloured top of a window.
GtkWidget* head(const std::string& name);
GtkWidget* button(const std::string& text, const char* style, std::function<void()> clicked);

// Runs a task in a turn of the main loop, no earlier than so many milliseconds from now. Any
// thread.
void onMain(std::function<void()> task, unsigned milliseconds = 0);

}  // namespace zorvik::demo
