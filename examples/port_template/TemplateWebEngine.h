#pragma once

#include <memory>

#include "platform/services/Scheduler.h"
#include "platform/services/WebEngine.h"

namespace port_template {

// Pages without an engine behind them: every load is asked for, starts and fails, every evaluation
// answers with an error. So a checkout on this port shows the panel with Retry.
class TemplateWebEngine : public zorvik::platform::WebEngine {
  public:
    explicit TemplateWebEngine(zorvik::platform::Scheduler& scheduler) : scheduler_(scheduler) {}

    std::unique_ptr<zorvik::platform::WebPage> makePage(
        const zorvik::platform::WebPageConfiguration& configuration,
        std::weak_ptr<zorvik::platform::WebPageDelegate> delegate) override;

  private:
    zorvik::platform::Scheduler& scheduler_;
};

}  // namespace port_template
