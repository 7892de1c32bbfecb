#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/foundation/Export.h"
#include "platform/foundation/Geometry.h"

namespace zorvik::platform {

class UIView;
class UIViewController;

// Where view controllers are shown. Owned by the port; main thread only.
class ZORVIK_API Stage {
  public:
    virtual ~Stage() = default;

    // Shows the presented controller's view over the presenter's, filling the presenter's window;
    // calls `shown` in a turn of its own once it is in place. The stage keeps the controller
    // until hidden. The view counts as in a window from this call to the end of hide. A stage with
    // windows dismisses the controller, inside this call, when the presenter is in none, and in the
    // moment when the presenter's window goes.
    virtual void show(std::shared_ptr<UIViewController> presented, UIViewController& presenter,
                      bool animated, std::function<void()> shown) = 0;
    // Takes it away again; `hidden` runs in a turn of its own, and `shown` no more if it was due.
    virtual void hide(UIViewController& presented, bool animated, std::function<void()> hidden) = 0;
    // Something in this view or below it changed (structure, constraints, text, colour, alpha, an
    // animation began): what is on screen follows at the next frame. Cheap; called often.
    virtual void viewDidChange(UIView& view) = 0;
    // The size of a text at a font size, broken into lines no wider than maximumWidth (0: one
    // line). Points.
    virtual Size measureText(const std::string& text, double fontSize, double maximumWidth) = 0;
};

}  // namespace zorvik::platform
