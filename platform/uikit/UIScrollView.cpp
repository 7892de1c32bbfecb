#include "platform/uikit/UIScrollView.h"

namespace zorvik::platform {

void UIScrollView::setShowsVerticalScrollIndicator(bool shows) {
    assertMainThread();
    showsVertical_ = shows;
    setNeedsDisplay();
}

void UIScrollView::setShowsHorizontalScrollIndicator(bool shows) {
    assertMainThread();
    showsHorizontal_ = shows;
    setNeedsDisplay();
}

}  // namespace zorvik::platform
