#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "platform/services/ApplicationService.h"
#include "platform/services/Scheduler.h"

typedef struct _GtkWindow GtkWindow;

namespace zorvik::platform::gtk {

// This application among the others of the desktop. All its windows count as one: only leaving
// the last one for another application and coming back is a return. Without a window manager no
// window becomes active again by itself: there the first key, button or touch in a window after a
// hand-off makes it active, and so is the return. Main thread only.
class GtkApplicationService : public ApplicationService {
  public:
    explicit GtkApplicationService(Scheduler& scheduler);
    GtkApplicationService(const GtkApplicationService&) = delete;
    GtkApplicationService& operator=(const GtkApplicationService&) = delete;
    ~GtkApplicationService() override;

    bool canOpen(const URL& url) override;
    void open(const URL& url, std::function<void(bool opened)> completion) override;
    void setDelegate(ApplicationDelegate* delegate) override { delegate_ = delegate; }

  private:
    enum class Presence { notYetActive, active, leaving, away };
    struct Launch;
    class WatchedWindow;

    void watchWindows();
    void activityChanged();
    void inputArrived(GtkWindow* window);

    Scheduler& scheduler_;
    ApplicationDelegate* delegate_ = nullptr;
    unsigned long windowsSignal_ = 0;
    std::vector<std::unique_ptr<WatchedWindow>> windows_;  // those of the application
    Presence presence_ = Presence::notYetActive;
    bool hasHandedOff_ = false;  // and has not come back since
    std::optional<Scheduler::TaskId> leavingTask_;
    // Emptied at the end; launches under way may outlive the service.
    std::shared_ptr<GtkApplicationService*> launches_;
};

}  // namespace zorvik::platform::gtk
