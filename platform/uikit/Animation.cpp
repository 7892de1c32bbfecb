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

void AnimationGroup::follow(const UIView& view, AnimationGroup& follower) {
    followers_.push_back({&view, follower.shared_from_this()});
    ++follower.leaders_;
}

void AnimationGroup::leave(const UIView& view) {
    const auto self = shared_from_this();  // cancelling drops the task that owns the group
    std::erase(views_, &view);
    allFinished_ = false;
    for (const auto& follower : std::exchange(followers_, {})) {
        if (follower.view == &view) {
            follower.group->leaderEnded(false);
        } else {
            followers_.push_back(follower);
        }
    }
    if (!views_.empty() || isClosureRunning_) return;
    if (endTask_ && Environment::isInstalled()) Environment::scheduler().cancel(*endTask_);
    completeLaterIfOver();
}

void AnimationGroup::closureDone() {
    isClosureRunning_ = false;
    if (views_.empty()) return completeLaterIfOver();
    endTask_ = Environment::scheduler().runOnMainAfter(
        duration_, [self = shared_from_this()] { self->timeIsUp(); });
}

void AnimationGroup::timeIsUp() {
    for (UIView* view : std::exchange(views_, {})) {
        view->animation_.reset();
        view->setNeedsDisplay();
    }
    for (const auto& follower : std::exchange(followers_, {}))
        follower.group->leaderEnded(true);
    if (leaders_ > 0) return;
    // This turn is the completion's own: the scheduler started it and nobody's call ended it.
    if (const auto completion = std::exchange(completion_, nullptr)) completion(allFinished_);
}

void AnimationGroup::leaderEnded(bool finished) {
    --leaders_;
    allFinished_ = allFinished_ && finished;
    completeLaterIfOver();
}

void AnimationGroup::completeLaterIfOver() {
    if (!isClosureRunning_ && views_.empty() && leaders_ == 0) completeLater();
}

void AnimationGroup::completeLater() {
    if (!completion_ || !Environment::isInstalled()) return;
    Environment::scheduler().runOnMain([completion = std::exchange(completion_, nullptr),
                                        finished = allFinished_] { completion(finished); });
}

}  // namespace zorvik::platform
