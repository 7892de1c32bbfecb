#pragma once

#include <memory>

#include "platform/desktop/DesktopApplication.h"

namespace zorvik::platform::qt {

// The application object's state, and what the customer does in its windows. Main thread only.
class QtApplicationService : public desktop::DesktopApplication {
  public:
    explicit QtApplicationService(Scheduler& scheduler);
    ~QtApplicationService() override;

    void open(const URL& url, std::function<void(bool opened)> completion) override;

  private:
    class Watch;

    std::unique_ptr<Watch> watch_;
};

}  // namespace zorvik::platform::qt
