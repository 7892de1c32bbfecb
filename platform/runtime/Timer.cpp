#include "platform/runtime/Timer.h"

#include <utility>

#include "platform/runtime/Environment.h"
#include "platform/runtime/MainThread.h"

namespace zorvik::platform {

// What the scheduler's task holds. A timer whose task is gone, run or dropped, is no longer valid.
struct Timer::Pending {
    Pending(std::shared_ptr<Timer> owner, std::function<void()> work)
        : timer(std::move(owner)), block(std::move(work)) {}
    Pending(const Pending&) = delete;
    Pending& operator=(const Pending&) = delete;
    ~Pending() { timer->taskId_.reset(); }

    std::shared_ptr<Timer> timer;
    std::function<void()> block;
};

std::shared_ptr<Timer> Timer::scheduledTimer(double seconds, std::function<void()> block) {
    assertMainThread();
    std::shared_ptr<Timer> timer(new Timer);
    auto pending = std::make_shared<Pending>(timer, std::move(block));
    timer->taskId_ = Environment::scheduler().runOnMainAfter(seconds, [pending] {
        pending->timer->taskId_.reset();
        if (pending->block) pending->block();
    });
    return timer;
}

void Timer::invalidate() {
    assertMainThread();
    if (!taskId_) return;
    // The last step: the dropped task may hold the last reference to this timer.
    Environment::scheduler().cancel(*std::exchange(taskId_, std::nullopt));
}

}  // namespace zorvik::platform
