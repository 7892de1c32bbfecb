#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/foundation/Export.h"
#include "platform/uikit/UIView.h"

namespace zorvik::platform {

// A button of the system type: a coloured title that answers a touch. See UIView for owner and
// thread.
class ZORVIK_API UIButton : public UIView {
  public:
    static constexpr double fontSize = 17;  // points

    using UIView::UIView;

    // For the normal state.
    const std::string& title() const { return title_; }
    void setTitle(std::string title);
    const UIColor& titleColor() const { return titleColor_; }
    void setTitleColor(const UIColor& color);

    // The action for touch-up-inside. The target is held weakly; the last one set holds.
    template <class Target>
    void setTarget(const std::weak_ptr<Target>& target, void (Target::*action)()) {
        action_ = [target, action] {
            if (const auto object = target.lock()) ((*object).*action)();
        };
    }
    // A touch that ended inside: the port calls it when the customer taps the button.
    void sendTouchUpInside();

    std::optional<Size> intrinsicContentSize(double maximumWidth) const override;

  private:
    std::string title_;
    UIColor titleColor_ = UIColor::systemBlue();
    std::function<void()> action_;
};

}  // namespace zorvik::platform
