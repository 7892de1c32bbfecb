#include "platform/uikit/UILabel.h"

#include <algorithm>
#include <utility>

#include "platform/runtime/Environment.h"

namespace zorvik::platform {

void UILabel::setText(std::string text) {
    assertMainThread();
    text_ = std::move(text);
    setNeedsDisplay();
}

void UILabel::setTextAlignment(NSTextAlignment alignment) {
    assertMainThread();
    textAlignment_ = alignment;
    setNeedsDisplay();
}

void UILabel::setNumberOfLines(int lines) {
    assertMainThread();
    numberOfLines_ = std::max(lines, 0);
    setNeedsDisplay();
}

std::optional<Size> UILabel::intrinsicContentSize(double maximumWidth) const {
    if (text_.empty()) return Size{};
    Stage& stage = Environment::stage();
    if (numberOfLines_ == 1) return stage.measureText(text_, fontSize, 0);
    Size size = stage.measureText(text_, fontSize, maximumWidth);
    if (numberOfLines_ > 1) {
        const double lineHeight = stage.measureText("x", fontSize, 0).height;
        size.height = std::min(size.height, numberOfLines_ * lineHeight);
    }
    return size;
}

}  // namespace zorvik::platform
