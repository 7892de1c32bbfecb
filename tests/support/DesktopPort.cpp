#include "tests/support/DesktopPort.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace zorvik::tests {
namespace {

namespace fs = std::filesystem;

bool isOfKind(pid_t process, EngineProcess kind) {
    const fs::path folder = "/proc/" + std::to_string(process);
    std::string name, arguments;
    std::getline(std::ifstream(folder / "comm"), name);
    if (kind == EngineProcess::network) return name == "WebKitNetworkPr";
    if (name == "WebKitWebProces") return true;
    std::getline(std::ifstream(folder / "cmdline"), arguments);
    return name == "QtWebEngineProc" && arguments.find("--type=renderer") != std::string::npos;
}

void collect(pid_t ancestor, EngineProcess kind, std::vector<pid_t>& found) {
    std::error_code ignored;
    const fs::path tasks = "/proc/" + std::to_string(ancestor) + "/task";
    for (const auto& task : fs::directory_iterator(tasks, ignored)) {
        std::ifstream children(task.path() / "children");
        for (pid_t child = 0; children >> child;) {
            if (isOfKind(child, kind)) found.push_back(child);
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
