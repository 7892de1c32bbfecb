#include "tests/support/EngineProcesses.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace zorvik::tests {
namespace {

namespace fs = std::filesystem;

std::string nameOf(pid_t process) {
    std::string name;
    std::getline(std::ifstream("/proc/" + std::to_string(process) + "/comm"), name);
    return name;
}

// Ended, and only waiting for its parent to notice.
bool isOver(pid_t process) {
    std::string stat;
    std::getline(std::ifstream("/proc/" + std::to_string(process) + "/stat"), stat);
    const std::size_t name = stat.rfind(") ");
    return name == stat.npos || stat[name + 2] == 'Z';
}

bool isOfKind(const std::string& name, const std::string& parent, EngineProcess kind) {
    if (kind == EngineProcess::network) return name == "WebKitNetworkPr";
    // Qt's engine makes them as copies of a process that runs no page itself.
    return name == "WebKitWebProces" || (name == "QtWebEngineProc" && parent == name);
}

void collect(pid_t ancestor, EngineProcess kind, std::vector<pid_t>& found) {
    std::error_code ignored;
    const std::string parent = nameOf(ancestor);
    const fs::path tasks = "/proc/" + std::to_string(ancestor) + "/task";
    for (const auto& task : fs::directory_iterator(tasks, ignored)) {
        std::ifstream children(task.path() / "children");
        for (pid_t child = 0; children >> child;) {
            if (isOfKind(nameOf(child), parent, kind) && !isOver(child)) found.push_back(child);
            collect(child, kind, found);
        }
    }
}

}  // namespace

std::vector<pid_t> engineProcesses(EngineProcess kind) {
    std::vector<pid_t> found;
    collect(getpid(), kind, found);
    return found;
}

void installApplication(const std::string& scheme, const std::string& shellScript) {
    const fs::path data = std::getenv("XDG_DATA_HOME");
    const fs::path program = data / scheme;
    std::ofstream(program) << "#!/bin/sh\n" << shellScript << '\n';
    fs::permissions(program, fs::perms::owner_all);
    std::ofstream(data / "applications" / (scheme + ".desktop"))
        << "[Desktop Entry]\nType=Application\nName=" << scheme << "\nExec=" << program.string()
        << " %u\nMimeType=x-scheme-handler/" << scheme << ";\n";
    std::ofstream(fs::path(std::getenv("XDG_CONFIG_HOME")) / "mimeapps.list")
        << "[Default Applications]\nx-scheme-handler/" << scheme << "=" << scheme << ".desktop\n";
}

}  // namespace zorvik::tests
