#pragma once

#include <condition_variable>
#include <map>
#include <mutex>
#include <optional>

#include "platform/runtime/BackgroundThreads.h"
#include "platform/services/Scheduler.h"

namespace port_template {

// A main queue that the main thread turns, over the machine's own clocks. Complete: it needs a
// porter only where the system has a main loop of its own.
class TemplateScheduler : public zorvik::platform::Scheduler {
  public:
    TemplateScheduler();
    ~TemplateScheduler() override;

    // Runs one turn; false when none was ready. Main thread.
    bool runOneTurn();
    // Sleeps until a turn is ready, for `seconds` at the most. Main thread.
    void waitForTurn(double seconds);
    // Seconds until a turn is ready; nullopt when nothing is pending. Main thread.
    std::optional<double> nextDelay() const;
    // Ends the background tasks and destroys what is pending; what comes later is dropped. Main
    // thread.
    void shutDown();

    void runOnMain(zorvik::platform::Task task) override;
    TaskId runOnMainAfter(double seconds, zorvik::platform::Task task) override;
    void cancel(TaskId id) override;
    void runInBackground(zorvik::platform::Task task) override;
    double steadySeconds() const override;
    double wallSeconds() const override;

  private:
    // A task without a delay is due when it is posted, so neither kind can starve the other. Equal
    // deadlines run in the order of the calls.
    struct Deadline {
        double at;
        TaskId id;
        friend auto operator<=>(const Deadline&, const Deadline&) = default;
    };

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::map<Deadline, zorvik::platform::Task> tasks_;
    TaskId lastId_ = 0;
    bool isShutDown_ = false;
    zorvik::platform::BackgroundThreads background_;
};

}  // namespace port_template
