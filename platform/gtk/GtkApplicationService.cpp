#include "platform/gtk/GtkApplicationService.h"

#include <gtk/gtk.h>
#include <unistd.h>
#ifdef GDK_WINDOWING_X11
#include <gdk/x11/gdkx.h>
#endif

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>

#include "platform/gtk/ObjectPointer.h"

namespace zorvik::platform::gtk {
namespace {

// Between two windows of this application neither is active for a moment.
constexpr double settlingSeconds = 0.05;

ObjectPointer<GAppInfo> handlerOf(const URL& url) {
    const auto scheme = url.scheme();
    if (!scheme || scheme->empty()) return nullptr;
    const TextPointer lowered(g_ascii_strdown(scheme->c_str(), -1));
    return ObjectPointer<GAppInfo>(g_app_info_get_default_for_uri_scheme(lowered.get()));
}

// A launch succeeds as soon as a helper process runs, whether or not that can start the program.
// So the program is looked at first: there, executable, and so is its script's interpreter.
bool canStart(GAppInfo* handler) {
    const char* commandLine = g_app_info_get_commandline(handler);
    if (commandLine == nullptr) return true;  // started by the message bus
    // Taken apart here: the look-up's own word for the program keeps the quotes of a quoted path.
    char** words = nullptr;
    if (!g_shell_parse_argv(commandLine, nullptr, &words, nullptr)) return false;
    const TextPointer path(g_find_program_in_path(words[0]));
    g_strfreev(words);
    if (!path) return false;
    std::ifstream program(path.get(), std::ios::binary);
    std::string firstLine;
    if (!program || !std::getline(program, firstLine) || !firstLine.starts_with("#!")) return true;
    std::istringstream scriptLine(firstLine.substr(2));
    std::string interpreter;
    scriptLine >> interpreter;
    return access(interpreter.c_str(), X_OK) == 0;
}

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

struct GtkApplicationService::Launch {
    std::shared_ptr<GtkApplicationService*> service;
    std::function<void(bool opened)> completion;

    void complete(bool opened) {
        if (*service == nullptr) return;
        if (opened) (*service)->hasHandedOff_ = true;
        if (!completion) return;
        (*service)->scheduler_.runOnMain(
            [completion = std::move(completion), opened] { completion(opened); });
    }
};

class GtkApplicationService::WatchedWindow {
  public:
    WatchedWindow(GtkApplicationService& service, ObjectPointer<GtkWindow> watched)
        : window(std::move(watched)), service_(service), input_(gtk_event_controller_legacy_new()) {
        g_signal_connect_swapped(
            window.get(), "notify::is-active",
            G_CALLBACK(+[](GtkApplicationService* self) { self->activityChanged(); }), &service);
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

GtkApplicationService::GtkApplicationService(Scheduler& scheduler)
    : scheduler_(scheduler), launches_(std::make_shared<GtkApplicationService*>(this)) {
    windowsSignal_ = g_signal_connect_swapped(
        gtk_window_get_toplevels(), "items-changed",
        G_CALLBACK(+[](GtkApplicationService* self) { self->watchWindows(); }), this);
    watchWindows();
}

GtkApplicationService::~GtkApplicationService() {
    *launches_ = nullptr;
    if (leavingTask_) scheduler_.cancel(*leavingTask_);
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
    activityChanged();
}

void GtkApplicationService::activityChanged() {
    const bool isActive = std::ranges::any_of(windows_, [](const auto& watched) {
        return gtk_window_is_active(watched->window.get()) != FALSE;
    });
    if (isActive) {
        if (leavingTask_) scheduler_.cancel(*std::exchange(leavingTask_, std::nullopt));
        if (std::exchange(presence_, Presence::active) != Presence::away) return;
        hasHandedOff_ = false;
        scheduler_.runOnMain([this, service = std::weak_ptr(launches_)] {
            if (!service.expired() && delegate_ != nullptr) delegate_->applicationDidBecomeActive();
        });
    } else if (presence_ == Presence::active) {
        presence_ = Presence::leaving;
        leavingTask_ = scheduler_.runOnMainAfter(settlingSeconds, [this] {
            leavingTask_.reset();
            presence_ = Presence::away;
        });
    }
}

void GtkApplicationService::inputArrived(GtkWindow* window) {
    if (presence_ == Presence::active) return;
    if (!lacksWindowManager(gtk_widget_get_display(GTK_WIDGET(window)))) return;
    // Left by nothing but the end of a window of its own, which had the focus.
    if (presence_ == Presence::away && !hasHandedOff_) presence_ = Presence::active;
    GdkSurface* surface = gtk_native_get_surface(GTK_NATIVE(window));
    if (GDK_IS_TOPLEVEL(surface)) gdk_toplevel_focus(GDK_TOPLEVEL(surface), GDK_CURRENT_TIME);
}

bool GtkApplicationService::canOpen(const URL& url) {
    return handlerOf(url) != nullptr;
}

void GtkApplicationService::open(const URL& url, std::function<void(bool opened)> completion) {
    auto launch = std::make_unique<Launch>(Launch{launches_, std::move(completion)});
    const ObjectPointer<GAppInfo> handler = handlerOf(url);
    if (!handler || !canStart(handler.get())) {
        launch->complete(false);
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
            ended->complete(opened);
        },
        launch.release());
}

}  // namespace zorvik::platform::gtk
