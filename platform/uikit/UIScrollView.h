#pragma once

#include "platform/foundation/Export.h"
#include "platform/uikit/UIView.h"

namespace zorvik::platform {

// A view onto content larger than itself. Constraints from a subview's edges to the scroll view's
// edges lay out the content; those to its width, height and centre mean the visible part. See
// UIView for owner and thread.
class ZORVIK_API UIScrollView : public UIView {
  public:
    using UIView::UIView;

    bool showsVerticalScrollIndicator() const { return showsVertical_; }
    void setShowsVerticalScrollIndicator(bool shows);
    bool showsHorizontalScrollIndicator() const { return showsHorizontal_; }
    void setShowsHorizontalScrollIndicator(bool shows);

    // As the last layout left it, in points.
    const Size& contentSize() const { return contentSize_; }
    void setContentSize(const Size& size) { contentSize_ = size; }

  private:
    Size contentSize_;
    bool showsVertical_ = true;
    bool showsHorizontal_ = true;
};

}  // namespace zorvik::platform
