#include "platform/desktop/SchemeHandlers.h"

#include <gio/gio.h>
#include <unistd.h>

#include <fstream>
#include <memory>
#include <sstream>
#include <string>

namespace zorvik::platform::desktop {
namespace {

struct Unreference {
    void operator()(gpointer object) const { g_object_unref(object); }
};
struct Free {
    void operator()(gpointer memory) const { g_free(memory); }
};
using Handler = std::unique_ptr<GAppInfo, Unreference>;
using Text = std::unique_ptr<char, Free>;

Handler handlerOf(const URL& url) {
    const auto scheme = url.scheme();
    if (!scheme || scheme->empty()) return nullptr;
    const Text lowered(g_ascii_strdown(scheme->c_str(), -1));
    return Handler(g_app_info_get_default_for_uri_scheme(lowered.get()));
}

bool canStart(GAppInfo* handler) {
    const char* commandLine = g_app_info_get_commandline(handler);
    if (commandLine == nullptr) return true;  // started by the message bus
    // Taken apart here: the look-up's own word for the program keeps the quotes of a quoted path.
    char** words = nullptr;
    if (!g_shell_parse_argv(commandLine, nullptr, &words, nullptr)) return false;
    const Text path(g_find_program_in_path(words[0]));
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

}  // namespace

bool hasHandler(const URL& url) {
    return handlerOf(url) != nullptr;
}

bool hasStartableHandler(const URL& url) {
    const Handler handler = handlerOf(url);
    return handler && canStart(handler.get());
}

bool startHandler(const URL& url) {
    const Handler handler = handlerOf(url);
    if (!handler || !canStart(handler.get())) return false;
    GList address{const_cast<char*>(url.absoluteString().c_str()), nullptr, nullptr};
    return g_app_info_launch_uris(handler.get(), &address, nullptr, nullptr) != FALSE;
}

}  // namespace zorvik::platform::desktop
