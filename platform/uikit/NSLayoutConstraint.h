#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/foundation/Export.h"

namespace zorvik::platform {

class UIView;

enum class LayoutAttribute { left, right, top, bottom, width, height, centerX, centerY };

struct NSLayoutAnchor;

// "first = second + constant", or "first = constant" without a second item. Points.
struct ZORVIK_API NSLayoutConstraint {
    std::weak_ptr<UIView> firstItem;
    LayoutAttribute firstAttribute = LayoutAttribute::left;
    bool firstIsSafeArea = false;

    std::weak_ptr<UIView> secondItem;
    LayoutAttribute secondAttribute = LayoutAttribute::left;
    bool secondIsSafeArea = false;
    bool hasSecondItem = false;

    double constant = 0;
    // Given by activate; of contradicting constraints the one with the lowest number holds.
    std::uint64_t activationOrder = 0;

    // Puts each constraint into force on the nearest common ancestor of its views, which must
    // exist by then. It ends when that ancestor or one of the views goes, or a view leaves the
    // ancestor.
    static void activate(const std::vector<NSLayoutConstraint>& constraints);
};

// One edge, size or centre of a view or of its safe area. Holds the view weakly; main thread only.
// Leading is left and trailing is right.
struct ZORVIK_API NSLayoutAnchor {
    std::weak_ptr<UIView> item;
    LayoutAttribute attribute = LayoutAttribute::left;
    bool isSafeArea = false;

    NSLayoutConstraint constraintEqualTo(const NSLayoutAnchor& other, double constant = 0) const;
    NSLayoutConstraint constraintEqualToConstant(double constant) const;
};

// A rectangle to pin to that is no view: the part of a view that the host keeps free.
struct UILayoutGuide {
    NSLayoutAnchor topAnchor;
    NSLayoutAnchor bottomAnchor;
    NSLayoutAnchor leadingAnchor;
    NSLayoutAnchor trailingAnchor;
};

}  // namespace zorvik::platform
