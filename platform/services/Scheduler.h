#pragma once

#include <cstdint>
#include <functional>

#include "platform/foundation/Export.h"

namespace zorvik::platform {

using Task = std::function<void()>;

// The port's threads and clocks. Owned by the port, lives while it is installed. Members may be
// called on any thread unless they say otherwise.
class ZORVIK_API Scheduler {
  public:
    using TaskId = std::uint64_t;

    virtual ~Scheduler() = default;

    // Runs the task in a main-queue turn of its own, never inside this call. First in, first out.
    virtual void runOnMain(Task task) = 0;
    // The same, no earlier than `seconds` from now; equal deadlines run in the order of the calls.
    virtual TaskId runOnMainAfter(double seconds, Task task) = 0;
    // Drops a delayed task and what it holds; nothing for one that ran or is unknown. Main thread.
    virtual void cancel(TaskId id) = 0;
    // Runs the task away from the main thread; no order among tasks.
    virtual void runInBackground(Task task) = 0;

    // Seconds on a clock that never jumps; only differences mean something.
    virtual double steadySeconds() const = 0;
    // Seconds since 1970-01-01 UTC.
    virtual double wallSeconds() const = 0;
};

}  // namespace zorvik::platform
