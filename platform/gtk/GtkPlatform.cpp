#include "platform/gtk/GtkPlatform.h"

#include <gtk/gtk.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <utility>
#include <vector>

#include "platform/desktop/FileDefaults.h"
#include "platform/gtk/GtkApplicationService.h"
#include "platform/gtk/GtkScheduler.h"
#include "platform/gtk/GtkStage.h"
#include "platform/gtk/GtkWebEngine.h"
#include "platform/gtk/ObjectPointer.h"
#include "platform/runtime/Environment.h"

namespace zorvik::platform::gtk {
namespace {

GtkWebEngineOptions engineOptions(const GtkPlatformOptions& options) {
    GtkWebEngineOptions engine;
    engine.keepsSparePage = options.keepsSparePage;
    engine.hungSeconds = options.hungPageSeconds;
    engine.pageData = options.pageData;
    const std::filesystem::path data = g_get_user_data_dir();
    const std::filesystem::path cache = g_get_user_cache_dir();
    engine.dataFolder = data / options.applicationId / "pages";
    engine.cacheFolder = cache / options.applicationId / "pages";
    return engine;
}

std::filesystem::path defaultsFile(const GtkPlatformOptions& options) {
    const std::filesystem::path folder = g_get_user_config_dir();
    return folder / options.applicationId / "defaults.json";
}

// Set by a timer of GLib's; the loop that waits for it turns at that moment.
class Expiry {
  public:
    explicit Expiry(double seconds)
        : timer_(g_timeout_add(
              milliseconds(seconds),
              [](gpointer self) -> gboolean {
                  static_cast<Expiry*>(self)->timer_ = 0;
                  return G_SOURCE_REMOVE;
              },
              this)) {}
    Expiry(const Expiry&) = delete;
    Expiry& operator=(const Expiry&) = delete;
    ~Expiry() {
        if (timer_ != 0) g_source_remove(timer_);
    }
    bool isReached() const { return timer_ == 0; }

  private:
    static guint milliseconds(double seconds) {
        return seconds > 0 ? static_cast<guint>(std::ceil(std::fmin(seconds, 1e6) * 1000)) : 0;
    }

    guint timer_;
};

}  // namespace

// In the order of their making; the scheduler goes last.
struct GtkPlatform::Parts {
    explicit Parts(const GtkPlatformOptions& options)
        : engine(scheduler, engineOptions(options)),
          application(scheduler),
          defaults(defaultsFile(options)),
          stage(scheduler, options.safeAreaInsets) {}

    GtkScheduler scheduler;
    GtkWebEngine engine;
    GtkApplicationService application;
    desktop::FileDefaults defaults;
    GtkStage stage;
    std::vector<ObjectPointer<GtkWindow>> windows;
    GMainLoop* loop = nullptr;
};

std::unique_ptr<GtkPlatform> GtkPlatform::make(const GtkPlatformOptions& options) {
    if (!desktop::canNameFolder(options.applicationId)) {
        std::fprintf(stderr, "zorvik: \"%s\" cannot name the application's folder\n",
                     options.applicationId.c_str());
        return nullptr;
    }
    if (!gtk_init_check()) {
        std::fprintf(stderr, "zorvik: there is no display to open\n");
        return nullptr;
    }
    return std::unique_ptr<GtkPlatform>(new GtkPlatform(std::make_unique<Parts>(options)));
}

GtkPlatform::GtkPlatform(std::unique_ptr<Parts> parts) : parts_(std::move(parts)) {
    Environment::install(
        {parts_->scheduler, parts_->engine, parts_->application, parts_->defaults, parts_->stage});
}

GtkPlatform::~GtkPlatform() {
    // What is dropped may use the toolkit a last time, so the port stays installed until no task
    // or screen of its own is left.
    parts_->scheduler.shutDown();
    parts_->stage.dropScreens();
    while (!parts_->windows.empty())
        closeWindow(parts_->windows.back().get());
    parts_->engine.end();  // whoever still holds a page may destroy it on any thread from now on
    Environment::uninstall();
}

GtkWindow* GtkPlatform::openWindow(const std::string& title, const Size& size,
                                   std::function<void()> closed) {
    GtkWindow* window = GTK_WINDOW(gtk_window_new());
    parts_->windows.push_back(share(window));
    gtk_window_set_title(window, title.c_str());
    gtk_window_set_default_size(window, static_cast<int>(size.width),
                                static_cast<int>(size.height));
    gtk_window_set_hide_on_close(window, TRUE);
    using Closed = std::function<void()>;
    g_signal_connect_data(
        window, "close-request", G_CALLBACK(+[](GtkWindow*, gpointer callback) -> gboolean {
            const Closed copy = *static_cast<Closed*>(callback);  // it may close the window
            if (copy) copy();
            return FALSE;
        }),
        new Closed(std::move(closed)),
        [](gpointer callback, GClosure*) { delete static_cast<Closed*>(callback); },
        G_CONNECT_DEFAULT);
    gtk_window_present(window);
    return window;
}

void GtkPlatform::closeWindow(GtkWindow* window) {
    const auto place =
        std::find_if(parts_->windows.begin(), parts_->windows.end(),
                     [window](const auto& candidate) { return candidate.get() == window; });
    if (place == parts_->windows.end()) return;
    const ObjectPointer<GtkWindow> closing = std::move(*place);
    parts_->windows.erase(place);
    gtk_window_destroy(window);
}

std::shared_ptr<UIViewController> GtkPlatform::presenterFor(GtkWindow* window) {
    return parts_->stage.presenterFor(window);
}

void GtkPlatform::setSafeAreaInsets(const UIEdgeInsets& insets) {
    parts_->stage.setSafeAreaInsets(insets);
}

void GtkPlatform::run() {
    GMainLoop* const outer = std::exchange(parts_->loop, g_main_loop_new(nullptr, FALSE));
    g_main_loop_run(parts_->loop);
    g_main_loop_unref(std::exchange(parts_->loop, outer));
}

void GtkPlatform::quit() {
    if (parts_->loop != nullptr) g_main_loop_quit(parts_->loop);
}

bool GtkPlatform::runUntil(const std::function<bool()>& condition, double seconds) {
    const Expiry expiry(seconds);
    while (!condition()) {
        if (expiry.isReached()) return false;
        g_main_context_iteration(nullptr, TRUE);
    }
    return true;
}

bool GtkPlatform::savePng(GtkWindow* window, const std::string& path) {
    if (window == nullptr || !gtk_widget_get_mapped(GTK_WIDGET(window))) return false;
    const int width = gtk_widget_get_width(GTK_WIDGET(window));
    const int height = gtk_widget_get_height(GTK_WIDGET(window));
    const ObjectPointer<GdkPaintable> picture(gtk_widget_paintable_new(GTK_WIDGET(window)));
    GtkSnapshot* snapshot = gtk_snapshot_new();
    gdk_paintable_snapshot(picture.get(), snapshot, width, height);
    GskRenderNode* drawing = gtk_snapshot_free_to_node(snapshot);
    if (drawing == nullptr) return false;
    const graphene_rect_t area{{0, 0}, {static_cast<float>(width), static_cast<float>(height)}};
    const ObjectPointer<GdkTexture> texture(
        gsk_renderer_render_texture(gtk_native_get_renderer(GTK_NATIVE(window)), drawing, &area));
    gsk_render_node_unref(drawing);
    return texture != nullptr && gdk_texture_save_to_png(texture.get(), path.c_str()) != FALSE;
}

unsigned long GtkPlatform::wakeUps() const {
    return parts_->scheduler.turns();
}

}  // namespace zorvik::platform::gtk
