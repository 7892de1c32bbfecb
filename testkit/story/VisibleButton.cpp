#include "testkit/story/VisibleButton.h"

namespace zorvik::testkit {

using platform::UIButton;

std::shared_ptr<UIButton> visibleButton(const platform::UIView& root) {
    for (const auto& view : root.subviews()) {
        if (view->isHidden()) continue;
        if (auto button = std::dynamic_pointer_cast<UIButton>(view)) return button;
        if (auto button = visibleButton(*view)) return button;
    }
    return nullptr;
}

}  // namespace zorvik::testkit
