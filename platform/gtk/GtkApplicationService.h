#pragma once

#include <memory>
#include <vector>

#include "platform/desktop/DesktopApplication.h"

typedef struct _GtkWindow GtkWindow;

namespace zorvik::platform::gtk {

// Watches every window of the application. Main thread only.
class GtkApplicationService : public desktop::DesktopApplication {
  public:
    explicit GtkApplicationService(Scheduler& scheduler);
    ~GtkApplicationService() override;

    void open(const URL& url, std::function<void(bool opened)> completion) override;

  private:
    class WatchedWindow;

    void watchWindows();
    void follow();
    void inputArrived(GtkWindow* window);

    unsigned long windowsSignal_ = 0;
    std::vector<std::unique_ptr<WatchedWindow>> windows_;  // those of the application
};

}  // namespace zorvik::platform::gtk
