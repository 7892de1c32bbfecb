#include "platform/desktop/LoadWatch.h"

#include "platform/runtime/Environment.h"

namespace zorvik::platform::desktop {

void LoadWatch::start(double seconds) {
    stop();
    seconds_ = seconds;
    progressSeen();
    schedule(seconds);
}

void LoadWatch::progressSeen() {
    // The task under way looks at this when it wakes: no new timer for each piece of progress.
    lastProgress_ = Environment::scheduler().steadySeconds();
}

void LoadWatch::stop() {
    // Without a port the task is gone already.
    if (task_ && Environment::isInstalled()) Environment::scheduler().cancel(*task_);
    task_.reset();
}

void LoadWatch::schedule(double seconds) {
    task_ = Environment::scheduler().runOnMainAfter(seconds, [this] { wake(); });
}

void LoadWatch::wake() {
    task_.reset();
    const double remaining = lastProgress_ + seconds_ - Environment::scheduler().steadySeconds();
    if (remaining > 0) {
        schedule(remaining);
    } else {
        expired_();
    }
}

}  // namespace zorvik::platform::desktop
