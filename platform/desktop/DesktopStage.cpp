#include "platform/desktop/DesktopStage.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "platform/uikit/UIViewController.h"

namespace zorvik::platform::desktop {

DesktopStage::DesktopStage(Scheduler& scheduler, const UIEdgeInsets& safeArea)
    : scheduler_(scheduler), safeArea_(safeArea) {}

std::shared_ptr<UIViewController> DesktopStage::presenterOf(DesktopWindow window) {
    for (const auto& presenter : presenters_) {
        if (presenter.window == window) return presenter.controller;
    }
    presenters_.push_back({makeOnMainThread<UIViewController>(), window});
    return presenters_.back().controller;
}

void DesktopStage::endPresenters(const std::function<bool(DesktopWindow)>& isDestroyed) {
    // Looked for anew each time: the controllers are told at once and may open and close windows.
    while (true) {
        const auto place = std::ranges::find_if(presenters_, isDestroyed, &Presenter::window);
        if (place == presenters_.end()) return;
        const auto controller = std::move(place->controller);
        presenters_.erase(place);
        controller->dismiss(false);
    }
}

void DesktopStage::setSafeAreaInsets(const UIEdgeInsets& insets) {
    safeArea_ = insets;
    for (const auto& screen : screens_)
        screen->follow();
}

void DesktopStage::textsChanged() {
    for (const auto& screen : screens_)
        screen->followTexts();
}

void DesktopStage::dropScreens() {
    // One by one, from the top: a controller that goes may look at those below.
    while (!screens_.empty()) {
        const std::unique_ptr<DesktopScreen> top = std::move(screens_.back());
        screens_.pop_back();
    }
    // What is told of it may ask for a presenter again.
    const auto released = std::exchange(presenters_, {});
}

DesktopWindow DesktopStage::windowOf(const UIViewController& presenter) const {
    for (const UIViewController* controller = &presenter; controller != nullptr;
         controller = controller->parent()) {
        for (const auto& entry : presenters_) {
            if (entry.controller.get() == controller) return entry.window;
        }
        for (const auto& screen : screens_) {
            if (screen->controller.get() == controller) return screen->window();
        }
    }
    return nullptr;
}

void DesktopStage::show(std::shared_ptr<UIViewController> presented, UIViewController& presenter,
                        bool animated, std::function<void()> shown) {
    const DesktopWindow window = windowOf(presenter);
    if (window == nullptr) {
        std::fputs(
            "zorvik: a screen is presented from a controller that is in no window: it is dismissed "
            "at once\n",
            stderr);
        presenter.dismiss(false);
        return;
    }
    DesktopScreen& screen = *screens_.emplace_back(makeScreen(std::move(presented), window));
    if (animated) screen.slide(1, 0);
    screen.runLater(animated ? DesktopScreen::slideSeconds : 0,
                    [&screen, shown = std::move(shown)] {
                        screen.endSlide();
                        if (shown) shown();
                    });
}

void DesktopStage::hide(UIViewController& presented, bool animated, std::function<void()> hidden) {
    const auto place = std::find_if(screens_.begin(), screens_.end(), [&](const auto& screen) {
        return screen->controller.get() == &presented;
    });
    if (place == screens_.end()) {
        scheduler_.runOnMain(std::move(hidden));
        return;
    }
    DesktopScreen& screen = **place;
    screen.leave();
    // The keyboard may belong to another of their views than when they were covered.
    for (const auto& other : screens_)
        other->follow();
    if (animated) screen.slide(screen.offset(), 1);
    screen.runLater(animated ? DesktopScreen::slideSeconds : 0,
                    [this, controller = screen.controller, hidden = std::move(hidden)] {
                        removeScreen(*controller);
                        if (hidden) hidden();
                    });
}

void DesktopStage::removeScreen(const UIViewController& controller) {
    std::erase_if(screens_,
                  [&](const auto& screen) { return screen->controller.get() == &controller; });
}

void DesktopStage::viewDidChange(UIView& view) {
    const UIView* root = &view;
    while (root->superview() != nullptr)
        root = root->superview();
    for (const auto& screen : screens_) {
        if (screen->controller->view().get() == root) screen->follow();
    }
}

}  // namespace zorvik::platform::desktop
