#include "platform/uikit/UIButton.h"

#include <utility>

#include "platform/runtime/Environment.h"

namespace zorvik::platform {

namespace {

constexpr double verticalPadding = 6;  // above and below the title, so that a finger finds it

}  // namespace

void UIButton::setTitle(std::string title) {
    assertMainThread();
    title_ = std::move(title);
    setNeedsDisplay();
}

void UIButton::setTitleColor(const UIColor& color) {
    assertMainThread();
    titleColor_ = color;
    setNeedsDisplay();
}

void UIButton::sendTouchUpInside() {
    assertMainThread();
    const auto action = action_;  // the action may set another one or drop the button
    if (action) action();
}

std::optional<Size> UIButton::intrinsicContentSize(double /*maximumWidth*/) const {
    Size size = Environment::stage().measureText(title_, fontSize, 0);
    size.height += 2 * verticalPadding;
    return size;
}

}  // namespace zorvik::platform
