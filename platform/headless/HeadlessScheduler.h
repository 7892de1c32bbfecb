#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/foundation/Export.h"
#include "platform/services/Scheduler.h"

namespace zorvik::platform::headless {

// A main queue that turns when told to, over a virtual clock. The thread that makes it is the main
// thread and the only one that may turn it; tasks may be posted from any thread.
class ZORVIK_API HeadlessScheduler : public Scheduler {
  public:
    enum class Background {
        manual,        // background tasks wait until one is told to run, on the calling thread
        manualThread,  // the same, but on a thread of their own, for which the caller waits
        threads        // they run at once on two threads of their own
    };

    explicit HeadlessScheduler(Background background = Background::manual);
    ~HeadlessScheduler() override;

    // Runs main-queue turns, and delayed tasks that are due, until none is left. Time stands still.
    void runUntilIdle();
    // Runs one turn; false when there was none to run.
    bool runOneTurn();
    // Moves both clocks on by `seconds`, running what comes due at its own time, and then all
    // turns that are ready.
    void advanceBy(double seconds);
    // Moves both clocks on and runs nothing, as behind a main thread that is busy so long; what
    // came due meanwhile is ready then.
    void moveBy(double seconds);
    // Sets the wall clock; runs nothing and leaves the steady clock alone.
    void setNow(double wallSeconds);

    // Background tasks that wait (manual modes), and running one of them by its place in line;
    // false when there is none, and in threads mode.
    std::size_t backgroundCount() const;
    bool runOneBackgroundTask(std::size_t index = 0);
    // Runs background tasks and turns until neither is left; in threads mode waits for the threads.
    void settle();

    // Turns that are ready and delayed tasks not yet due.
    std::size_t pendingCount() const;
    // Seconds until the next task is due (0: one is ready); nullopt when nothing is pending.
    std::optional<double> nextDelay() const;
    // Turns run so far.
    std::size_t turnCount() const { return turnCount_; }
    // One line a pending task: its number and when it is due.
    std::string describePending() const;

    void runOnMain(Task task) override;
    TaskId runOnMainAfter(double seconds, Task task) override;
    void cancel(TaskId id) override;
    void runInBackground(Task task) override;
    double steadySeconds() const override;
    double wallSeconds() const override;

  private:
    struct Deadline {
        double at;
        TaskId id;
        friend auto operator<=>(const Deadline&, const Deadline&) = default;
    };

    struct ReadyTask {
        TaskId id;
        Task task;
    };

    friend class HeadlessPlatform;

    bool isMainThread() const;
    bool waitsForThreads() const;
    void moveDueTasks();
    void startThreads(int count);
    void work();
    // Runs it where the mode says, and destroys it there.
    void runByHand(Task task);
    // Ends the threads and destroys what is pending; what comes from now on is dropped.
    void dropPending();
    // Says on standard error what waits, where nobody ever asked for a turn or a background task.
    void tellOfForgottenTasks() const;

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    const std::thread::id mainThread_ = std::this_thread::get_id();
    const Background mode_;
    double steady_ = 0;
    // The wall clock stood at wallBase_ when the steady one stood at wallSetAt_.
    double wallBase_ = 1'700'000'000;
    double wallSetAt_ = 0;
    TaskId lastId_ = 0;
    std::deque<ReadyTask> ready_;
    std::map<Deadline, Task> delayed_;  // by deadline, then by number
    std::deque<Task> background_;
    std::deque<Task> handedOver_;  // to the threads
    std::size_t busyThreads_ = 0;
    bool isEnded_ = false;
    std::size_t turnCount_ = 0;  // main thread only
    bool isUsed_ = false;        // a turn or background task was asked for; main thread only
    std::vector<std::thread> threads_;
};

}  // namespace zorvik::platform::headless
