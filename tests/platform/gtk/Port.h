#pragma once

#include "platform/gtk/GtkPlatform.h"

// GTK's own declarations: only its port includes its headers.
extern "C" {
GtkWindow* gtk_window_new();
void gtk_window_present(GtkWindow* window);
void gtk_window_close(GtkWindow* window);
void* g_object_ref(void* object);
void g_object_unref(void* object);
void g_object_add_weak_pointer(void* object, void** location);
}

// The port that the tests of desktop ports are compiled for.
namespace zorvik::tests {

using Platform = platform::gtk::GtkPlatform;
using PlatformOptions = platform::gtk::GtkPlatformOptions;
using Window = GtkWindow;
// The engine leaves %zz in an address as it is.
constexpr bool mendsBrokenEscapes = false;
// A page's web process runs the next page too.
constexpr bool handsProcessesOn = true;
constexpr bool hasNetworkProcess = true;
constexpr int longestPanelText = 1 << 30;
inline bool hasWrittenCookies(const std::string&) {
    return true;
}
// From where a menu opens to the middle of one of its items.
constexpr int downToMenuItem(int index) {
    return 25 + 30 * index;
}

inline void presentWindow(Window* window) {
    gtk_window_present(window);
}
// As the customer does.
inline void closeByCustomer(Window* window) {
    gtk_window_close(window);
}

// A window that the host made itself, and may still hold when it has destroyed it.
class HostWindow {
  public:
    HostWindow() { g_object_ref(window_); }
    HostWindow(const HostWindow&) = delete;
    HostWindow& operator=(const HostWindow&) = delete;

    Window* get() const { return window_; }
    void destroy() { gtk_window_close(window_); }
    // Whether nobody else holds it any more.
    bool isReleased() {
        void* held = window_;
        g_object_add_weak_pointer(window_, &held);
        g_object_unref(window_);
        return held == nullptr;
    }

  private:
    Window* const window_ = gtk_window_new();
};

}  // namespace zorvik::tests
