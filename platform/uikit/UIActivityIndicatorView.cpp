#include "platform/uikit/UIActivityIndicatorView.h"

namespace zorvik::platform {

UIActivityIndicatorView::UIActivityIndicatorView(Style /*style*/) {}

void UIActivityIndicatorView::setHidesWhenStopped(bool hides) {
    hidesWhenStopped_ = hides;
    if (!isAnimating_) setHidden(hides);
}

void UIActivityIndicatorView::stopAnimating() {
    isAnimating_ = false;
    if (hidesWhenStopped_) setHidden(true);
}

std::optional<Size> UIActivityIndicatorView::intrinsicContentSize(double /*maximumWidth*/) const {
    return Size{37, 37};  // of the large style
}

}  // namespace zorvik::platform
