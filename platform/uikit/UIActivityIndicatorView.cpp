#include "platform/uikit/UIActivityIndicatorView.h"

namespace zorvik::platform {

UIActivityIndicatorView::UIActivityIndicatorView(Style style) : style_(style) {}

void UIActivityIndicatorView::setHidesWhenStopped(bool hides) {
    hidesWhenStopped_ = hides;
    if (!isAnimating_) setHidden(hides);
}

void UIActivityIndicatorView::stopAnimating() {
    isAnimating_ = false;
    if (hidesWhenStopped_) setHidden(true);
}

std::optional<Size> UIActivityIndicatorView::intrinsicContentSize(double /*maximumWidth*/) const {
    const double side = style_ == Style::large ? 37 : 20;
    return Size{side, side};
}

}  // namespace zorvik::platform
