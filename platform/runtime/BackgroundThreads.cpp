#include "platform/runtime/BackgroundThreads.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <list>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "platform/runtime/Environment.h"

namespace zorvik::platform {

struct BackgroundThreads::State {
    struct Worker {
        std::thread thread;
        bool isEnded = false;
    };

    State(std::size_t threads, std::function<void()> whenEnded)
        : maximumThreads(threads), ended(std::move(whenEnded)) {}

    void work(Worker& worker) {
        std::unique_lock lock(mutex);
        for (;;) {
            ++idle;
            changed.wait(lock, [this] { return isStopping || !waiting.empty(); });
            --idle;
            if (waiting.empty()) break;
            Task task = std::move(waiting.front());
            waiting.pop_front();
            lock.unlock();
            task();
            task = nullptr;
            lock.lock();
            if (isAbandoned) return;
            if (ended) ended();  // with the lock held, so never after the stop
        }
        worker.isEnded = true;
        changed.notify_all();
    }

    const std::size_t maximumThreads;
    const std::function<void()> ended;
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Task> waiting;
    std::list<Worker> workers;
    std::size_t idle = 0;
    bool isStopping = false;
    bool isAbandoned = false;
};

BackgroundThreads::BackgroundThreads(std::size_t maximumThreads, std::function<void()> ended)
    : state_(std::make_shared<State>(maximumThreads, std::move(ended))) {}

BackgroundThreads::~BackgroundThreads() {
    stop(0);
}

void BackgroundThreads::run(Task task) {
    std::unique_lock lock(state_->mutex);
    if (state_->isStopping) {
        lock.unlock();
        return Environment::drop(std::move(task));
    }
    state_->waiting.push_back(std::move(task));
    if (state_->waiting.size() > state_->idle && state_->workers.size() < state_->maximumThreads) {
        auto& worker = state_->workers.emplace_back();
        worker.thread = std::thread([state = state_, &worker] { state->work(worker); });
    }
    state_->changed.notify_one();
}

void BackgroundThreads::stop(double seconds) {
    std::deque<Task> dropped;
    std::unique_lock lock(state_->mutex);
    if (state_->isStopping) return;
    state_->isStopping = true;
    state_->changed.notify_all();
    auto& workers = state_->workers;
    state_->changed.wait_for(lock, std::chrono::duration<double>(seconds), [&workers] {
        for (const auto& worker : workers) {
            if (!worker.isEnded) return false;
        }
        return true;
    });
    state_->isAbandoned = true;
    dropped.swap(state_->waiting);
    std::vector<std::thread> ending;
    for (auto& worker : workers) {
        if (worker.isEnded) {
            ending.push_back(std::move(worker.thread));
        } else {
            worker.thread.detach();
        }
    }
    lock.unlock();
    for (auto& thread : ending)
        thread.join();
    for (auto& task : dropped)
        Environment::drop(std::move(task));
}

}  // namespace zorvik::platform
