#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/foundation/Export.h"
#include "platform/services/Scheduler.h"
#include "platform/services/Stage.h"

namespace zorvik::platform::headless {

// A stage without a screen: 390 by 844 points, every character a fixed share of the font size wide.
// Showing and hiding take slideSeconds of virtual time when animated. Main thread only.
class ZORVIK_API HeadlessStage : public Stage {
  public:
    static constexpr double slideSeconds = 0.35;

    explicit HeadlessStage(Scheduler& scheduler) : scheduler_(scheduler) {}

    // The controllers shown, the topmost last.
    const std::vector<std::shared_ptr<UIViewController>>& shown() const { return shown_; }
    // Lays out the topmost controller's tree now.
    void layout();
    void setSize(const Size& size) { size_ = size; }
    void setSafeAreaInsets(const UIEdgeInsets& insets) { safeArea_ = insets; }

    void show(std::shared_ptr<UIViewController> presented, UIViewController& presenter,
              bool animated, std::function<void()> shown) override;
    void hide(UIViewController& presented, bool animated, std::function<void()> hidden) override;
    void viewDidChange(UIView&) override {}
    Size measureText(const std::string& text, double fontSize, double maximumWidth) override;

  private:
    Scheduler& scheduler_;
    Size size_{390, 844};
    UIEdgeInsets safeArea_;
    std::vector<std::shared_ptr<UIViewController>> shown_;
    std::map<const UIViewController*, Scheduler::TaskId> slidingIn_;
};

}  // namespace zorvik::platform::headless
