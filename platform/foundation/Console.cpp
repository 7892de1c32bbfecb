#include "platform/foundation/Console.h"

#include <condition_variable>
#include <cstdio>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace zorvik::platform {

namespace {

struct Sink {
    std::function<void(std::string_view)> function;
    int calls = 0;  // under way; the console's mutex guards it
};

struct Console {
    std::mutex mutex;
    std::condition_variable callEnded;
    std::shared_ptr<Sink> sink;
};

// Never destroyed: a thread may print while the process ends.
Console& console() {
    static Console* const instance = new Console;
    return *instance;
}

thread_local bool isInsideSink = false;

// The sink in force, when there is one and this thread is not inside one, counted as called for as
// long as this lives. No lock is held meanwhile.
class SinkCall {
  public:
    SinkCall() {
        if (isInsideSink) return;
        const std::scoped_lock lock(console().mutex);
        sink_ = console().sink;
        if (!sink_) return;
        ++sink_->calls;
        isInsideSink = true;
    }
    SinkCall(const SinkCall&) = delete;
    SinkCall& operator=(const SinkCall&) = delete;
    ~SinkCall() {
        if (!sink_) return;
        isInsideSink = false;
        const std::scoped_lock lock(console().mutex);
        --sink_->calls;
        console().callEnded.notify_all();
        // Whoever waits for this call is the last to hold the sink, and destroys it.
        if (sink_.use_count() > 1) sink_.reset();
    }

    const Sink* sink() const { return sink_.get(); }

  private:
    std::shared_ptr<Sink> sink_;
};

}  // namespace

void printLine(std::string_view line) {
    if (const SinkCall call; call.sink() != nullptr) {
        call.sink()->function(line);
        return;
    }
    // One write with its newline; the stream's own lock keeps lines apart.
    std::string text;
    text.reserve(line.size() + 1);
    text.append(line).push_back('\n');
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

std::function<void(std::string_view line)> setConsoleSink(
    std::function<void(std::string_view line)> sink) {
    auto exchanged = sink ? std::make_shared<Sink>(Sink{std::move(sink)}) : nullptr;
    // The former sink is destroyed after the lock is gone: what it captured may print.
    std::unique_lock lock(console().mutex);
    exchanged.swap(console().sink);
    if (!exchanged) return {};
    if (!isInsideSink) console().callEnded.wait(lock, [&] { return exchanged->calls == 0; });
    return exchanged->function;
}

}  // namespace zorvik::platform
