#pragma once

#include <gtk/gtk.h>

// A host's window as a stack: what the host shows at the bottom, screens above it. Only the
// topmost layer takes input; one that is leaving still covers what is beneath.
namespace zorvik::platform::gtk {

// Puts what the window shows into the bottom layer; again when the host has set another child.
void prepareLayers(GtkWindow* window);
void addLayer(GtkWindow* window, GtkWidget* layer);
// Whether it takes input.
bool isTopLayer(GtkWidget* layer);
// What is beneath takes the keyboard again and looks it, while the layer goes its way.
void layerLeaves(GtkWidget* layer);
void removeLayer(GtkWidget* layer);

}  // namespace zorvik::platform::gtk
