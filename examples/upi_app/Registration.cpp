#include "examples/upi_app/Registration.h"

#include <gio/gio.h>
#include <glib/gstdio.h>

#include <cstdio>
#include <cstring>

#include "examples/common/DemoUPIApps.h"

namespace zorvik::demo {

namespace {

enum class Kind { working, failingAtLaunch, notInstalled };

Kind kindOf(const DemoUPIApp& app) {
    if (app.code == "LOTUSPOND") return Kind::notInstalled;
    if (app.code == "BRASSBELL") return Kind::failingAtLaunch;
    return Kind::working;
}

std::string applicationsFolder() {
    return std::string(g_get_user_data_dir()) + "/applications";
}

std::string fileNameOf(const DemoUPIApp& app) {
    return app.scheme + ".desktop";
}

std::string mimeTypeOf(const DemoUPIApp& app) {
    return "x-scheme-handler/" + app.scheme;
}

// An argument of an Exec line: quoted when it must be, with what is special inside quotes escaped.
std::string execArgument(const std::string& argument) {
    constexpr const char* plain =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_./:";
    if (argument.find_first_not_of(plain) == argument.npos) return argument;
    std::string text = "\"";
    for (const char character : argument) {
        if (std::strchr("\"`$\\", character)) text += "\\\\";
        text += character;
        if (character == '%') text += '%';
    }
    return text + "\"";
}

std::string desktopEntry(const DemoUPIApp& app, const std::string& program,
                         const std::string& iconFolder, const std::string& backendUrl) {
    std::string entry =
        "[Desktop Entry]\nType=Application\nName=" + app.name + "\nIcon=" + iconFolder + "/" +
        app.icon + "\nExec=" + execArgument(program) + " --app " + app.code + " --backend " +
        execArgument(backendUrl) + " %u\nMimeType=" + mimeTypeOf(app) + ";\nNoDisplay=true\n";
    // No process can start in a folder that does not exist.
    if (kindOf(app) == Kind::failingAtLaunch) entry += "Path=/nonexistent/zorvik-demo\n";
    return entry;
}

bool makeDefault(const DemoUPIApp& app) {
    GList* all = g_app_info_get_all();
    bool isDefault = false;
    for (GList* one = all; one && !isDefault; one = one->next) {
        GAppInfo* info = G_APP_INFO(one->data);
        const char* id = g_app_info_get_id(info);
        if (!id || fileNameOf(app) != id) continue;
        isDefault = g_app_info_set_as_default_for_type(info, mimeTypeOf(app).c_str(), nullptr);
    }
    g_list_free_full(all, g_object_unref);
    return isDefault;
}

}  // namespace

bool registerApps(const std::string& program, const std::string& iconFolder,
                  const std::string& backendUrl) {
    g_mkdir_with_parents(applicationsFolder().c_str(), 0700);
    for (const DemoUPIApp& app : demoUPIApps()) {
        if (kindOf(app) == Kind::notInstalled) continue;
        const std::string path = applicationsFolder() + "/" + fileNameOf(app);
        const std::string entry = desktopEntry(app, program, iconFolder, backendUrl);
        GError* error = nullptr;
        if (!g_file_set_contents(path.c_str(), entry.c_str(), -1, &error)) {
            g_printerr("%s was not written: %s\n", path.c_str(), error->message);
            g_error_free(error);
            return false;
        }
    }
    for (const DemoUPIApp& app : demoUPIApps()) {
        if (kindOf(app) == Kind::notInstalled) continue;
        if (!makeDefault(app)) {
            g_printerr("%s could not be made the handler of %s\n", app.name.c_str(),
                       app.scheme.c_str());
            return false;
        }
    }
    return true;
}

void unregisterApps() {
    for (const DemoUPIApp& app : demoUPIApps()) {
        g_app_info_reset_type_associations(mimeTypeOf(app).c_str());
        g_remove((applicationsFolder() + "/" + fileNameOf(app)).c_str());
    }
}

}  // namespace zorvik::demo
