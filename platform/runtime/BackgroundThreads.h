#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "platform/foundation/Export.h"
#include "platform/services/Scheduler.h"

namespace zorvik::platform {

// A few threads for the background tasks of a port, started as tasks come. Owned by the port's
// scheduler.
class ZORVIK_API BackgroundThreads {
  public:
    // `ended` is called after each task, on its thread.
    BackgroundThreads(std::size_t maximumThreads, std::function<void()> ended);
    BackgroundThreads(const BackgroundThreads&) = delete;
    BackgroundThreads& operator=(const BackgroundThreads&) = delete;
    ~BackgroundThreads();

    // Any thread. A task that comes after the stop is dropped.
    void run(Task task);
    // Runs the tasks there are to their end, for `seconds` at the most. What has not begun by then
    // is dropped; what still runs is left to itself, and nothing here is told when it ends.
    void stop(double seconds);

  private:
    struct State;

    // The threads share it, so that one left to itself finds it whole.
    const std::shared_ptr<State> state_;
};

}  // namespace zorvik::platform
