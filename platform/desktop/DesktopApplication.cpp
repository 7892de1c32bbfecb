#include "platform/desktop/DesktopApplication.h"

#include <utility>

#include "platform/desktop/SchemeHandlers.h"

namespace zorvik::platform::desktop {
namespace {

// Between two windows of this application neither is active for a moment.
constexpr double settlingSeconds = 0.05;

}  // namespace

DesktopApplication::DesktopApplication(Scheduler& scheduler)
    : scheduler_(scheduler), self_(std::make_shared<DesktopApplication*>(this)) {}

DesktopApplication::~DesktopApplication() {
    *self_ = nullptr;
    if (leavingTask_) scheduler_.cancel(*leavingTask_);
}

bool DesktopApplication::canOpen(const URL& url) {
    return hasHandler(url);
}

DesktopApplication::Launch DesktopApplication::makeLaunch(
    std::function<void(bool opened)> completion) {
    return [self = self_, completion = std::move(completion)](bool opened) {
        if (*self == nullptr) return;
        if (opened) (*self)->hasHandedOff_ = true;
        if (!completion) return;
        (*self)->scheduler_.runOnMain([completion, opened] { completion(opened); });
    };
}

void DesktopApplication::activityChanged(bool isActive) {
    if (isActive) {
        if (leavingTask_) scheduler_.cancel(*std::exchange(leavingTask_, std::nullopt));
        if (std::exchange(presence_, Presence::active) != Presence::away) return;
        hasHandedOff_ = false;
        scheduler_.runOnMain([self = self_] {
            if (*self != nullptr && (*self)->delegate_ != nullptr) {
                (*self)->delegate_->applicationDidBecomeActive();
            }
        });
    } else if (presence_ == Presence::active) {
        presence_ = Presence::leaving;
        leavingTask_ = scheduler_.runOnMainAfter(settlingSeconds, [this] {
            leavingTask_.reset();
            presence_ = Presence::away;
        });
    }
}

bool DesktopApplication::inputTakesFocus() {
    if (presence_ == Presence::active) return false;
    // Left by nothing but the end of a window of its own, which had the focus.
    if (presence_ == Presence::away && !hasHandedOff_) presence_ = Presence::active;
    return true;
}

}  // namespace zorvik::platform::desktop
