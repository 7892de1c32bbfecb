#include "platform/gtk/GtkApplicationService.h"

#include <gtk/gtk.h>
#include <unistd.h>

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

struct Launch {
    std::shared_ptr<Scheduler*> scheduler;
    std::function<void(bool opened)> completion;

    void complete(bool opened) {
        if (*scheduler == nullptr || !completion) return;
        (*scheduler)->runOnMain([completion = std::move(completion), opened] {
            completion(opened);
        });
    }
};

}  // namespace

GtkApplicationService::GtkApplicationService(Scheduler& scheduler)
    : scheduler_(scheduler),
      windows_(gtk_window_get_toplevels()),
      launches_(std::make_shared<Scheduler*>(&scheduler)) {
    g_object_ref(windows_);
    windowsSignal_ = g_signal_connect(
        windows_, "items-changed", G_CALLBACK(+[](GListModel*, guint, guint, guint, gpointer self) {
            static_cast<GtkApplicationService*>(self)->watchWindows();
        }),
        this);
    watchWindows();
}

GtkApplicationService::~GtkApplicationService() {
    *launches_ = nullptr;
    if (leavingTask_) scheduler_.cancel(*leavingTask_);
    g_signal_handler_disconnect(windows_, windowsSignal_);
    for (guint i = 0; i < g_list_model_get_n_items(windows_); ++i) {
        const ObjectPointer<GObject> window(G_OBJECT(g_list_model_get_item(windows_, i)));
        g_signal_handlers_disconnect_by_data(window.get(), this);
    }
    g_object_unref(windows_);
}

void GtkApplicationService::watchWindows() {
    for (guint i = 0; i < g_list_model_get_n_items(windows_); ++i) {
        const ObjectPointer<GObject> window(G_OBJECT(g_list_model_get_item(windows_, i)));
        g_signal_handlers_disconnect_by_data(window.get(), this);
        g_signal_connect_swapped(
            window.get(), "notify::is-active",
            G_CALLBACK(+[](GtkApplicationService* self) { self->activityChanged(); }), this);
    }
    activityChanged();
}

void GtkApplicationService::activityChanged() {
    bool isActive = false;
    for (guint i = 0; i < g_list_model_get_n_items(windows_); ++i) {
        const ObjectPointer<GObject> window(G_OBJECT(g_list_model_get_item(windows_, i)));
        if (gtk_window_is_active(GTK_WINDOW(window.get()))) isActive = true;
    }
    if (isActive) {
        if (leavingTask_) scheduler_.cancel(*std::exchange(leavingTask_, std::nullopt));
        if (std::exchange(presence_, Presence::active) != Presence::away) return;
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
