#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "platform/desktop/DesktopScreen.h"
#include "platform/services/Scheduler.h"
#include "platform/services/Stage.h"

namespace zorvik::platform::desktop {

// Shows controllers over what the host's windows show. A window that is destroyed takes the
// controllers shown in it along: they are dismissed from within its destruction, the topmost first
// and each in a turn of its own after it. One that only hides keeps them. Owned by the platform;
// main thread only.
class DesktopStage : public Stage {
  public:
    void setSafeAreaInsets(const UIEdgeInsets& insets);
    const UIEdgeInsets& safeArea() const { return safeArea_; }
    Scheduler& scheduler() const { return scheduler_; }
    // At the port's end: takes everything off the screen and lets go of the windows that live on.
    // No turn runs any more: a controller may hear that it leaves, but not that it has left.
    void dropScreens();

    void show(std::shared_ptr<UIViewController> presented, UIViewController& presenter,
              bool animated, std::function<void()> shown) override;
    void hide(UIViewController& presented, bool animated, std::function<void()> hidden) override;
    void viewDidChange(UIView& view) override;

  protected:
    DesktopStage(Scheduler& scheduler, const UIEdgeInsets& safeArea);

    virtual std::unique_ptr<DesktopScreen> makeScreen(std::shared_ptr<UIViewController> shown,
                                                      DesktopWindow window) = 0;

    // The controller to present from in a window that is not destroyed: one for each window, owned
    // for it from the first call until the window is destroyed or dropScreens.
    std::shared_ptr<UIViewController> presenterOf(DesktopWindow window);
    // To be called when measureText answers otherwise from now on.
    void textsChanged();
    // To be called when a window, or some, are destroyed.
    void endPresenters(const std::function<bool(DesktopWindow)>& isDestroyed);

  private:
    struct Presenter {
        std::shared_ptr<UIViewController> controller;
        DesktopWindow window;
    };

    DesktopWindow windowOf(const UIViewController& presenter) const;
    void removeScreen(const UIViewController& controller);

    Scheduler& scheduler_;
    UIEdgeInsets safeArea_;
    std::vector<Presenter> presenters_;
    std::vector<std::unique_ptr<DesktopScreen>> screens_;  // the topmost last
};

}  // namespace zorvik::platform::desktop
