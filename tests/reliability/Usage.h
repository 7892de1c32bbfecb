#pragma once

#include <dirent.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace zorvik::tests {

// The kilobytes of a line such as "Pss:" in a process's smaps_rollup or "VmRSS:" in its status; 0
// when it is gone. Linux only, as all of this.
inline std::size_t kilobytes(pid_t process, const char* file, std::string_view name) {
    std::ifstream lines("/proc/" + std::to_string(process) + "/" + file);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(name)) return std::stoul(line.substr(name.size()));
    }
    return 0;
}

// The processes below this one whose name begins like this.
inline std::vector<pid_t> processesBelow(pid_t ancestor, std::string_view name) {
    std::vector<pid_t> found;
    std::error_code ignored;
    const std::string tasks = "/proc/" + std::to_string(ancestor) + "/task";
    for (const auto& task : std::filesystem::directory_iterator(tasks, ignored)) {
        std::ifstream children(task.path() / "children");
        for (pid_t child = 0; children >> child;) {
            std::ifstream file("/proc/" + std::to_string(child) + "/comm");
            std::string called;
            if (std::getline(file, called) && called.starts_with(name)) found.push_back(child);
            for (const pid_t below : processesBelow(child, name))
                found.push_back(below);
        }
    }
    return found;
}

inline std::size_t entriesIn(const std::string& folder, bool isDeep = false) {
    std::size_t count = 0;
    std::error_code ignored;
    if (isDeep) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder, ignored))
            count += entry.exists(ignored) ? 1 : 0;
    } else {
        for (const auto& entry : std::filesystem::directory_iterator(folder, ignored))
            count += entry.path().empty() ? 0 : 1;
    }
    return count;
}

// What this process holds at a moment.
struct Usage {
    std::size_t rss = kilobytes(getpid(), "status", "VmRSS:");
    std::size_t pss = kilobytes(getpid(), "smaps_rollup", "Pss:");
    std::size_t files = entriesIn("/proc/self/fd");
    std::size_t threads = entriesIn("/proc/self/task");
};

}  // namespace zorvik::tests
