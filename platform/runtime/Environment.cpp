#include "platform/runtime/Environment.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "platform/foundation/ProgrammingError.h"
#include "platform/runtime/NotificationCenter.h"

namespace zorvik::platform {

namespace {

// Tells the observers of the notification centre that the application came back.
class Installation : private ApplicationDelegate {
  public:
    explicit Installation(const Services& portServices) : services(portServices) {
        services->application.setDelegate(this);
    }
    Installation(const Installation&) = delete;
    Installation& operator=(const Installation&) = delete;
    ~Installation() override { services->application.setDelegate(nullptr); }

    void exchange(const Services& others, std::shared_ptr<const void> owner) {
        services->application.setDelegate(nullptr);
        services.emplace(others);
        services->application.setDelegate(this);
        if (owner) owners_.push_back(std::move(owner));
    }

    std::optional<Services> services;  // always there; references cannot be assigned
    NotificationCenter notificationCenter;

  private:
    void applicationDidBecomeActive() override {
        notificationCenter.post(NotificationCenter::applicationDidBecomeActive);
    }

    std::vector<std::shared_ptr<const void>> owners_;  // of services that were exchanged
};

// Never destroyed: other threads may ask while the process ends.
struct State {
    // Held by whoever uses the port off the main thread and by whoever exchanges it.
    std::mutex mutex;
    std::unique_ptr<Installation> installation;
    std::atomic<bool> isInstalled = false;
    std::atomic<bool> wasInstalled = false;
    std::atomic<std::thread::id> mainThread;

    std::mutex droppedMutex;
    std::vector<Task> dropped;  // what other threads let go of
};

State& state() {
    static State& instance = *new State;
    return instance;
}

Installation& installation() {
    Installation* current = state().installation.get();
    if (current == nullptr) {
        endOnProgrammingError(
            "no port is installed; make a platform before anything else and keep it");
    }
    return *current;
}

// Once is enough: what these let go of in turn is destroyed at once. With no lock held.
void destroyDropped() {
    std::vector<Task> tasks;
    const std::scoped_lock lock(state().droppedMutex);
    tasks.swap(state().dropped);
}

// Hands the task to one of the scheduler's queues while no one can take the port away.
void post(Task task, void (Scheduler::*queue)(Task)) {
    {
        const std::scoped_lock lock(state().mutex);
        if (state().installation) {
            (state().installation->services->scheduler.*queue)(std::move(task));
            return;
        }
    }
    if (!state().wasInstalled) installation();
    Environment::drop(std::move(task));
}

}  // namespace

void Environment::install(const Services& services) {
    if (isInstalled())
        endOnProgrammingError(
            "a port is installed already, and only one can be; let it go before you make another");
    state().mainThread = std::this_thread::get_id();
    destroyDropped();
    auto made = std::make_unique<Installation>(services);
    const std::scoped_lock lock(state().mutex);
    state().installation = std::move(made);
    state().isInstalled = true;
    state().wasInstalled = true;
}

void Environment::uninstall() {
    destroyDropped();  // with the port still there for what it destroys
    std::unique_ptr<Installation> gone;
    {
        const std::scoped_lock lock(state().mutex);
        gone = std::move(state().installation);
        state().isInstalled = false;
    }
    gone.reset();
    destroyDropped();
}

void Environment::exchange(const Services& services, std::shared_ptr<const void> owner) {
    Installation& current = installation();
    const std::scoped_lock lock(state().mutex);
    current.exchange(services, std::move(owner));
}

bool Environment::isInstalled() {
    return state().isInstalled;
}

bool Environment::isMainThread() {
    return !state().wasInstalled || state().mainThread.load() == std::this_thread::get_id();
}

Scheduler& Environment::scheduler() {
    return installation().services->scheduler;
}
WebEngine& Environment::webEngine() {
    return installation().services->webEngine;
}
ApplicationService& Environment::application() {
    return installation().services->application;
}
DefaultsStore& Environment::defaults() {
    return installation().services->defaults;
}
Stage& Environment::stage() {
    return installation().services->stage;
}
NotificationCenter& Environment::notificationCenter() {
    return installation().notificationCenter;
}

void Environment::runOnMain(Task task) {
    post(std::move(task), &Scheduler::runOnMain);
}

void Environment::runInBackground(Task task) {
    post(std::move(task), &Scheduler::runInBackground);
}

double Environment::wallSeconds() {
    const std::scoped_lock lock(state().mutex);
    if (state().installation) return state().installation->services->scheduler.wallSeconds();
    using std::chrono::duration, std::chrono::system_clock;
    return duration<double>(system_clock::now().time_since_epoch()).count();
}

void Environment::drop(Task task) {
    if (isMainThread()) return;  // destroyed here
    const std::scoped_lock lock(state().droppedMutex);
    state().dropped.push_back(std::move(task));
}

}  // namespace zorvik::platform
