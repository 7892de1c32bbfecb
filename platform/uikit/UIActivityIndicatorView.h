#pragma once

#include "platform/foundation/Export.h"
#include "platform/uikit/UIView.h"

namespace zorvik::platform {

// A wheel for a wait; always at rest, since nothing starts one. See UIView for owner and thread.
class ZORVIK_API UIActivityIndicatorView : public UIView {
  public:
    enum class Style { large };

    explicit UIActivityIndicatorView(Style style);

    void setHidesWhenStopped(bool hides);
    bool isAnimating() const { return isAnimating_; }
    void stopAnimating();

    std::optional<Size> intrinsicContentSize(double maximumWidth) const override;

  private:
    bool hidesWhenStopped_ = true;
    bool isAnimating_ = false;
};

}  // namespace zorvik::platform
