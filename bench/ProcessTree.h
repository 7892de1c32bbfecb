#pragma once

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <string>

namespace zorvik::bench {

// This process with all that descend from it, as the system counts them at this moment.
struct ProcessTree {
    int processes = 0;
    double cpuSeconds = 0;  // spent since each was started
    double megabytes = 0;   // shared pages counted in part (PSS)

    static ProcessTree now();
};

inline ProcessTree ProcessTree::now() {
    struct Entry {
        int parent = 0;
        double cpuSeconds = 0;
    };
    std::map<int, Entry> entries;
    for (const auto& folder : std::filesystem::directory_iterator("/proc")) {
        const std::string name = folder.path().filename();
        if (name.find_first_not_of("0123456789") != name.npos) continue;
        std::ifstream file(folder.path() / "stat");
        std::string text((std::istreambuf_iterator<char>(file)), {});
        const std::size_t end = text.rfind(')');
        if (end == text.npos) continue;  // it has just ended
        std::istringstream fields(text.substr(end + 1));
        std::string skipped;
        Entry entry;
        double user = 0, system = 0;
        fields >> skipped >> entry.parent;
        for (int i = 0; i < 9; ++i)
            fields >> skipped;
        fields >> user >> system;
        entry.cpuSeconds = (user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
        entries[std::stoi(name)] = entry;
    }
    ProcessTree tree;
    for (const auto& [process, entry] : entries) {
        int ancestor = process;
        while (ancestor != getpid() && entries.contains(ancestor))
            ancestor = entries[ancestor].parent;
        if (ancestor != getpid()) continue;
        ++tree.processes;
        tree.cpuSeconds += entry.cpuSeconds;
        std::ifstream file("/proc/" + std::to_string(process) + "/smaps_rollup");
        for (std::string word; file >> word;) {
            if (word != "Pss:") continue;
            double kilobytes = 0;
            file >> kilobytes;
            tree.megabytes += kilobytes / 1024;
            break;
        }
    }
    return tree;
}

// Lets five seconds go by with `wait` (milliseconds) and prints what this process and its children
// used of them: " cpu MILLISECONDS processes COUNT megabytes PSS".
template <typename Wait>
void printIdle(Wait wait) {
    const double before = ProcessTree::now().cpuSeconds;
    wait(5000);
    const ProcessTree tree = ProcessTree::now();
    std::cout << " cpu " << (tree.cpuSeconds - before) * 1000 << " processes " << tree.processes
              << " megabytes " << tree.megabytes << std::endl;
}

}  // namespace zorvik::bench
