#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "platform/services/Scheduler.h"

namespace zorvik::platform {

class UIView;

// How far an animation has come after a fraction of its duration; both from 0 to 1. Slow at both
// ends.
double easeInOut(double fraction);

// The animations begun by one call of UIView::animate. Owned by the delayed task that ends it;
// views point to it weakly and leave it before they go. Main thread only.
class AnimationGroup : public std::enable_shared_from_this<AnimationGroup> {
  public:
    static void run(double seconds, const std::function<void()>& animations,
                    std::function<void(bool finished)> completion);
    // The group whose closure is running, the innermost one; nullptr outside.
    static AnimationGroup* current();

    double duration() const { return duration_; }
    double start() const { return start_; }  // steady seconds
    void join(UIView& view);
    // The view, animated by this group, is to go where it goes already: the other group waits for
    // this one's end.
    void follow(const UIView& view, AnimationGroup& follower);
    // The view's animation ended before its time.
    void leave(const UIView& view);

  private:
    AnimationGroup(double seconds, std::function<void(bool)> completion);

    struct Follower {
        const UIView* view;
        std::shared_ptr<AnimationGroup> group;
    };

    void closureDone();
    void timeIsUp();
    void leaderEnded(bool finished);
    void completeLaterIfOver();
    void completeLater();

    const double duration_;
    const double start_;
    std::function<void(bool)> completion_;
    std::vector<UIView*> views_;
    std::vector<Follower> followers_;
    std::size_t leaders_ = 0;  // groups this one waits for, once for each view
    std::optional<Scheduler::TaskId> endTask_;
    bool isClosureRunning_ = true;
    bool allFinished_ = true;
};

}  // namespace zorvik::platform
