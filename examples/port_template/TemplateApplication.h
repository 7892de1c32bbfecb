#pragma once

#include <functional>

#include "platform/services/ApplicationService.h"
#include "platform/services/Scheduler.h"

namespace port_template {

// An application that can open no other one and never leaves the front.
class TemplateApplication : public zorvik::platform::ApplicationService {
  public:
    explicit TemplateApplication(zorvik::platform::Scheduler& scheduler) : scheduler_(scheduler) {}

    bool canOpen(const zorvik::platform::URL& url) override;
    void open(const zorvik::platform::URL& url,
              std::function<void(bool opened)> completion) override;
    void setDelegate(zorvik::platform::ApplicationDelegate* delegate) override {
        delegate_ = delegate;
    }
    // PORTER: call it when the application comes back to the front, once for each return and not
    // when the focus only moves between windows of the application's own.
    void cameToTheFront();

  private:
    zorvik::platform::Scheduler& scheduler_;
    zorvik::platform::ApplicationDelegate* delegate_ = nullptr;
};

}  // namespace port_template
