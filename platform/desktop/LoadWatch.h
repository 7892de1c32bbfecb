#pragma once

#include <functional>
#include <optional>
#include <utility>

#include "platform/services/Scheduler.h"

namespace zorvik::platform::desktop {

// Notices that a load has made no progress for a while; the engines themselves wait for ever. Owned
// by its page; main thread only.
class LoadWatch {
  public:
    // For a load whose request names no time-out, and for one that the page starts.
    static constexpr double defaultSeconds = 60;

    explicit LoadWatch(std::function<void()> expired) : expired_(std::move(expired)) {}
    LoadWatch(const LoadWatch&) = delete;
    LoadWatch& operator=(const LoadWatch&) = delete;
    ~LoadWatch() { stop(); }

    // Calls `expired` once when `seconds` pass without progress from now on.
    void start(double seconds);
    void progressSeen();
    void stop();

  private:
    void schedule(double seconds);
    void wake();

    std::function<void()> expired_;
    double seconds_ = 0;
    double lastProgress_ = 0;
    std::optional<Scheduler::TaskId> task_;
};

}  // namespace zorvik::platform::desktop
