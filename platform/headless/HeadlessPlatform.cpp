#include "platform/headless/HeadlessPlatform.h"

#include <utility>

#include "platform/runtime/Environment.h"
#include "platform/runtime/NotificationCenter.h"

namespace zorvik::platform::headless {

HeadlessPlatform::HeadlessPlatform(HeadlessScheduler::Background background)
    : scheduler_(background) {
    Environment::install({scheduler_, web_, application_, defaults_, stage_});
}

HeadlessPlatform::~HeadlessPlatform() {
    scheduler_.tellOfForgottenTasks();
    // What goes may use the toolkit a last time and post, so the port stays installed, and its
    // services whole, until nothing is left.
    {
        // The controllers still shown.
        const HeadlessStage leaving(std::move(stage_));
    }
    scheduler_.dropPending();
    Environment::uninstall();
}

std::size_t HeadlessPlatform::observerCount() const {
    return NotificationCenter::defaultCenter().observerCount();
}

}  // namespace zorvik::platform::headless
