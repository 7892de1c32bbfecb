#pragma once

#include <memory>
#include <optional>

#include "platform/services/ApplicationService.h"
#include "platform/services/Scheduler.h"

typedef struct _GListModel GListModel;

namespace zorvik::platform::gtk {

// This application among the others of the desktop. All its windows count as one: only leaving
// the last one for another application and coming back is a return. Main thread only.
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

    void watchWindows();
    void activityChanged();

    Scheduler& scheduler_;
    ApplicationDelegate* delegate_ = nullptr;
    GListModel* windows_;
    unsigned long windowsSignal_ = 0;
    Presence presence_ = Presence::notYetActive;
    std::optional<Scheduler::TaskId> leavingTask_;
    // Emptied at the end; launches under way may outlive the service.
    std::shared_ptr<Scheduler*> launches_;
};

}  // namespace zorvik::platform::gtk
