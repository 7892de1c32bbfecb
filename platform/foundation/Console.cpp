#include "platform/foundation/Console.h"

#include <cstdio>
#include <mutex>
#include <string>
#include <utility>

namespace zorvik::platform {

namespace {

struct Console {
    std::mutex mutex;
    std::function<void(std::string_view)> sink;
};

// Never destroyed: a thread may print while the process ends.
Console& console() {
    static Console* const instance = new Console;
    return *instance;
}

}  // namespace

void printLine(std::string_view line) {
    Console& target = console();
    std::unique_lock lock(target.mutex);
    if (target.sink) {
        target.sink(line);
        return;
    }
    lock.unlock();

    // One write with its newline; the stream's own lock keeps lines apart.
    std::string text;
    text.reserve(line.size() + 1);
    text.append(line).push_back('\n');
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

void setConsoleSink(std::function<void(std::string_view line)> sink) {
    Console& target = console();
    // The former sink is destroyed after the lock is gone: what it captured may print.
    const std::scoped_lock lock(target.mutex);
    target.sink.swap(sink);
}

}  // namespace zorvik::platform
