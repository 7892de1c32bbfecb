#include "platform/uikit/NSLayoutConstraint.h"

#include <cassert>

#include "platform/uikit/UIView.h"

namespace zorvik::platform {

void NSLayoutConstraint::activate(const std::vector<NSLayoutConstraint>& constraints) {
    static std::uint64_t lastActivation = 0;
    assertMainThread();
    for (NSLayoutConstraint constraint : constraints) {
        const auto first = constraint.firstItem.lock();
        const auto second = constraint.hasSecondItem ? constraint.secondItem.lock() : first;
        UIView* holder = first.get();
        while (holder && second && !second->isInside(*holder))
            holder = holder->superview();
        const bool isPossible = holder && second;
        assert(isPossible && "A constraint needs living views with a common ancestor");
        if (!isPossible) continue;
        constraint.activationOrder = ++lastActivation;
        holder->constraints_.push_back(std::move(constraint));
        holder->setNeedsDisplay();
    }
}

NSLayoutConstraint NSLayoutAnchor::constraintEqualTo(const NSLayoutAnchor& other,
                                                     double constant) const {
    NSLayoutConstraint constraint = constraintEqualToConstant(constant);
    constraint.secondItem = other.item;
    constraint.secondAttribute = other.attribute;
    constraint.secondIsSafeArea = other.isSafeArea;
    constraint.hasSecondItem = true;
    return constraint;
}

NSLayoutConstraint NSLayoutAnchor::constraintEqualToConstant(double constant) const {
    NSLayoutConstraint constraint;
    constraint.firstItem = item;
    constraint.firstAttribute = attribute;
    constraint.firstIsSafeArea = isSafeArea;
    constraint.constant = constant;
    return constraint;
}

}  // namespace zorvik::platform
