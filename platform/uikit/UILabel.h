#pragma once

#include <string>

#include "platform/foundation/Export.h"
#include "platform/uikit/UIView.h"

namespace zorvik::platform {

enum class NSTextAlignment { left, center };

// A text of one or more lines. See UIView for owner and thread.
class ZORVIK_API UILabel : public UIView {
  public:
    static constexpr double fontSize = 17;  // points

    using UIView::UIView;

    const std::string& text() const { return text_; }
    void setText(std::string text);
    NSTextAlignment textAlignment() const { return textAlignment_; }
    void setTextAlignment(NSTextAlignment alignment);
    // 0: as many lines as the text needs at the label's width.
    int numberOfLines() const { return numberOfLines_; }
    void setNumberOfLines(int lines);

    std::optional<Size> intrinsicContentSize(double maximumWidth) const override;

  private:
    std::string text_;
    NSTextAlignment textAlignment_ = NSTextAlignment::left;
    int numberOfLines_ = 1;
};

}  // namespace zorvik::platform
