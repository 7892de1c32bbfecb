// zorvik-demo-backend: the demonstration's payment service on a loopback port. Prints its address
// in one line, then serves until SIGTERM or SIGINT.
#include <glib-unix.h>
#include <glib.h>

#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>

#include "examples/backend/Backend.h"
#include "examples/backend/HttpServer.h"

namespace {

constexpr const char* usage =
    "usage: zorvik-demo-backend --pages FOLDER [--port NUMBER] [--latency MILLISECONDS]\n"
    "  --pages FOLDER          the checkout page's files (examples/checkout_page)\n"
    "  --port NUMBER           the port to listen on; 0, the default, takes a free one\n"
    "  --latency MILLISECONDS  how long the checkout page takes to arrive; 0 is the default\n";

std::optional<unsigned> numberFrom(const char* text, unsigned most) {
    guint64 number = 0;
    if (!g_ascii_string_to_unsigned(text, 10, 0, most, &number, nullptr)) return std::nullopt;
    return static_cast<unsigned>(number);
}

gboolean quit(gpointer loop) {
    g_main_loop_quit(static_cast<GMainLoop*>(loop));
    return G_SOURCE_CONTINUE;
}

}  // namespace

int main(int count, char** arguments) {
    std::string pages;
    std::optional<unsigned> port = 0;
    std::optional<unsigned> latency = 0;
    bool isUnderstood = count % 2 == 1;
    for (int i = 1; i + 1 < count; i += 2) {
        const std::string_view option = arguments[i];
        if (option == "--pages") {
            pages = arguments[i + 1];
        } else if (option == "--port") {
            port = numberFrom(arguments[i + 1], 65535);
        } else if (option == "--latency") {
            latency = numberFrom(arguments[i + 1], 60000);
        } else {
            isUnderstood = false;
        }
    }
    if (!isUnderstood || pages.empty() || !port || !latency) {
        std::cerr << usage;
        return 2;
    }

    zorvik::demo::Backend backend(pages, *latency);
    const auto server = zorvik::demo::HttpServer::listen(
        *port, [&](const zorvik::demo::HttpRequest& request) { return backend.handle(request); });
    if (!server) return 1;
    const std::string number = std::to_string(server->port());
    backend.setOrigins("http://127.0.0.1:" + number, "http://localhost:" + number);
    std::cout << "zorvik-demo-backend listens on http://127.0.0.1:" << number << std::endl;

    GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
    g_unix_signal_add(SIGTERM, quit, loop);
    g_unix_signal_add(SIGINT, quit, loop);
    g_main_loop_run(loop);
    g_main_loop_unref(loop);
    return EXIT_SUCCESS;
}
