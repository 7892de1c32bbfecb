#include "platform/gtk/GtkPlatform.h"

#include <gtk/gtk.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <utility>

#include "c/Boundary.h"

struct zorvik_gtk {
    std::unique_ptr<zorvik::platform::gtk::GtkPlatform> platform;
    int running = 0;  // functions under way that run the main loop
};

namespace zorvik::c {
namespace {

using platform::gtk::GtkPlatform;

// Checks the call and runs the body on the platform.
template <class Body>
zorvik_result onGtk(zorvik_gtk* handle, const Body& body) {
    return atBoundary([&] {
        Call call;
        if (!call.onMainThread().given(handle, "gtk")) return call.result();
        body(call, *handle->platform);
        return call.result();
    });
}

// The same for a body that is about a window.
template <class Body>
zorvik_result onWindow(zorvik_gtk* handle, void* window, const Body& body) {
    return onGtk(handle, [&](Call& call, GtkPlatform& platform) {
        call.given(window, "window")
            .require(window == nullptr || GTK_IS_WINDOW(window), ZORVIK_INVALID_ARGUMENT,
                     "window is not a GtkWindow");
        if (call) body(call, platform, static_cast<GtkWindow*>(window));
    });
}

std::optional<platform::gtk::PageData> pageDataOf(zorvik_page_data data) {
    using platform::gtk::PageData;
    switch (data) {
        case ZORVIK_PAGES_IN_MEMORY:
            return PageData::inMemory;
        case ZORVIK_PAGES_ON_DISK:
            return PageData::onDisk;
        case ZORVIK_PAGES_FRESH:
            return PageData::freshForEachPage;
    }
    return std::nullopt;
}

}  // namespace
}  // namespace zorvik::c

using namespace zorvik;
using namespace zorvik::c;

extern "C" {

zorvik_gtk* zorvik_gtk_make(const zorvik_gtk_options* options) {
    return atBoundary(static_cast<zorvik_gtk*>(nullptr), [&]() -> zorvik_gtk* {
        Call call;
        if (!call.withoutPlatform().given(options, "options")) return nullptr;
        zorvik_gtk_options given{};
        std::memcpy(&given, options, std::min(options->size, sizeof given));
        if (!call.text(given.application_id, "application_id")) return nullptr;
        const auto pageData = pageDataOf(given.page_data);
        if (!call.require(pageData.has_value(), ZORVIK_INVALID_ARGUMENT,
                          "page_data is none of zorvik_page_data"))
            return nullptr;
        auto platform = GtkPlatform::make({.applicationId = given.application_id,
                                           .safeAreaInsets = {.top = given.safe_area_top,
                                                              .left = given.safe_area_left,
                                                              .bottom = given.safe_area_bottom,
                                                              .right = given.safe_area_right},
                                           .pageData = *pageData,
                                           .keepsSparePage = !given.without_spare_page});
        call.require(platform != nullptr, ZORVIK_FAILED,
                     "there is no display to open, or application_id cannot name a folder");
        return call ? new zorvik_gtk{std::move(platform)} : nullptr;
    });
}

zorvik_result zorvik_gtk_free(zorvik_gtk* gtk) {
    return atBoundary([&] {
        Call call;
        if (!call.onMainThread().given(gtk, "gtk").outsideCallbacks()) return call.result();
        if (!call.require(gtk->running == 0, ZORVIK_WRONG_STATE, "the main loop is being run"))
            return call.result();
        delete gtk;
        return ZORVIK_OK;
    });
}

void* zorvik_gtk_open_window(zorvik_gtk* gtk, const char* title, double width, double height,
                             void (*closed)(void* user_data), void* user_data,
                             zorvik_destroy destroy) {
    const Callback callback(closed, user_data, destroy);
    GtkWindow* window = nullptr;
    onGtk(gtk, [&](Call& call, auto& platform) {
        if (!call.text(title, "title")) return;
        window = platform.openWindow(title, {width, height}, [callback] {
            if (callback) callback();
        });
    });
    return window;
}

zorvik_result zorvik_gtk_close_window(zorvik_gtk* gtk, void* window) {
    return onWindow(gtk, window,
                    [](Call&, auto& platform, auto* closing) { platform.closeWindow(closing); });
}

zorvik_presenter* zorvik_gtk_presenter(zorvik_gtk* gtk, void* window) {
    zorvik_presenter* presenter = nullptr;
    onWindow(gtk, window, [&](Call& call, auto& platform, auto* shownIn) {
        auto controller = platform.presenterFor(shownIn);
        call.require(controller != nullptr, ZORVIK_WRONG_STATE, "the window was destroyed");
        if (call) presenter = new zorvik_presenter{std::move(controller)};
    });
    return presenter;
}

zorvik_result zorvik_gtk_run(zorvik_gtk* gtk) {
    return onGtk(gtk, [&](Call&, auto& platform) {
        ++gtk->running;
        platform.run();
        --gtk->running;
    });
}

zorvik_result zorvik_gtk_quit(zorvik_gtk* gtk) {
    return onGtk(gtk, [](Call&, auto& platform) { platform.quit(); });
}

zorvik_result zorvik_gtk_run_until(zorvik_gtk* gtk, bool (*condition)(void* user_data),
                                   void* user_data, double seconds) {
    return onGtk(gtk, [&](Call& call, auto& platform) {
        if (!call.require(condition != nullptr, ZORVIK_INVALID_ARGUMENT, "condition is NULL"))
            return;
        ++gtk->running;
        const bool holds =
            platform.runUntil([&] { return callHost(condition, user_data); }, seconds);
        --gtk->running;
        call.require(holds, ZORVIK_FAILED, "the time passed before the condition held");
    });
}

zorvik_result zorvik_gtk_save_png(zorvik_gtk* gtk, void* window, const char* path) {
    return onWindow(gtk, window, [&](Call& call, auto& platform, auto* shown) {
        if (!call.text(path, "path")) return;
        call.require(platform.savePng(shown, path), ZORVIK_FAILED,
                     "the window shows nothing yet, or the file cannot be written");
    });
}

}  // extern "C"
