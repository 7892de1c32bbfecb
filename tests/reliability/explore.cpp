// Explores the timings of checkouts on the headless port, or repeats one run.
// usage: zorvik-explore [--runs N] [--seed S] [--samples COUNT]     (of what the process holds)
//        zorvik-explore --replay SEED|FILE|-     (a script, as a failure prints it)
// Runs in a process of its own, so that one that ends or hangs it is told of and shrunk like any
// other failure.
#include <fcntl.h>
#include <signal.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <string>
#include <string_view>

#include "testkit/CheckoutExplorer.h"
#include "tests/reliability/Usage.h"

namespace {

using namespace zorvik::testkit;

constexpr unsigned hungSeconds = 20;

// What the exploring process leaves behind for the one that waits for it.
struct Shared {
    volatile std::uint64_t seed;
};

Shared& shared() {
    static auto& memory = *static_cast<Shared*>(
        mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    return memory;
}

// Runs it in a child that stays quiet on standard error; the status as waitpid has it.
int inChild(const std::function<int()>& work, bool isQuiet) {
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        if (isQuiet) dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
        const int code = work();
        std::fflush(stdout);
        // Through exit, for a leak check to have its say.
        std::exit(code);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status;
}

// A rule that fails is none of this: only an end of the process other than its own.
bool endsTheProcess(const Script& script) {
    const int status = inChild(
        [&] {
            alarm(hungSeconds);
            (void)CheckoutExplorer().replay(script);
            _exit(0);
            return 0;
        },
        true);
    return status != 0;
}

int tell(const std::optional<CheckoutExplorer::Failure>& failure) {
    if (!failure) return 0;
    std::cout << textOf(*failure) << std::flush;
    return 1;
}

void printSample(std::size_t run) {
    const zorvik::tests::Usage usage;
    std::printf("%7zu runs  rss %6zu kB  pss %6zu kB  files %zu  threads %zu\n", run, usage.rss,
                usage.pss, usage.files, usage.threads);
    std::fflush(stdout);
}

int explore(std::size_t runs, std::uint64_t seed, std::size_t samples) {
    shared().seed = seed;
    const auto start = std::chrono::steady_clock::now();
    const int status = inChild(
        [&] {
            CheckoutExplorer explorer;
            return tell(explorer.explore(runs, seed, [&](std::uint64_t next) {
                shared().seed = next;
                alarm(hungSeconds);
                const std::size_t done = next - seed + 1;
                if (samples > 0 && done % std::max<std::size_t>(runs / samples, 1) == 0)
                    printSample(done);
            }));
        },
        true);
    if (WIFEXITED(status) && WEXITSTATUS(status) <= 1) {
        const double seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        const std::size_t done = shared().seed - seed + 1;
        std::cout << done << " runs from seed " << seed << " in " << seconds << " s\n";
        return WEXITSTATUS(status);
    }
    const std::uint64_t last = shared().seed;
    if (!endsTheProcess(scriptOf(last))) {
        std::cout << "the process ended with status " << status << ", at seed " << last
                  << " or by what was left\n";
        return 1;
    }
    const Script script = CheckoutExplorer::shrunk(scriptOf(last), endsTheProcess);
    const std::string how = WIFSIGNALED(status)
                                ? std::string(strsignal(WTERMSIG(status)))
                                : "exit status " + std::to_string(WEXITSTATUS(status));
    std::cout << textOf({last, "the process lives on", how, script}) << std::flush;
    // Once more, with its last words.
    inChild(
        [&] {
            alarm(hungSeconds);
            (void)CheckoutExplorer().replay(script);
            return 0;
        },
        false);
    return 1;
}

std::optional<std::uint64_t> numberOf(std::string_view text) {
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

std::optional<Script> scriptFrom(const std::string& source) {
    if (const auto seed = numberOf(source)) return scriptOf(*seed);
    std::ifstream file(source);
    std::istream& input = source == "-" ? std::cin : file;
    return scriptOf(std::string_view(std::string(std::istreambuf_iterator<char>(input), {})));
}

int replay(const std::string& source) {
    const auto script = scriptFrom(source);
    if (!script) {
        std::cerr << "no such seed, or a line that is no step: " << source << '\n';
        return 2;
    }
    const auto failure = CheckoutExplorer().replay(*script);
    if (failure) return tell(failure);
    std::cout << textOf(*script) << "every rule holds\n";
    return 0;
}

}  // namespace

int main(int count, char** arguments) {
    std::size_t runs = 100'000;
    std::uint64_t seed = 1;
    std::uint64_t samples = 0;
    for (int place = 1; place < count; place += 2) {
        const std::string_view name = arguments[place];
        const std::string value = place + 1 < count ? arguments[place + 1] : "";
        if (name == "--replay" && !value.empty()) return replay(value);
        const auto number = numberOf(value);
        if (!number || (name != "--runs" && name != "--seed" && name != "--samples")) {
            std::cerr << "usage: zorvik-explore [--runs N] [--seed S] [--samples COUNT] | "
                         "--replay SEED|FILE|-\n";
            return 2;
        }
        (name == "--runs" ? runs : name == "--seed" ? seed : samples) = *number;
    }
    return explore(runs, seed, samples);
}
