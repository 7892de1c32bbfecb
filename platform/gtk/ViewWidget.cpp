#include "platform/gtk/ViewWidget.h"

#include <algorithm>
#include <cmath>

namespace zorvik::platform::gtk {

struct ViewWidget {
    GtkWidget parent;
    Rect frame;
    Size contentSize;
    Size minimumHitSize;
    UIColor background;
    double cornerRadius;
};

struct ScreenWidget {
    GtkWidget parent;
    double offset;
    void (*allocated)(void* owner, Size size);
    void* owner;
};

namespace {

struct ViewWidgetClass {
    GtkWidgetClass parent;
};
struct ScreenWidgetClass {
    GtkWidgetClass parent;
};

G_DEFINE_TYPE(ViewWidget, zorvik_view_widget, GTK_TYPE_WIDGET)
G_DEFINE_TYPE(ScreenWidget, zorvik_screen_widget, GTK_TYPE_WIDGET)

bool isViewWidget(GtkWidget* widget) {
    return G_TYPE_CHECK_INSTANCE_TYPE(widget, zorvik_view_widget_get_type());
}

void unparentChildren(GtkWidget* widget) {
    while (GtkWidget* child = gtk_widget_get_first_child(widget))
        gtk_widget_unparent(child);
}

// GTK wants every child measured before it is placed, even when the answer does not matter.
void measureChildren(GtkWidget* widget) {
    for (GtkWidget* child = gtk_widget_get_first_child(widget); child != nullptr;
         child = gtk_widget_get_next_sibling(child)) {
        if (!gtk_widget_should_layout(child)) continue;
        for (const GtkOrientation orientation :
             {GTK_ORIENTATION_HORIZONTAL, GTK_ORIENTATION_VERTICAL}) {
            int minimum = 0;
            gtk_widget_measure(child, orientation, -1, &minimum, nullptr, nullptr, nullptr);
        }
    }
}

void place(GtkWidget* child, double x, double y, double width, double height) {
    const graphene_point_t origin{static_cast<float>(x), static_cast<float>(y)};
    gtk_widget_allocate(child, std::max(static_cast<int>(width), 0),
                        std::max(static_cast<int>(height), 0), -1,
                        gsk_transform_translate(nullptr, &origin));
}

// Edges on whole points, so that text and blocks are crisp.
Rect wholePoints(const Rect& frame) {
    const double left = std::round(frame.x);
    const double top = std::round(frame.y);
    return {left, top, std::round(frame.x + frame.width) - left,
            std::round(frame.y + frame.height) - top};
}

void viewMeasure(GtkWidget* widget, GtkOrientation orientation, int, int* minimum, int* natural,
                 int*, int*) {
    measureChildren(widget);
    const Size& size = reinterpret_cast<ViewWidget*>(widget)->contentSize;
    const double length = orientation == GTK_ORIENTATION_HORIZONTAL ? size.width : size.height;
    *minimum = *natural = static_cast<int>(std::ceil(length));
}

void viewAllocate(GtkWidget* widget, int width, int height, int) {
    const Size& hit = reinterpret_cast<ViewWidget*>(widget)->minimumHitSize;
    const double wide = std::max<double>(width, hit.width);
    const double high = std::max<double>(height, hit.height);
    measureChildren(widget);
    for (GtkWidget* child = gtk_widget_get_first_child(widget); child != nullptr;
         child = gtk_widget_get_next_sibling(child)) {
        if (!gtk_widget_should_layout(child)) continue;
        if (isViewWidget(child)) {
            const Rect frame = wholePoints(reinterpret_cast<ViewWidget*>(child)->frame);
            place(child, frame.x, frame.y, frame.width, frame.height);
        } else {
            place(child, std::floor((width - wide) / 2), std::floor((height - high) / 2), wide,
                  high);
        }
    }
}

void viewSnapshot(GtkWidget* widget, GtkSnapshot* snapshot) {
    const auto* view = reinterpret_cast<ViewWidget*>(widget);
    const UIColor& color = view->background;
    const graphene_rect_t bounds{{0, 0},
                                 {static_cast<float>(gtk_widget_get_width(widget)),
                                  static_cast<float>(gtk_widget_get_height(widget))}};
    if (color.alpha > 0 && bounds.size.width > 0 && bounds.size.height > 0) {
        const GdkRGBA rgba{static_cast<float>(color.red), static_cast<float>(color.green),
                           static_cast<float>(color.blue), static_cast<float>(color.alpha)};
        if (view->cornerRadius > 0) {
            GskRoundedRect rounded;
            gsk_rounded_rect_init_from_rect(&rounded, &bounds,
                                            static_cast<float>(view->cornerRadius));
            gtk_snapshot_push_rounded_clip(snapshot, &rounded);
        }
        gtk_snapshot_append_color(snapshot, &rgba, &bounds);
        if (view->cornerRadius > 0) gtk_snapshot_pop(snapshot);
    }
    GTK_WIDGET_CLASS(zorvik_view_widget_parent_class)->snapshot(widget, snapshot);
}

void zorvik_view_widget_init(ViewWidget* view) {
    view->background = UIColor::clear();
}

void zorvik_view_widget_class_init(ViewWidgetClass* type) {
    G_OBJECT_CLASS(type)->dispose = [](GObject* object) {
        unparentChildren(GTK_WIDGET(object));
        G_OBJECT_CLASS(zorvik_view_widget_parent_class)->dispose(object);
    };
    GtkWidgetClass* widget = GTK_WIDGET_CLASS(type);
    widget->measure = viewMeasure;
    widget->size_allocate = viewAllocate;
    widget->snapshot = viewSnapshot;
}

gboolean scroll(GtkWidget* content, GdkFrameClock*, gpointer) {
    GtkWidget* child = gtk_root_get_focus(gtk_widget_get_root(content));
    while (child != nullptr && gtk_widget_get_parent(child) != content)
        child = gtk_widget_get_parent(child);
    if (child == nullptr) return G_SOURCE_REMOVE;
    const auto* view = reinterpret_cast<ViewWidget*>(child);
    const double high = std::max(view->frame.height, view->minimumHitSize.height);
    const double top = view->frame.y + (view->frame.height - high) / 2;
    GtkWidget* scroller = gtk_widget_get_ancestor(content, GTK_TYPE_SCROLLED_WINDOW);
    gtk_adjustment_clamp_page(gtk_scrolled_window_get_vadjustment(GTK_SCROLLED_WINDOW(scroller)),
                              top, top + high);
    return G_SOURCE_REMOVE;
}

void screenMeasure(GtkWidget* widget, GtkOrientation, int, int* minimum, int* natural, int*, int*) {
    measureChildren(widget);
    *minimum = *natural = 0;
}

void screenAllocate(GtkWidget* widget, int width, int height, int) {
    const auto* screen = reinterpret_cast<ScreenWidget*>(widget);
    screen->allocated(screen->owner, {static_cast<double>(width), static_cast<double>(height)});
    measureChildren(widget);
    GtkWidget* child = gtk_widget_get_first_child(widget);
    if (child == nullptr) return;
    place(child, 0, std::round(screen->offset * height), width, height);
}

void zorvik_screen_widget_init(ScreenWidget* screen) {
    GtkWidget* widget = asWidget(screen);
    gtk_widget_set_overflow(widget, GTK_OVERFLOW_HIDDEN);
    gtk_widget_set_hexpand(widget, TRUE);
    gtk_widget_set_vexpand(widget, TRUE);
}

void zorvik_screen_widget_class_init(ScreenWidgetClass* type) {
    G_OBJECT_CLASS(type)->dispose = [](GObject* object) {
        unparentChildren(GTK_WIDGET(object));
        G_OBJECT_CLASS(zorvik_screen_widget_parent_class)->dispose(object);
    };
    GtkWidgetClass* widget = GTK_WIDGET_CLASS(type);
    widget->measure = screenMeasure;
    widget->size_allocate = screenAllocate;
    gtk_widget_class_set_accessible_role(widget, GTK_ACCESSIBLE_ROLE_GROUP);
}

}  // namespace

ViewWidget* makeViewWidget(GtkAccessibleRole role) {
    return static_cast<ViewWidget*>(
        g_object_new(zorvik_view_widget_get_type(), "accessible-role", role, nullptr));
}

GtkWidget* asWidget(ViewWidget* widget) {
    return reinterpret_cast<GtkWidget*>(widget);
}

void setFrame(ViewWidget* widget, const Rect& frame) {
    if (widget->frame == frame) return;
    widget->frame = frame;
    GtkWidget* parent = gtk_widget_get_parent(asWidget(widget));
    if (parent != nullptr) gtk_widget_queue_allocate(parent);
}

void setBackground(ViewWidget* widget, const UIColor& color, double cornerRadius) {
    if (widget->background == color && widget->cornerRadius == cornerRadius) return;
    widget->background = color;
    widget->cornerRadius = cornerRadius;
    gtk_widget_queue_draw(asWidget(widget));
}

void setContentSize(ViewWidget* widget, const Size& size) {
    if (widget->contentSize == size) return;
    widget->contentSize = size;
    gtk_widget_queue_resize(asWidget(widget));
}

void scrollToFocus(ViewWidget* content) {
    // Within its own allocation a scroller does not move its content.
    gtk_widget_add_tick_callback(asWidget(content), scroll, nullptr, nullptr);
}

void keepFocusInSight(GtkScrolledWindow* scroller, ViewWidget* content) {
    g_signal_connect_object(gtk_scrolled_window_get_vadjustment(scroller), "changed",
                            G_CALLBACK(scrollToFocus), content, G_CONNECT_SWAPPED);
}

void setMinimumHitSize(ViewWidget* widget, const Size& size) {
    if (widget->minimumHitSize == size) return;
    widget->minimumHitSize = size;
    gtk_widget_queue_allocate(asWidget(widget));
}

ScreenWidget* makeScreenWidget(ViewWidget* child, void (*allocated)(void* owner, Size size),
                               void* owner) {
    auto* screen =
        static_cast<ScreenWidget*>(g_object_new(zorvik_screen_widget_get_type(), nullptr));
    screen->allocated = allocated;
    screen->owner = owner;
    gtk_widget_set_parent(asWidget(child), asWidget(screen));
    return screen;
}

GtkWidget* asWidget(ScreenWidget* widget) {
    return reinterpret_cast<GtkWidget*>(widget);
}

void setOffset(ScreenWidget* widget, double shareOfHeight) {
    if (widget->offset == shareOfHeight) return;
    widget->offset = shareOfHeight;
    gtk_widget_queue_allocate(asWidget(widget));
}

}  // namespace zorvik::platform::gtk
