// Short checkouts on the real engine, one after another in one process: pages and hosts that
// behave in any way, or only ordinary payments. Memory, processes and what else may pile up are
// counted as it goes.
// usage: zorvik-engine-gtk, zorvik-engine-qt [--runs N] [--seed S] [--plain] | --replay SEED under
// a display
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/reliability/EngineCheckouts.h"
#include "tests/reliability/EventSources.h"
#include "tests/reliability/Usage.h"
#include "tests/support/EngineProcesses.h"

namespace {

using namespace zorvik;
using testkit::Script;

struct Sample : tests::Usage {
    std::vector<pid_t> processes = tests::engineProcesses(tests::EngineProcess::web);
    std::size_t processesPss = 0;
    std::size_t sources = tests::eventSources();
    std::size_t temporary = 0;
    std::size_t notes = 0;

    Sample() {
        for (const pid_t process : processes)
            processesPss += tests::kilobytes(process, "smaps_rollup", "Pss:");
        // The web engine's sandbox leaves a note of each process in a folder of its own there.
        const char* const folder = std::getenv("XDG_RUNTIME_DIR");
        if (folder == nullptr) return;
        notes = tests::entriesIn(std::string(folder) + "/.flatpak");
        temporary = tests::entriesIn(folder, true) -
                    tests::entriesIn(std::string(folder) + "/.flatpak", true);
    }
    void print(std::size_t run, double seconds) const {
        std::printf(
            "%6zu runs %7.0f s  rss %6zu kB  pss %6zu kB  web processes %zu (%6zu kB)  "
            "files %3zu  threads %2zu  sources %3zu  temporary files %zu  sandbox notes %zu\n",
            run, seconds, rss, pss, processes.size(), processesPss, files, threads, sources,
            temporary, notes);
        std::fflush(stdout);
    }
};

// What may not pile up, against the sample after the warm-up. A second web process may have come
// meanwhile, with handles and sources of its own.
std::string growth(const Sample& before, const Sample& after) {
    constexpr std::size_t maximumProcesses = 2;
    constexpr std::size_t slack = 8;
    constexpr std::size_t sourceSlack = 60;
    if (after.processes.size() > maximumProcesses) return "web processes are left";
    if (after.files > before.files + slack) return "file handles are left";
    if (after.threads > before.threads + slack) return "threads are left";
    if (after.sources > before.sources + sourceSlack) return "main loop sources are left";
    if (after.temporary > before.temporary + slack) return "temporary files are left";
    return "";
}

int run(const tests::PageServer& server, std::size_t runs, std::uint64_t seed, bool isPlain) {
    const auto engine = tests::EngineCheckouts::make(server);
    if (!engine->isThere()) return 2;
    const auto start = std::chrono::steady_clock::now();
    std::optional<Sample> warm;
    const std::size_t between = std::max<std::size_t>(runs / 20, 1);
    int code = 0;
    for (std::size_t done = 1; done <= runs; ++done, ++seed) {
        const Script script = tests::shortScript(seed, isPlain);
        const std::string broken = engine->play(script);
        if (!broken.empty()) {
            std::cout << "broken: " << broken << "\n# seed " << seed << '\n'
                      << textOf(script) << std::flush;
            code = 1;
        }
        if (done % between != 0 && done != runs) continue;
        // What is on its way out has gone by then; at the end also a process that had to be ended.
        engine->settle(done < runs ? 1 : 4);
        const Sample sample;
        sample.print(
            done, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        if (!warm && done >= std::max<std::size_t>(runs / 10, 10)) warm = sample;
        if (done < runs || !warm) continue;
        if (const std::string left = growth(*warm, sample); !left.empty()) {
            std::cout << "broken: " << left << std::endl;
            code = 1;
        }
    }
    return code;
}

}  // namespace

int main(int count, char** arguments) {
    std::size_t runs = 1000;
    std::uint64_t seed = 1;
    bool isPlain = false;
    for (int place = 1; place < count; ++place) {
        const std::string_view name = arguments[place];
        if (name == "--plain") {
            isPlain = true;
        } else if (place + 1 < count && (name == "--runs" || name == "--seed")) {
            (name == "--runs" ? runs : seed) = std::strtoull(arguments[++place], nullptr, 10);
        } else if (place + 1 < count && name == "--replay") {
            seed = std::strtoull(arguments[++place], nullptr, 10);
            std::cout << textOf(tests::shortScript(seed, isPlain)) << std::flush;
            runs = 1;
        } else {
            std::cerr << "usage: zorvik-engine [--runs N] [--seed S] [--plain] | --replay SEED\n";
            return 2;
        }
    }
    // A folder of this process's own, to count what is left there.
    if (const char* folder = std::getenv("XDG_RUNTIME_DIR")) {
        const std::string temporary = std::string(folder) + "/tmp";
        std::filesystem::create_directories(temporary);
        setenv("TMPDIR", temporary.c_str(), 1);
    }
    const tests::PageServer server;
    return run(server, runs, seed, isPlain);
}
