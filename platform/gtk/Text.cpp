#include "platform/gtk/Text.h"

#include <cmath>
#include <limits>

namespace zorvik::platform::gtk {
namespace {

// The host's theme may be a dark one; the screens are not.
constexpr const char* look = R"(
.zorvik-button {
  background: none; border: none; box-shadow: none; text-shadow: none;
  min-height: 32px; min-width: 32px; padding: 4px 16px; border-radius: 10px;
}
.zorvik-button:hover { background-color: rgba(0, 122, 255, 0.08); }
.zorvik-button:active { background-color: rgba(0, 122, 255, 0.18); }
.zorvik-button:focus { outline: 2px solid #007aff; outline-offset: -2px; }
.zorvik-scroller, .zorvik-scroller > viewport { background: none; border: none; }
)";

guint16 component(double value) {
    return static_cast<guint16>(std::lround(value * std::numeric_limits<guint16>::max()));
}

int pangoUnits(double points) {
    return static_cast<int>(std::lround(points * PANGO_SCALE));
}

// Not absolute: the desktop's scale of texts is the resolution, of which 96 is the ordinary one.
PangoAttribute* sizeAttribute(double fontSize) {
    return pango_attr_size_new(pangoUnits(fontSize * 72 / 96));
}

}  // namespace

TextPointer validText(const std::string& text) {
    return TextPointer(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
}

void installLook() {
    static const bool isInstalled = [] {
        const ObjectPointer<GtkCssProvider> provider(gtk_css_provider_new());
        gtk_css_provider_load_from_data(provider.get(), look, -1);
        gtk_style_context_add_provider_for_display(gdk_display_get_default(),
                                                   GTK_STYLE_PROVIDER(provider.get()),
                                                   GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
        return true;
    }();
    static_cast<void>(isInstalled);
}

GtkWidget* makeLabel() {
    GtkWidget* label = gtk_label_new(nullptr);
    gtk_label_set_wrap_mode(GTK_LABEL(label), PANGO_WRAP_WORD_CHAR);
    return label;
}

void setText(GtkLabel* label, const std::string& text, double fontSize, const UIColor& color) {
    PangoAttrList* attributes = pango_attr_list_new();
    pango_attr_list_insert(attributes, sizeAttribute(fontSize));
    pango_attr_list_insert(attributes,
                           pango_attr_foreground_new(component(color.red), component(color.green),
                                                     component(color.blue)));
    gtk_label_set_attributes(label, attributes);
    pango_attr_list_unref(attributes);
    gtk_label_set_text(label, validText(text).get());
}

Size measureText(GtkWidget* label, const std::string& text, double fontSize, double maximumWidth) {
    const ObjectPointer<PangoLayout> layout(
        gtk_widget_create_pango_layout(label, validText(text).get()));
    PangoAttrList* attributes = pango_attr_list_new();
    pango_attr_list_insert(attributes, sizeAttribute(fontSize));
    pango_layout_set_attributes(layout.get(), attributes);
    pango_attr_list_unref(attributes);
    pango_layout_set_wrap(layout.get(), PANGO_WRAP_WORD_CHAR);
    if (maximumWidth > 0) pango_layout_set_width(layout.get(), pangoUnits(maximumWidth));
    PangoRectangle logical;
    pango_layout_get_extents(layout.get(), nullptr, &logical);
    return {std::ceil(static_cast<double>(logical.width) / PANGO_SCALE),
            std::ceil(static_cast<double>(logical.height) / PANGO_SCALE)};
}

}  // namespace zorvik::platform::gtk
