#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <utility>

#include "platform/runtime/BackgroundThreads.h"
#include "platform/services/Scheduler.h"

namespace zorvik::platform::desktop {

// The main queue of a desktop port, which wakes its toolkit's main loop when a turn is due, and a
// few background threads. The thread that makes it is the main thread, and destroys it.
class DesktopScheduler : public Scheduler {
  public:
    // How long the end waits for background tasks that still run.
    static constexpr double patience = 2;  // seconds

    // Runs the background tasks there are to their end, for `patience` at the most; a task that
    // takes longer, such as a network call that hangs, is left to end by itself. Drops what waits
    // on the main queue; what is posted afterwards is dropped too. Main thread; derived classes
    // call it when they end.
    void shutDown();
    // Turns taken so far. Any thread.
    unsigned long turns() const { return turns_; }

    void runOnMain(Task task) override;
    TaskId runOnMainAfter(double seconds, Task task) override;
    void cancel(TaskId id) override;
    void runInBackground(Task task) override;
    double steadySeconds() const override;
    double wallSeconds() const override;

  protected:
    // Microseconds of the steady clock.
    using Moment = std::int64_t;

    // `backgroundTaskEnded` is called on the task's thread: a main loop that waits for a condition
    // asks again, since the task may have fulfilled it.
    explicit DesktopScheduler(std::function<void()> backgroundTaskEnded);

    static Moment now();
    // The main loop is to call takeTurn at this moment, once; nullopt: not at all. Replaces what
    // was asked for before. Any thread, with the queue locked.
    virtual void wakeAt(std::optional<Moment> moment) = 0;
    // Runs the task that is due, if any. Loops may be nested: a host that runs the main loop inside
    // a task finds the queue turning there, so what is next is asked for before the task runs.
    void takeTurn();
    // Asks for the next turn again.
    void wakeAgain();

  private:
    // Due time, then the order of the calls. A task without a delay is due at the moment it was
    // posted, so neither kind can starve the other.
    using Deadline = std::pair<Moment, TaskId>;

    TaskId post(double seconds, Task task, bool isDelayed);
    void wakeForFirst();  // with mutex_ held

    std::atomic<unsigned long> turns_ = 0;

    std::mutex mutex_;
    std::map<Deadline, Task> tasks_;
    std::unordered_map<TaskId, Deadline> delayed_;  // those that can be cancelled
    TaskId lastId_ = 0;
    bool isShutDown_ = false;

    BackgroundThreads background_;
};

}  // namespace zorvik::platform::desktop
