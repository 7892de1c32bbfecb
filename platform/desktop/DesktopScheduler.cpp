#include "platform/desktop/DesktopScheduler.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <string>

#include "platform/foundation/ProgrammingError.h"
#include "platform/runtime/Environment.h"

namespace zorvik::platform::desktop {
namespace {

constexpr std::size_t maximumThreads = 4;
constexpr double longestDelay = 100.0 * 365 * 24 * 3600;

std::int64_t microseconds(double seconds) {
    if (!(seconds > 0)) return 0;  // NaN included
    return static_cast<std::int64_t>(std::ceil(std::min(seconds, longestDelay) * 1e6));
}

}  // namespace

DesktopScheduler::DesktopScheduler(std::function<void()> backgroundTaskEnded)
    : background_(maximumThreads, std::move(backgroundTaskEnded)) {}

void DesktopScheduler::shutDown() {
    background_.stop(patience);

    std::map<Deadline, Task> dropped;
    std::size_t waiting = 0;
    {
        const std::scoped_lock lock(mutex_);
        isShutDown_ = true;
        waiting = tasks_.size() - delayed_.size();
        dropped.swap(tasks_);
        delayed_.clear();
        wakeForFirst();
    }
    if (turns_ > 0 || waiting == 0) return;
    tellOfMisuse(
        "the platform ended before any main loop ran and dropped what waited on the main queue (" +
        std::to_string(waiting) + "); call run() after what starts it");
}

void DesktopScheduler::runOnMain(Task task) {
    post(0, std::move(task), false);
}

Scheduler::TaskId DesktopScheduler::runOnMainAfter(double seconds, Task task) {
    return post(seconds, std::move(task), true);
}

Scheduler::TaskId DesktopScheduler::post(double seconds, Task task, bool isDelayed) {
    std::unique_lock lock(mutex_);
    const TaskId id = ++lastId_;
    if (isShutDown_) {
        lock.unlock();
        Environment::drop(std::move(task));
        return id;
    }
    const Deadline deadline{now() + microseconds(seconds), id};
    const auto place = tasks_.emplace(deadline, std::move(task)).first;
    if (isDelayed) delayed_.emplace(id, deadline);
    if (place == tasks_.begin()) wakeForFirst();
    return id;
}

void DesktopScheduler::cancel(TaskId id) {
    Task dropped;  // destroyed after the lock is free: its destructor may come back here
    const std::scoped_lock lock(mutex_);
    const auto entry = delayed_.find(id);
    if (entry == delayed_.end()) return;
    const auto place = tasks_.find(entry->second);
    dropped = std::move(place->second);
    tasks_.erase(place);
    delayed_.erase(entry);
    wakeForFirst();
}

void DesktopScheduler::wakeForFirst() {
    wakeAt(tasks_.empty() ? std::nullopt : std::optional(tasks_.begin()->first.first));
}

void DesktopScheduler::wakeAgain() {
    const std::scoped_lock lock(mutex_);
    wakeForFirst();
}

void DesktopScheduler::takeTurn() {
    ++turns_;
    Task task;
    {
        const std::scoped_lock lock(mutex_);
        if (!tasks_.empty() && tasks_.begin()->first.first <= now()) {
            const auto first = tasks_.begin();
            task = std::move(first->second);
            delayed_.erase(first->first.second);
            tasks_.erase(first);
        }
        wakeForFirst();
    }
    if (task) task();
}

void DesktopScheduler::runInBackground(Task task) {
    background_.run(std::move(task));
}

DesktopScheduler::Moment DesktopScheduler::now() {
    using std::chrono::duration_cast, std::chrono::microseconds, std::chrono::steady_clock;
    return duration_cast<microseconds>(steady_clock::now().time_since_epoch()).count();
}

double DesktopScheduler::steadySeconds() const {
    return static_cast<double>(now()) / 1e6;
}

double DesktopScheduler::wallSeconds() const {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration<double>(now).count();
}

}  // namespace zorvik::platform::desktop
