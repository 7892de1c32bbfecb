#pragma once

#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
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

// How long ago a process began; 0 when it is gone.
inline double secondsOld(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    const std::string text(std::istreambuf_iterator<char>(file), {});
    // The name, in brackets, may hold anything; the start is the 20th field behind it.
    std::istringstream fields(text.substr(std::min(text.rfind(')') + 1, text.size())));
    std::string field;
    for (int count = 0; count < 20; ++count)
        fields >> field;
    timespec now = {};
    clock_gettime(CLOCK_BOOTTIME, &now);
    if (field.empty()) return 0;
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec) -
           std::stod(field) / static_cast<double>(sysconf(_SC_CLK_TCK));
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
