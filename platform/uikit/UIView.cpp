#include "platform/uikit/UIView.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "platform/runtime/Environment.h"
#include "platform/uikit/Animation.h"

namespace zorvik::platform {

UIView::UIView(Rect frame) : frame_(frame) {}

UIView::~UIView() {
    endAnimation();
    for (const auto& subview : subviews_)
        subview->superview_ = nullptr;
}

void UIView::addSubview(const std::shared_ptr<UIView>& view) {
    assertMainThread();
    assert(view && "A view is needed to add one");
    if (!view) return;
    const bool wouldContainItself = isInside(*view);
    assert(!wouldContainItself && "A view cannot be inside itself");
    if (wouldContainItself) return;
    const auto added = view;  // the caller's reference may be an entry of the vector that changes
    if (added->superview_ == this) {
        std::erase(subviews_, added);
    } else {
        added->removeFromSuperview();
        added->superview_ = this;
    }
    subviews_.push_back(added);
    setNeedsDisplay();
}

void UIView::removeFromSuperview() {
    assertMainThread();
    if (!superview_) return;
    for (UIView* ancestor = superview_; ancestor; ancestor = ancestor->superview_) {
        ancestor->removeConstraintsInto(*this);
    }
    UIView& parent = *std::exchange(superview_, nullptr);
    const auto place = std::find_if(parent.subviews_.begin(), parent.subviews_.end(),
                                    [this](const auto& subview) { return subview.get() == this; });
    const auto self = *place;  // perhaps the last reference
    parent.subviews_.erase(place);
    parent.setNeedsDisplay();
}

bool UIView::isInside(const UIView& ancestor) const {
    const UIView* view = this;
    while (view && view != &ancestor)
        view = view->superview_;
    return view != nullptr;
}

void UIView::removeConstraintsInto(const UIView& subtree) {
    const auto isLost = [&](const std::weak_ptr<UIView>& item) {
        const auto view = item.lock();
        return !view || view->isInside(subtree);
    };
    std::erase_if(constraints_, [&](const NSLayoutConstraint& constraint) {
        return isLost(constraint.firstItem) ||
               (constraint.hasSecondItem && isLost(constraint.secondItem));
    });
}

bool UIView::isInWindow() const {
    const UIView* root = this;
    while (root->superview_)
        root = root->superview_;
    return root->isRootInWindow_;
}

void UIView::setHidden(bool hidden) {
    assertMainThread();
    isHidden_ = hidden;
    setNeedsDisplay();
}

void UIView::setAlpha(double alpha) {
    assertMainThread();
    const double target = alpha > 0 ? std::min(alpha, 1.0) : 0;
    if (AnimationGroup* const group = AnimationGroup::current()) {
        const auto running = animation_ ? animation_->group.lock() : nullptr;
        if (running && alpha_ == target) {
            if (running.get() != group) running->follow(*this, *group);
            return;
        }
        const double from = presentationAlpha();
        if (running && running.get() != group) endAnimation();
        animation_ =
            RunningAnimation{from, group->start(), group->duration(), group->weak_from_this()};
        group->join(*this);
    } else {
        endAnimation();
    }
    alpha_ = target;
    setNeedsDisplay();
}

double UIView::presentationAlpha() const {
    if (!animation_ || !Environment::isInstalled()) return alpha_;
    const double elapsed = Environment::scheduler().steadySeconds() - animation_->start;
    if (elapsed >= animation_->duration) return alpha_;
    const double progress = easeInOut(elapsed / animation_->duration);
    return animation_->from + (alpha_ - animation_->from) * progress;
}

void UIView::setBackgroundColor(const UIColor& color) {
    assertMainThread();
    backgroundColor_ = color;
    setNeedsDisplay();
}

void UIView::setCornerRadius(double radius) {
    assertMainThread();
    cornerRadius_ = radius;
    setNeedsDisplay();
}

void UIView::setTranslatesAutoresizingMaskIntoConstraints(bool translates) {
    assertMainThread();
    translatesMask_ = translates;
    setNeedsDisplay();
}

NSLayoutAnchor UIView::anchor(LayoutAttribute attribute, bool isSafeArea) {
    return {std::shared_ptr<UIView>(lifetime_, this), attribute, isSafeArea};
}

UILayoutGuide UIView::safeAreaLayoutGuide() {
    return {anchor(LayoutAttribute::top, true), anchor(LayoutAttribute::bottom, true),
            anchor(LayoutAttribute::left, true), anchor(LayoutAttribute::right, true)};
}

std::optional<Size> UIView::intrinsicContentSize(double /*maximumWidth*/) const {
    return std::nullopt;
}

void UIView::animate(double seconds, const std::function<void()>& animations,
                     std::function<void(bool finished)> completion) {
    assertMainThread();
    AnimationGroup::run(seconds, animations, std::move(completion));
}

void UIView::removeAllAnimations() {
    assertMainThread();
    endAnimation();
    setNeedsDisplay();
}

void UIView::endAnimation() {
    const auto ended = std::exchange(animation_, std::nullopt);
    if (!ended) return;
    if (const auto group = ended->group.lock()) group->leave(*this);
}

void UIView::setNeedsDisplay() {
    // A view outside any window is shown whole when it comes into one.
    if (Environment::isInstalled() && isInWindow()) Environment::stage().viewDidChange(*this);
}

}  // namespace zorvik::platform
