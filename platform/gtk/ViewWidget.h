#pragma once

#include <gtk/gtk.h>

#include "platform/foundation/Geometry.h"
#include "platform/uikit/UIColor.h"

// The two widgets a screen is made of. They place what they are given and know no views.
namespace zorvik::platform::gtk {

// A rectangle with a background that places its children: view widgets by their frames, any other
// widget over its whole area. A child larger than its parent is not clipped.
struct ViewWidget;
ViewWidget* makeViewWidget(GtkAccessibleRole role);
GtkWidget* asWidget(ViewWidget* widget);

// In whole points relative to the parent.
void setFrame(ViewWidget* widget, const Rect& frame);
void setBackground(ViewWidget* widget, const UIColor& color, double cornerRadius);
// What it asks of a parent that is no view widget, such as a scroller.
void setContentSize(ViewWidget* widget, const Size& size);
// Scrolls to the child of a scroller's content that has the keyboard, in the next frame.
void scrollToFocus(ViewWidget* content);
// Whenever the content has another size or less room.
void keepFocusInSight(GtkScrolledWindow* scroller, ViewWidget* content);
// The area a customer hits may be larger than the frame: the smallest size of the other child.
void setMinimumHitSize(ViewWidget* widget, const Size& size);

// Fills the window over what it shows and takes all input there. Its one child has the same size,
// moved down by a share of the height.
struct ScreenWidget;
// `allocated` is called with the size before the child is placed.
ScreenWidget* makeScreenWidget(ViewWidget* child, void (*allocated)(void* owner, Size size),
                               void* owner);
GtkWidget* asWidget(ScreenWidget* widget);
void setOffset(ScreenWidget* widget, double shareOfHeight);

}  // namespace zorvik::platform::gtk
