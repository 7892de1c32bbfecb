#include "platform/gtk/GtkScheduler.h"

#include <glib.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>

#include "platform/foundation/ProgrammingError.h"
#include "platform/runtime/Environment.h"

namespace zorvik::platform::gtk {
namespace {

// Below WebKit's messages (100) and on a par with drawing: a busy queue of a higher priority
// starves the page and the screen, one of a lower priority is starved by a flood of page messages.
constexpr int priority = 120;
constexpr std::size_t maximumThreads = 4;
constexpr double longestDelay = 100.0 * 365 * 24 * 3600;

struct TurnSource {
    GSource base;
    void (*takeTurn)(void* scheduler);
    void* scheduler;
};

GSourceFuncs turnFunctions = {
    nullptr,
    nullptr,
    [](GSource* source, GSourceFunc, gpointer) -> gboolean {
        auto* turn = reinterpret_cast<TurnSource*>(source);
        turn->takeTurn(turn->scheduler);
        return G_SOURCE_CONTINUE;
    },
    nullptr,
    nullptr,
    nullptr,
};

std::int64_t microseconds(double seconds) {
    if (!(seconds > 0)) return 0;  // NaN included
    return static_cast<std::int64_t>(std::ceil(std::min(seconds, longestDelay) * 1e6));
}

}  // namespace

// A main loop that waits for a condition asks again after each background task, which may have
// fulfilled it.
GtkScheduler::GtkScheduler()
    : source_(g_source_new(&turnFunctions, sizeof(TurnSource))),
      background_(maximumThreads, [] { g_main_context_wakeup(nullptr); }) {
    auto* turn = reinterpret_cast<TurnSource*>(source_);
    turn->takeTurn = [](void* scheduler) { static_cast<GtkScheduler*>(scheduler)->takeTurn(); };
    turn->scheduler = this;
    g_source_set_priority(source_, priority);
    // A host may run the main loop inside a task; the queue goes on turning there.
    g_source_set_can_recurse(source_, TRUE);
    g_source_set_static_name(source_, "zorvik main queue");
    g_source_attach(source_, nullptr);
}

GtkScheduler::~GtkScheduler() {
    shutDown();
    g_source_destroy(source_);
    g_source_unref(source_);
}

void GtkScheduler::shutDown() {
    background_.stop(patience);

    std::map<Deadline, Task> dropped;
    std::size_t waiting = 0;
    {
        const std::scoped_lock lock(mutex_);
        isShutDown_ = true;
        waiting = tasks_.size() - delayed_.size();
        dropped.swap(tasks_);
        delayed_.clear();
        setWaking();
    }
    if (turns_ > 0 || waiting == 0) return;
    tellOfMisuse(
        "the platform ended before any main loop ran and dropped what waited on the main queue (" +
        std::to_string(waiting) + "); call run() after what starts it");
}

void GtkScheduler::runOnMain(Task task) {
    post(0, std::move(task), false);
}

Scheduler::TaskId GtkScheduler::runOnMainAfter(double seconds, Task task) {
    return post(seconds, std::move(task), true);
}

Scheduler::TaskId GtkScheduler::post(double seconds, Task task, bool isDelayed) {
    std::unique_lock lock(mutex_);
    const TaskId id = ++lastId_;
    if (isShutDown_) {
        lock.unlock();
        Environment::drop(std::move(task));
        return id;
    }
    const Deadline deadline{g_get_monotonic_time() + microseconds(seconds), id};
    const auto place = tasks_.emplace(deadline, std::move(task)).first;
    if (isDelayed) delayed_.emplace(id, deadline);
    if (place == tasks_.begin()) setWaking();
    return id;
}

void GtkScheduler::cancel(TaskId id) {
    Task dropped;  // destroyed after the lock is free: its destructor may come back here
    const std::scoped_lock lock(mutex_);
    const auto entry = delayed_.find(id);
    if (entry == delayed_.end()) return;
    const auto place = tasks_.find(entry->second);
    dropped = std::move(place->second);
    tasks_.erase(place);
    delayed_.erase(entry);
    setWaking();
}

void GtkScheduler::setWaking() {
    if (tasks_.empty()) {
        g_source_set_ready_time(source_, -1);
    } else {
        const std::int64_t due = tasks_.begin()->first.first;
        g_source_set_ready_time(source_, due <= g_get_monotonic_time() ? 0 : due);
    }
}

void GtkScheduler::takeTurn() {
    ++turns_;
    Task task;
    {
        const std::scoped_lock lock(mutex_);
        if (!tasks_.empty() && tasks_.begin()->first.first <= g_get_monotonic_time()) {
            const auto first = tasks_.begin();
            task = std::move(first->second);
            delayed_.erase(first->first.second);
            tasks_.erase(first);
        }
        setWaking();
    }
    if (task) task();
}

void GtkScheduler::runInBackground(Task task) {
    background_.run(std::move(task));
}

double GtkScheduler::steadySeconds() const {
    return static_cast<double>(g_get_monotonic_time()) / 1e6;
}

double GtkScheduler::wallSeconds() const {
    return static_cast<double>(g_get_real_time()) / 1e6;
}

}  // namespace zorvik::platform::gtk
