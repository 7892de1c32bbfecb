#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/services/Scheduler.h"
#include "platform/services/Stage.h"

namespace port_template {

// A stage that shows nothing and keeps the turns: what is shown and hidden is known, and told of in
// turns of their own.
class TemplateStage : public zorvik::platform::Stage {
  public:
    explicit TemplateStage(zorvik::platform::Scheduler& scheduler) : scheduler_(scheduler) {}

    void show(std::shared_ptr<zorvik::platform::UIViewController> presented,
              zorvik::platform::UIViewController& presenter, bool animated,
              std::function<void()> shown) override;
    void hide(zorvik::platform::UIViewController& presented, bool animated,
              std::function<void()> hidden) override;
    void viewDidChange(zorvik::platform::UIView& view) override;
    zorvik::platform::Size measureText(const std::string& text, double fontSize,
                                       double maximumWidth) override;
    // Lets go of the controllers still shown, with the port still there for what they do last.
    void dropScreens();

  private:
    zorvik::platform::Scheduler& scheduler_;
    std::vector<std::shared_ptr<zorvik::platform::UIViewController>> shown_;  // the topmost last
    std::map<const zorvik::platform::UIViewController*, zorvik::platform::Scheduler::TaskId>
        coming_;
};

}  // namespace port_template
