#include "platform/gtk/WindowLayers.h"

#include "platform/gtk/ObjectPointer.h"

namespace zorvik::platform::gtk {
namespace {

constexpr const char* layersMark = "zorvik-layers";
constexpr const char* leavingMark = "zorvik-leaving";

bool hasMark(GtkWidget* widget, const char* mark) {
    return g_object_get_data(G_OBJECT(widget), mark) != nullptr;
}

void setMark(GtkWidget* widget, const char* mark) {
    g_object_set_data(G_OBJECT(widget), mark, widget);
}

void updateInput(GtkWidget* layers) {
    GtkWidget* top = gtk_widget_get_last_child(layers);
    while (top != nullptr && hasMark(top, leavingMark))
        top = gtk_widget_get_prev_sibling(top);
    for (GtkWidget* layer = gtk_widget_get_first_child(layers); layer != nullptr;
         layer = gtk_widget_get_next_sibling(layer)) {
        gtk_widget_set_sensitive(layer, layer == top);
    }
}

}  // namespace

void prepareLayers(GtkWindow* window) {
    GtkWidget* shown = gtk_window_get_child(window);
    if (shown != nullptr && hasMark(shown, layersMark)) return;
    const ObjectPointer<GtkWidget> content(
        shown != nullptr ? static_cast<GtkWidget*>(g_object_ref(shown)) : nullptr);
    GtkWidget* layers = gtk_overlay_new();
    setMark(layers, layersMark);
    // A layer of its own, so that the host's widget keeps its own sensitivity.
    GtkWidget* bottom = gtk_overlay_new();
    gtk_overlay_set_child(GTK_OVERLAY(layers), bottom);
    gtk_window_set_child(window, layers);
    if (content) gtk_overlay_set_child(GTK_OVERLAY(bottom), content.get());
}

void addLayer(GtkWindow* window, GtkWidget* layer) {
    prepareLayers(window);
    GtkWidget* layers = gtk_window_get_child(window);
    gtk_overlay_add_overlay(GTK_OVERLAY(layers), layer);
    gtk_window_set_focus(window, nullptr);
    updateInput(layers);
}

bool isTopLayer(GtkWidget* layer) {
    return gtk_widget_get_parent(layer) != nullptr && gtk_widget_get_sensitive(layer);
}

void layerLeaves(GtkWidget* layer) {
    setMark(layer, leavingMark);
    GtkWidget* layers = gtk_widget_get_parent(layer);
    if (layers != nullptr) updateInput(layers);
}

void removeLayer(GtkWidget* layer) {
    GtkWidget* layers = gtk_widget_get_parent(layer);
    if (layers == nullptr) return;  // the window went first
    gtk_overlay_remove_overlay(GTK_OVERLAY(layers), layer);
    updateInput(layers);
}

}  // namespace zorvik::platform::gtk
