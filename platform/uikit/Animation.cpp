#include "platform/uikit/Animation.h"

#include <algorithm>
#include <utility>

#include "platform/runtime/Environment.h"
#include "platform/uikit/UIView.h"

namespace zorvik::platform {

namespace {

AnimationGroup* currentGroup = nullptr;

}  // namespace

double easeInOut(double fraction) {
    const double t = std::clamp(fraction, 0.0, 1.0);
    return t * t * (3 - 2 * t);
}

AnimationGroup::AnimationGroup(double seconds, std::function<void(bool)> completion)
    : duration_(seconds > 0 ? seconds : 0),
      start_(Environment::scheduler().steadySeconds()),
      completion_(std::move(completion)) {}

AnimationGroup* AnimationGroup::current() {
    return currentGroup;
}

void AnimationGroup::run(double seconds, const std::function<void()>& animations,
                         std::function<void(bool finished)> completion) {
    const std::shared_ptr<AnimationGroup> group(new AnimationGroup(seconds, std::move(completion)));
    AnimationGroup* const outer = std::exchange(currentGroup, group.get());
    if (animations) animations();
    currentGroup = outer;
    group->closureDone();
}

void AnimationGroup::join(UIView& view) {
    if (std::find(views_.begin(), views_.end(), &view) == views_.end()) views_.push_back(&view);
}

void AnimationGroup::leave(const UIView& view) {
    std::erase(views_, &view);
    allFinished_ = false;
    if (!views_.empty() || isClosureRunning_) return;
    const auto self = shared_from_this();  // cancelling drops the task that owns the group
    if (endTask_ && Environment::isInstalled()) Environment::scheduler().cancel(*endTask_);
    completeLater();
}

void AnimationGroup::closureDone() {
    isClosureRunning_ = false;
    if (views_.empty()) return completeLater();
    endTask_ = Environment::scheduler().runOnMainAfter(
        duration_, [self = shared_from_this()] { self->timeIsUp(); });
}

void AnimationGroup::timeIsUp() {
    // This turn is the completion's own: the scheduler started it and nobody's call ended it.
    for (UIView* view : std::exchange(views_, {})) {
        view->animation_.reset();
        view->setNeedsDisplay();
    }
    if (const auto completion = std::exchange(completion_, nullptr)) completion(allFinished_);
}

void AnimationGroup::completeLater() {
    if (!completion_ || !Environment::isInstalled()) return;
    Environment::scheduler().runOnMain([completion = std::exchange(completion_, nullptr),
                                        finished = allFinished_] { completion(finished); });
}

}  // namespace zorvik::platform
