#include "tests/desktop/ProcessTree.h"

#include <unistd.h>

#include <cctype>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

namespace zorvik::tests {

std::vector<pid_t> descendantsNamed(const std::string& name) {
    std::map<pid_t, pid_t> parents;
    std::map<pid_t, std::string> names;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", ignored)) {
        const std::string folder = entry.path().filename();
        if (std::isdigit(static_cast<unsigned char>(folder[0])) == 0) continue;
        std::ifstream file(entry.path() / "stat");
        std::string line;
        if (!std::getline(file, line)) continue;
        const auto open = line.find('(');
        const auto close = line.rfind(')');
        std::istringstream rest(line.substr(close + 2));
        char state = 0;
        pid_t parent = 0;
        rest >> state >> parent;
        const pid_t number = std::stoi(folder);
        parents[number] = parent;
        names[number] = line.substr(open + 1, close - open - 1);
    }
    std::vector<pid_t> found;
    for (const auto& [number, program] : names) {
        // The kernel keeps 15 characters of a name.
        if (program != name.substr(0, 15)) continue;
        pid_t ancestor = number;
        while (ancestor > 1 && ancestor != getpid())
            ancestor = parents[ancestor];
        if (ancestor == getpid()) found.push_back(number);
    }
    return found;
}

}  // namespace zorvik::tests
