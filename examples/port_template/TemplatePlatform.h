#pragma once

#include <memory>

#include "TemplateApplication.h"
#include "TemplateDefaults.h"
#include "TemplateScheduler.h"
#include "TemplateStage.h"
#include "TemplateWebEngine.h"
#include "platform/uikit/UIViewController.h"

namespace port_template {

// The port: installed from construction to destruction on the thread that makes it, which becomes
// the main thread.
class TemplatePlatform {
  public:
    TemplatePlatform();
    TemplatePlatform(const TemplatePlatform&) = delete;
    TemplatePlatform& operator=(const TemplatePlatform&) = delete;
    ~TemplatePlatform();

    TemplateScheduler& scheduler() { return scheduler_; }
    // PORTER: the controller to present from in a window of the host's; one for each window.
    const std::shared_ptr<zorvik::platform::UIViewController>& presenter() { return presenter_; }

  private:
    TemplateScheduler scheduler_;
    TemplateWebEngine webEngine_{scheduler_};
    TemplateApplication application_{scheduler_};
    TemplateDefaults defaults_;
    TemplateStage stage_{scheduler_};
    std::shared_ptr<zorvik::platform::UIViewController> presenter_;
};

}  // namespace port_template
