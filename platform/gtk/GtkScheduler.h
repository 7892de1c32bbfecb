#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "platform/runtime/BackgroundThreads.h"
#include "platform/services/Scheduler.h"

typedef struct _GSource GSource;

namespace zorvik::platform::gtk {

// The main queue as one source of GLib's default main context, and a few background threads.
// The thread that makes it is the main thread, and destroys it.
class GtkScheduler : public Scheduler {
  public:
    GtkScheduler();
    ~GtkScheduler() override;

    // How long the end waits for background tasks that still run.
    static constexpr double patience = 2;  // seconds

    // Runs the background tasks there are to their end, for `patience` at the most; a task that
    // takes longer, such as a network call that hangs, is left to end by itself. Drops what waits
    // on the main queue; what is posted afterwards is dropped too. Main thread.
    void shutDown();
    // Turns taken so far. Any thread.
    unsigned long turns() const { return turns_; }

    void runOnMain(Task task) override;
    TaskId runOnMainAfter(double seconds, Task task) override;
    void cancel(TaskId id) override;
    void runInBackground(Task task) override;
    double steadySeconds() const override;
    double wallSeconds() const override;

  private:
    // Due time in microseconds of the monotonic clock, then the order of the calls. A task without
    // a delay is due at the moment it was posted, so neither kind can starve the other.
    using Deadline = std::pair<std::int64_t, TaskId>;

    TaskId post(double seconds, Task task, bool isDelayed);
    void takeTurn();
    void setWaking();  // with mutex_ held

    GSource* source_ = nullptr;
    std::atomic<unsigned long> turns_ = 0;

    std::mutex mutex_;
    std::map<Deadline, Task> tasks_;
    std::unordered_map<TaskId, Deadline> delayed_;  // those that can be cancelled
    TaskId lastId_ = 0;
    bool isShutDown_ = false;

    BackgroundThreads background_;
};

}  // namespace zorvik::platform::gtk
