#include "TemplateScheduler.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#include "platform/runtime/Environment.h"

namespace port_template {

using std::chrono::duration;
using zorvik::platform::Environment;
using zorvik::platform::Task;

namespace {

constexpr std::size_t maximumThreads = 4;
constexpr double patience = 2;  // seconds that the end waits for background tasks
constexpr double longestWait = 3600;

}  // namespace

TemplateScheduler::TemplateScheduler() : background_(maximumThreads, [] {}) {}

TemplateScheduler::~TemplateScheduler() {
    shutDown();
}

// Every task is destroyed with no lock held: what it holds may post or cancel in its destructor.

bool TemplateScheduler::runOneTurn() {
    Task task;
    {
        const std::scoped_lock lock(mutex_);
        const auto first = tasks_.begin();
        if (first == tasks_.end() || first->first.at > steadySeconds()) return false;
        task = std::move(first->second);
        tasks_.erase(first);
    }
    if (task) task();
    return true;
}

// PORTER: a system with a main loop of its own wakes that loop for the earliest deadline instead
// (a timer, an event source), and the loop calls runOneTurn once each time.
void TemplateScheduler::waitForTurn(double seconds) {
    const auto limit = steadySeconds() + std::min(seconds, longestWait);
    std::unique_lock lock(mutex_);
    for (;;) {
        const double now = steadySeconds();
        const double due = tasks_.empty() ? limit : std::min(limit, tasks_.begin()->first.at);
        if (due <= now) return;
        changed_.wait_for(lock, duration<double>(due - now));
    }
}

std::optional<double> TemplateScheduler::nextDelay() const {
    const std::scoped_lock lock(mutex_);
    if (tasks_.empty()) return std::nullopt;
    return std::max(0.0, tasks_.begin()->first.at - steadySeconds());
}

void TemplateScheduler::shutDown() {
    background_.stop(patience);
    std::map<Deadline, Task> dropped;
    const std::scoped_lock lock(mutex_);
    isShutDown_ = true;
    dropped.swap(tasks_);
}

void TemplateScheduler::runOnMain(Task task) {
    runOnMainAfter(0, std::move(task));
}

zorvik::platform::Scheduler::TaskId TemplateScheduler::runOnMainAfter(double seconds, Task task) {
    std::unique_lock lock(mutex_);
    const TaskId id = ++lastId_;
    if (isShutDown_) {
        lock.unlock();
        Environment::drop(std::move(task));  // destroyed where that may be done
        return id;
    }
    const double delay = seconds > 0 && std::isfinite(seconds) ? seconds : 0;
    tasks_.emplace(Deadline{steadySeconds() + delay, id}, std::move(task));
    changed_.notify_all();
    return id;
}

void TemplateScheduler::cancel(TaskId id) {
    Task dropped;
    const std::scoped_lock lock(mutex_);
    const auto entry = std::find_if(tasks_.begin(), tasks_.end(),
                                    [id](const auto& task) { return task.first.id == id; });
    if (entry == tasks_.end()) return;
    dropped = std::move(entry->second);
    tasks_.erase(entry);
}

void TemplateScheduler::runInBackground(Task task) {
    background_.run(std::move(task));
}

double TemplateScheduler::steadySeconds() const {
    return duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

double TemplateScheduler::wallSeconds() const {
    return duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

}  // namespace port_template
