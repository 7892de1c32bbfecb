#pragma once

#include <gtk/gtk.h>

#include <string>

#include "platform/foundation/Geometry.h"
#include "platform/gtk/ObjectPointer.h"
#include "platform/uikit/UIColor.h"

// How this port sets text: sizes in points that are layout units, more where the desktop's scale of
// texts says so; the theme's own typeface.
namespace zorvik::platform::gtk {

// Loads the look of texts and buttons into the display, once a process.
void installLook();

TextPointer validText(const std::string& text);

// Labels of this class measure as measureText says.
GtkWidget* makeLabel();
void setText(GtkLabel* label, const std::string& text, double fontSize, const UIColor& color);

// The size of a text in a label, rounded up to whole points.
Size measureText(GtkWidget* label, const std::string& text, double fontSize, double maximumWidth);

}  // namespace zorvik::platform::gtk
