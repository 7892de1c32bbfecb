// zorvik-bare-window: what loading a page costs without the component. Opens a window, loads the
// page in a web view of its own as often as asked, and prints the milliseconds from each view's
// making to the page's finish in one line, then what the last page costs while it is idle.
// usage: zorvik-bare-window URL TIMES
#include <gtk/gtk.h>
#include <webkit/webkit.h>

#include <cstdlib>
#include <iostream>

#include "bench/ProcessTree.h"

namespace {

void wait(int milliseconds) {
    bool isOver = false;
    g_timeout_add(
        static_cast<guint>(milliseconds),
        [](gpointer over) -> gboolean {
            *static_cast<bool*>(over) = true;
            return G_SOURCE_REMOVE;
        },
        &isOver);
    while (!isOver)
        g_main_context_iteration(nullptr, TRUE);
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 3) {
        std::cerr << "usage: zorvik-bare-window URL TIMES\n";
        return 2;
    }
    const int times = std::atoi(arguments[2]);
    gtk_init();
    GtkWidget* window = gtk_window_new();
    gtk_window_set_default_size(GTK_WINDOW(window), 390, 760);
    gtk_window_present(GTK_WINDOW(window));
    wait(500);

    std::cout << "loads";
    for (int i = 0; i < times; ++i) {
        const gint64 start = g_get_monotonic_time();
        GtkWidget* view = webkit_web_view_new();
        // As the component does: with it a warm load waits half a second under Xvfb.
        webkit_settings_set_hardware_acceleration_policy(
            webkit_web_view_get_settings(WEBKIT_WEB_VIEW(view)),
            WEBKIT_HARDWARE_ACCELERATION_POLICY_NEVER);
        gtk_window_set_child(GTK_WINDOW(window), view);
        gint64 finished = 0;
        g_signal_connect(view, "load-changed",
                         G_CALLBACK(+[](WebKitWebView*, WebKitLoadEvent event, gint64* end) {
                             if (event == WEBKIT_LOAD_FINISHED) *end = g_get_monotonic_time();
                         }),
                         &finished);
        webkit_web_view_load_uri(WEBKIT_WEB_VIEW(view), arguments[1]);
        while (finished == 0) {
            g_main_context_iteration(nullptr, TRUE);
        }
        std::cout << ' ' << static_cast<double>(finished - start) / 1000;
        wait(1500);
        if (i + 1 == times) {
            std::cout << "\nidle";
            zorvik::bench::printIdle(wait);
        }
        gtk_window_set_child(GTK_WINDOW(window), nullptr);
        wait(300);
    }
    gtk_window_destroy(GTK_WINDOW(window));
    return 0;
}
