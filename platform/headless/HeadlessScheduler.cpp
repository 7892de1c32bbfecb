#include "platform/headless/HeadlessScheduler.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/foundation/ProgrammingError.h"
#include "platform/foundation/Value.h"
#include "platform/runtime/Environment.h"

namespace zorvik::platform::headless {

namespace {

constexpr int threadCount = 2;

std::string counted(std::size_t count, const std::string& thing) {
    return std::to_string(count) + ' ' + thing + (count == 1 ? "" : "s");
}

}  // namespace

// Every task is destroyed with no lock held: what it captured may post, cancel or turn the queue.

HeadlessScheduler::HeadlessScheduler(Background background) : mode_(background) {
    if (mode_ == Background::threads) startThreads(threadCount);
}

HeadlessScheduler::~HeadlessScheduler() {
    dropPending();
}

void HeadlessScheduler::runUntilIdle() {
    while (runOneTurn()) {
    }
}

bool HeadlessScheduler::runOneTurn() {
    if (!isMainThread()) endOnProgrammingError("only the main thread may turn the main queue");
    isUsed_ = true;
    Task task;
    {
        const std::scoped_lock lock(mutex_);
        if (ready_.empty()) return false;
        task = std::move(ready_.front().task);
        ready_.pop_front();
    }
    ++turnCount_;
    if (task) task();
    return true;
}

void HeadlessScheduler::advanceBy(double seconds) {
    const double end = steadySeconds() + (std::isfinite(seconds) ? std::max(seconds, 0.0) : 0.0);
    for (;;) {
        runUntilIdle();
        const std::scoped_lock lock(mutex_);
        if (delayed_.empty() || delayed_.begin()->first.at > end) {
            // A task may have moved the clocks on further than this.
            steady_ = std::max(steady_, end);
            return;
        }
        steady_ = std::max(steady_, delayed_.begin()->first.at);
        moveDueTasks();
    }
}

void HeadlessScheduler::moveBy(double seconds) {
    const std::scoped_lock lock(mutex_);
    if (!std::isfinite(seconds) || seconds < 0) return;
    double end = steady_ + seconds;
    // Up to a deadline is up to it, whatever the sum comes to.
    if (!delayed_.empty() && delayed_.begin()->first.at - steady_ <= seconds)
        end = std::max(end, delayed_.begin()->first.at);
    steady_ = end;
    moveDueTasks();
    changed_.notify_all();
}

void HeadlessScheduler::setNow(double wallSeconds) {
    const std::scoped_lock lock(mutex_);
    wallBase_ = wallSeconds;
    wallSetAt_ = steady_;
}

std::size_t HeadlessScheduler::backgroundCount() const {
    const std::scoped_lock lock(mutex_);
    return background_.size() + handedOver_.size();
}

bool HeadlessScheduler::runOneBackgroundTask(std::size_t index) {
    if (mode_ == Background::threads) return false;
    isUsed_ = true;
    Task task;
    {
        const std::scoped_lock lock(mutex_);
        if (index >= background_.size()) return false;
        const auto place = background_.begin() + static_cast<std::ptrdiff_t>(index);
        task = std::move(*place);
        background_.erase(place);
    }
    runByHand(std::move(task));
    return true;
}

void HeadlessScheduler::runByHand(Task task) {
    if (mode_ == Background::manual) {
        if (task) task();
        return;
    }
    if (threads_.empty()) startThreads(1);
    std::unique_lock lock(mutex_);
    handedOver_.push_back(std::move(task));
    changed_.notify_all();
    changed_.wait(lock, [this] { return handedOver_.empty() && busyThreads_ == 0; });
}

void HeadlessScheduler::settle() {
    for (;;) {
        runUntilIdle();
        if (mode_ != Background::threads) {
            if (!runOneBackgroundTask()) return;
            continue;
        }
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return !ready_.empty() || !waitsForThreads(); });
        if (ready_.empty()) return;
    }
}

std::size_t HeadlessScheduler::pendingCount() const {
    const std::scoped_lock lock(mutex_);
    return ready_.size() + delayed_.size();
}

std::optional<double> HeadlessScheduler::nextDelay() const {
    const std::scoped_lock lock(mutex_);
    if (!ready_.empty()) return 0;
    if (delayed_.empty()) return std::nullopt;
    return delayed_.begin()->first.at - steady_;
}

std::string HeadlessScheduler::describePending() const {
    const std::scoped_lock lock(mutex_);
    std::string lines;
    const auto addLine = [&lines](TaskId id, const std::string& when) {
        lines.append("#").append(std::to_string(id)).append(when).push_back('\n');
    };
    for (const ReadyTask& entry : ready_) {
        addLine(entry.id, " ready");
    }
    for (const auto& [deadline, task] : delayed_) {
        addLine(deadline.id, " due in " + description(deadline.at - steady_) + " s");
    }
    return lines;
}

void HeadlessScheduler::runOnMain(Task task) {
    std::unique_lock lock(mutex_);
    if (isEnded_) {
        lock.unlock();
        return Environment::drop(std::move(task));
    }
    ready_.push_back({++lastId_, std::move(task)});
    changed_.notify_all();
}

Scheduler::TaskId HeadlessScheduler::runOnMainAfter(double seconds, Task task) {
    const std::scoped_lock lock(mutex_);
    const TaskId id = ++lastId_;
    if (isEnded_) return id;
    if (const double deadline = steady_ + seconds; deadline > steady_) {
        delayed_.emplace(Deadline{deadline, id}, std::move(task));
    } else {
        ready_.push_back({id, std::move(task)});
        changed_.notify_all();
    }
    return id;
}

void HeadlessScheduler::cancel(TaskId id) {
    Task dropped;
    {
        const std::scoped_lock lock(mutex_);
        const auto later = std::find_if(delayed_.begin(), delayed_.end(),
                                        [id](const auto& entry) { return entry.first.id == id; });
        if (later != delayed_.end()) {
            dropped = std::move(later->second);
            delayed_.erase(later);
            return;
        }
        // A task that came due stays cancellable until its turn.
        const auto due = std::find_if(ready_.begin(), ready_.end(),
                                      [id](const ReadyTask& entry) { return entry.id == id; });
        if (due == ready_.end()) return;
        dropped = std::move(due->task);
        ready_.erase(due);
    }
}

void HeadlessScheduler::runInBackground(Task task) {
    std::unique_lock lock(mutex_);
    if (isEnded_) {
        lock.unlock();
        return Environment::drop(std::move(task));
    }
    (mode_ == Background::threads ? handedOver_ : background_).push_back(std::move(task));
    changed_.notify_all();
}

double HeadlessScheduler::steadySeconds() const {
    const std::scoped_lock lock(mutex_);
    return steady_;
}

double HeadlessScheduler::wallSeconds() const {
    const std::scoped_lock lock(mutex_);
    return wallBase_ + (steady_ - wallSetAt_);
}

bool HeadlessScheduler::isMainThread() const {
    return std::this_thread::get_id() == mainThread_;
}

bool HeadlessScheduler::waitsForThreads() const {
    return busyThreads_ > 0 || !handedOver_.empty();
}

void HeadlessScheduler::moveDueTasks() {
    while (!delayed_.empty() && delayed_.begin()->first.at <= steady_) {
        auto entry = delayed_.extract(delayed_.begin());
        ready_.push_back({entry.key().id, std::move(entry.mapped())});
    }
}

void HeadlessScheduler::startThreads(int count) {
    for (int index = 0; index < count; ++index)
        threads_.emplace_back([this] { work(); });
}

void HeadlessScheduler::work() {
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return isEnded_ || !handedOver_.empty(); });
        if (isEnded_) return;
        Task task = std::move(handedOver_.front());
        handedOver_.pop_front();
        ++busyThreads_;
        lock.unlock();
        if (task) task();
        task = nullptr;
        lock.lock();
        --busyThreads_;
        changed_.notify_all();
    }
}

void HeadlessScheduler::tellOfForgottenTasks() const {
    const std::scoped_lock lock(mutex_);
    const std::size_t tasks = background_.size();
    if (isUsed_ || tasks + ready_.size() == 0) return;
    tellOfMisuse("the headless platform ended with " + counted(tasks, "background task") + " and " +
                 counted(ready_.size(), "main-queue turn") +
                 " that nobody ever ran; call settle() after what starts them");
}

void HeadlessScheduler::dropPending() {
    std::deque<ReadyTask> ready;
    std::map<Deadline, Task> delayed;
    std::deque<Task> background;
    std::deque<Task> handedOver;
    {
        const std::scoped_lock lock(mutex_);
        isEnded_ = true;
    }
    changed_.notify_all();
    for (std::thread& thread : threads_)
        thread.join();
    threads_.clear();
    const std::scoped_lock lock(mutex_);
    ready.swap(ready_);
    delayed.swap(delayed_);
    background.swap(background_);
    handedOver.swap(handedOver_);
}

}  // namespace zorvik::platform::headless
