#include "platform/desktop/ProcessProbe.h"

#include <utility>

namespace zorvik::platform::desktop {
namespace {

// A page that was closed just before runs its last handlers after the first answer.
constexpr int answersNeeded = 2;

}  // namespace

ProcessProbe::ProcessProbe(Scheduler& scheduler, Ask ask, double seconds,
                           std::function<void(Answer)> done)
    : scheduler_(scheduler),
      start_(scheduler.steadySeconds()),
      ask_(std::move(ask)),
      done_(std::move(done)),
      expiry_(scheduler.runOnMainAfter(seconds,
                                       [this] {
                                           expiry_.reset();
                                           finish(Answer::silent);
                                       })),
      self_(std::make_shared<ProcessProbe*>(this)) {
    askOnce();
}

ProcessProbe::~ProcessProbe() {
    *self_ = nullptr;
    if (expiry_) scheduler_.cancel(*expiry_);
}

void ProcessProbe::askOnce() {
    ask_([self = self_] {
        if (*self != nullptr) (*self)->answered();
    });
}

void ProcessProbe::answered() {
    if (++answers_ < answersNeeded) {
        askOnce();
    } else if (answers_ == answersNeeded) {
        finish(Answer::answers);
    }
}

void ProcessProbe::finish(Answer answer) {
    if (const auto task = std::exchange(expiry_, std::nullopt)) scheduler_.cancel(*task);
    const auto done = done_;  // it may end this probe
    done(answer);
}

}  // namespace zorvik::platform::desktop
