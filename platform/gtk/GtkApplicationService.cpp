#include "platform/gtk/GtkApplicationService.h"

#include <gtk/gtk.h>
#ifdef GDK_WINDOWING_X11
#include <gdk/x11/gdkx.h>
#endif

#include <algorithm>
#include <utility>

#include "platform/desktop/SchemeHandlers.h"
#include "platform/gtk/ObjectPointer.h"

namespace zorvik::platform::gtk {
namespace {

// Whether nobody gives windows the focus, as in a kiosk with the X server alone.
bool lacksWindowManager(GdkDisplay* display) {
#ifdef GDK_WINDOWING_X11
    if (GDK_IS_X11_DISPLAY(display)) {
        return !gdk_x11_screen_supports_net_wm_hint(gdk_x11_display_get_screen(display),
                                                    g_intern_static_string("_NET_ACTIVE_WINDOW"));
    }
#endif
    return false;
}

bool isInput(GdkEvent* event) {
    const GdkEventType type = gdk_event_get_event_type(event);
    return type == GDK_KEY_PRESS || type == GDK_BUTTON_PRESS || type == GDK_TOUCH_BEGIN;
}

}  // namespace

class GtkApplicationService::WatchedWindow {
  public:
    WatchedWindow(GtkApplicationService& service, ObjectPointer<GtkWindow> watched)
        : window(std::move(watched)), service_(service), input_(gtk_event_controller_legacy_new()) {
        g_signal_connect_swapped(window.get(), "notify::is-active",
                                 G_CALLBACK(+[](GtkApplicationService* self) { self->follow(); }),
                                 &service);
        // Sees all input first and lets it go on.
        gtk_event_controller_set_propagation_phase(input_, GTK_PHASE_CAPTURE);
        g_signal_connect(
            input_, "event",
            G_CALLBACK(+[](GtkEventController*, GdkEvent* event, WatchedWindow* self) -> gboolean {
                if (isInput(event)) self->service_.inputArrived(self->window.get());
                return FALSE;
            }),
            this);
        gtk_widget_add_controller(GTK_WIDGET(window.get()), input_);
    }
    WatchedWindow(const WatchedWindow&) = delete;
    WatchedWindow& operator=(const WatchedWindow&) = delete;
    ~WatchedWindow() {
        g_signal_handlers_disconnect_by_data(window.get(), &service_);
        gtk_widget_remove_controller(GTK_WIDGET(window.get()), input_);
    }

    const ObjectPointer<GtkWindow> window;

  private:
    GtkApplicationService& service_;
    GtkEventController* const input_;
};

GtkApplicationService::GtkApplicationService(Scheduler& scheduler) : DesktopApplication(scheduler) {
    windowsSignal_ = g_signal_connect_swapped(
        gtk_window_get_toplevels(), "items-changed",
        G_CALLBACK(+[](GtkApplicationService* self) { self->watchWindows(); }), this);
    watchWindows();
}

GtkApplicationService::~GtkApplicationService() {
    g_signal_handler_disconnect(gtk_window_get_toplevels(), windowsSignal_);
}

void GtkApplicationService::watchWindows() {
    std::vector<std::unique_ptr<WatchedWindow>> watched = std::move(windows_);
    windows_.clear();
    GListModel* windows = gtk_window_get_toplevels();
    for (guint i = 0; i < g_list_model_get_n_items(windows); ++i) {
        ObjectPointer<GtkWindow> window(GTK_WINDOW(g_list_model_get_item(windows, i)));
        const auto known = std::ranges::find_if(
            watched, [&](const auto& entry) { return entry && entry->window == window; });
        windows_.push_back(known != watched.end()
                               ? std::move(*known)
                               : std::make_unique<WatchedWindow>(*this, std::move(window)));
    }
    follow();
}

void GtkApplicationService::follow() {
    activityChanged(std::ranges::any_of(windows_, [](const auto& watched) {
        return gtk_window_is_active(watched->window.get()) != FALSE;
    }));
}

void GtkApplicationService::inputArrived(GtkWindow* window) {
    if (!lacksWindowManager(gtk_widget_get_display(GTK_WIDGET(window))) || !inputTakesFocus()) {
        return;
    }
    GdkSurface* surface = gtk_native_get_surface(GTK_NATIVE(window));
    if (GDK_IS_TOPLEVEL(surface)) gdk_toplevel_focus(GDK_TOPLEVEL(surface), GDK_CURRENT_TIME);
}

void GtkApplicationService::open(const URL& url, std::function<void(bool opened)> completion) {
    auto launch = std::make_unique<Launch>(makeLaunch(std::move(completion)));
    if (!desktop::hasStartableHandler(url)) {
        (*launch)(false);
        return;
    }
    const ObjectPointer<GdkAppLaunchContext> context(
        gdk_display_get_app_launch_context(gdk_display_get_default()));
    g_app_info_launch_default_for_uri_async(
        url.absoluteString().c_str(), G_APP_LAUNCH_CONTEXT(context.get()), nullptr,
        [](GObject*, GAsyncResult* result, gpointer data) {
            const std::unique_ptr<Launch> ended(static_cast<Launch*>(data));
            GError* error = nullptr;
            const bool opened = g_app_info_launch_default_for_uri_finish(result, &error) != FALSE;
            g_clear_error(&error);
            (*ended)(opened);
        },
        launch.release());
}

}  // namespace zorvik::platform::gtk
