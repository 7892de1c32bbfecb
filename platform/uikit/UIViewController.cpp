#include "platform/uikit/UIViewController.h"

#include <utility>

#include "platform/foundation/ProgrammingError.h"
#include "platform/runtime/Environment.h"

namespace zorvik::platform {

namespace {

void runAll(std::vector<std::function<void()>>& actions) {
    for (const auto& action : std::exchange(actions, {}))
        action();
}

}  // namespace

UIViewController::~UIViewController() {
    for (const auto& child : children_)
        child->parent_ = nullptr;
    if (!presented_) return;
    // What is shown over a controller that is gone could never be dismissed through it.
    presented_->presenting_ = nullptr;
    if (!Environment::isInstalled()) return;
    // Told once the screen has gone, so not where the port ends as well; a screen that was on its
    // way out already has no need of a presenter.
    presented_->leave(false, [] {
        tellOfMisuse(
            "a view controller was destroyed while it presented a screen, which closed with it; "
            "keep the presenter until its screen has closed");
    });
}

const std::shared_ptr<UIView>& UIViewController::view() {
    if (!view_) {
        assertMainThread();
        view_ = makeOnMainThread<UIView>();
        viewDidLoad();
    }
    return view_;
}

void UIViewController::setShownByStage(bool isShown) {
    view()->isRootInWindow_ = isShown;
}

UIViewController& UIViewController::container() {
    UIViewController* controller = this;
    while (controller->parent_)
        controller = controller->parent_;
    return *controller;
}

std::shared_ptr<UIViewController> UIViewController::covered() const {
    const bool covers = presentationStyle_ == UIModalPresentationStyle::fullScreen && presenting_;
    return covers ? presenting_->weak_from_this().lock() : nullptr;
}

void UIViewController::tell(AppearanceCallback callback, bool animated) {
    (this->*callback)(animated);
    for (const auto children = children_; const auto& child : children) {
        if (child->parent_ == this) child->tell(callback, animated);
    }
}

void UIViewController::present(const std::shared_ptr<UIViewController>& controller, bool animated,
                               std::function<void()> completion) {
    assertMainThread();
    UIViewController* top = &container();
    while (top->presented_)
        top = top->presented_.get();
    if (!controller || controller->presenting_ || controller->parent_ || controller.get() == top) {
        return;
    }
    if (top->isComing_ || top->isBeingDismissed_) {
        auto& later = top->isComing_ ? top->whenOnStage_ : top->whenDismissed_;
        later.push_back([self = weak_from_this(), controller, animated,
                         completion = std::move(completion)]() mutable {
            const auto presenter = self.lock();
            if (presenter) presenter->present(controller, animated, std::move(completion));
        });
        return;
    }
    top->presentOnTop(controller, animated, std::move(completion));
}

void UIViewController::presentOnTop(const std::shared_ptr<UIViewController>& controller,
                                    bool animated, std::function<void()> completion) {
    const auto self = weak_from_this().lock();  // the callbacks may drop this controller
    const auto presented = controller;
    presented_ = presented;
    presented->presenting_ = this;
    presented->isComing_ = true;
    presented->view();
    presented->tell(&UIViewController::viewWillAppear, animated);
    if (const auto below = presented->covered()) {
        below->tell(&UIViewController::viewWillDisappear, animated);
    }
    presented->isComing_ = false;
    presented->setShownByStage(true);
    Environment::stage().show(
        presented, *this, animated,
        [weak = std::weak_ptr(presented), animated, completion = std::move(completion)] {
            const auto shown = weak.lock();
            if (!shown) return;
            const auto below = shown->covered();
            shown->tell(&UIViewController::viewDidAppear, animated);
            // Dismissed by its own callback: what it covered is already about to appear again.
            if (below && !shown->isBeingDismissed_) {
                shown->takeOutOfWindow(*below);
                below->tell(&UIViewController::viewDidDisappear, animated);
            }
            if (completion) completion();
        });
    runAll(presented->whenOnStage_);
}

void UIViewController::takeOutOfWindow(UIViewController& below) {
    if (!below.view()->isRootInWindow_) return;
    below.setShownByStage(false);
    coversWindow_ = true;
}

void UIViewController::dismiss(bool animated, std::function<void()> completion) {
    assertMainThread();
    UIViewController& base = container();
    if (base.presented_) {
        base.presented_->leave(animated, std::move(completion));
    } else if (base.presenting_) {
        base.leave(animated, std::move(completion));
    }
}

void UIViewController::leave(bool animated, std::function<void()> completion) {
    if (isBeingDismissed_) return;
    const auto self = shared_from_this();
    if (isComing_ || presented_) {
        const auto above = presented_;
        auto& later = isComing_ ? whenOnStage_ : above->whenDismissed_;
        later.push_back(
            [weak = weak_from_this(), animated, completion = std::move(completion)]() mutable {
                const auto leaving = weak.lock();
                if (leaving) leaving->leave(animated, std::move(completion));
            });
        if (!isComing_) above->leave(false, {});
        return;
    }
    isBeingDismissed_ = true;
    tell(&UIViewController::viewWillDisappear, animated);
    if (const auto below = covered()) {
        if (std::exchange(coversWindow_, false)) {
            below->setShownByStage(true);
            below->view()->setNeedsDisplay();  // it may have changed while it was covered
        }
        below->tell(&UIViewController::viewWillAppear, animated);
    }
    // The closure keeps the controller, so that it hears of its end even when its presenter is
    // gone.
    Environment::stage().hide(*this, animated,
                              [self, animated, completion = std::move(completion)] {
                                  self->finishDismissal(animated, completion);
                              });
}

void UIViewController::finishDismissal(bool animated, const std::function<void()>& completion) {
    setShownByStage(false);
    tell(&UIViewController::viewDidDisappear, animated);
    if (const auto below = covered()) below->tell(&UIViewController::viewDidAppear, animated);
    isBeingDismissed_ = false;
    if (presenting_) presenting_->presented_.reset();
    presenting_ = nullptr;
    if (completion) completion();
    runAll(whenDismissed_);
}

void UIViewController::addChild(const std::shared_ptr<UIViewController>& child) {
    assertMainThread();
    if (!child || child.get() == &container() || child->presenting_) return;
    const auto added = child;
    added->removeFromParent();
    added->parent_ = this;
    children_.push_back(added);
    const bool appears = view()->isInWindow();
    added->view();
    if (appears) added->tell(&UIViewController::viewWillAppear, false);
    view()->addSubview(added->view());
    if (appears) added->tell(&UIViewController::viewDidAppear, false);
}

void UIViewController::removeFromParent() {
    assertMainThread();
    if (!parent_ || isMovingFromParent_) return;
    const auto self = shared_from_this();
    const auto formerParent = parent_->weak_from_this().lock();  // the callbacks may drop it
    const bool disappears = view()->isInWindow();
    isMovingFromParent_ = true;
    if (disappears) tell(&UIViewController::viewWillDisappear, false);
    view()->removeFromSuperview();
    if (disappears) tell(&UIViewController::viewDidDisappear, false);
    isMovingFromParent_ = false;
    if (parent_) std::erase(parent_->children_, self);
    parent_ = nullptr;
}

}  // namespace zorvik::platform
