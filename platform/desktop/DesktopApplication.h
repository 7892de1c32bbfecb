#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "platform/services/ApplicationService.h"
#include "platform/services/Scheduler.h"

namespace zorvik::platform::desktop {

// This application among the others of the desktop. All its windows count as one: only leaving
// the last one for another application and coming back is a return. Without a window manager no
// window becomes active again by itself: there the first key, button or touch in a window after a
// hand-off makes it active, and so is the return. Main thread only.
class DesktopApplication : public ApplicationService {
  public:
    DesktopApplication(const DesktopApplication&) = delete;
    DesktopApplication& operator=(const DesktopApplication&) = delete;
    ~DesktopApplication() override;

    bool canOpen(const URL& url) override;
    void setDelegate(ApplicationDelegate* delegate) override { delegate_ = delegate; }

  protected:
    // What completes an `open`, once, on the main thread; may outlive the service.
    using Launch = std::function<void(bool opened)>;

    explicit DesktopApplication(Scheduler& scheduler);

    Launch makeLaunch(std::function<void(bool opened)> completion);
    // Whether a window of the application is active now.
    void activityChanged(bool isActive);
    // There is input where nobody gives windows the focus; whether the window that got it is to
    // take it.
    bool inputTakesFocus();

    Scheduler& scheduler() { return scheduler_; }

  private:
    enum class Presence { notYetActive, active, leaving, away };

    Scheduler& scheduler_;
    ApplicationDelegate* delegate_ = nullptr;
    Presence presence_ = Presence::notYetActive;
    bool hasHandedOff_ = false;  // and has not come back since
    std::optional<Scheduler::TaskId> leavingTask_;
    // Emptied at the end.
    const std::shared_ptr<DesktopApplication*> self_;
};

}  // namespace zorvik::platform::desktop
