#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "platform/foundation/Export.h"
#include "platform/uikit/UIView.h"

namespace zorvik::platform {

enum class UIModalPresentationStyle { automatic, fullScreen };

// Manages a screen's view. Made by makeOnMainThread; while presented it is owned by the presenting
// controller. Main thread only.
class ZORVIK_API UIViewController : public std::enable_shared_from_this<UIViewController> {
  public:
    UIViewController() = default;
    UIViewController(const UIViewController&) = delete;
    UIViewController& operator=(const UIViewController&) = delete;
    virtual ~UIViewController();

    // The first call makes the view and calls viewDidLoad.
    const std::shared_ptr<UIView>& view();

    // Overrides call the base.
    virtual void viewDidLoad() {}
    virtual void viewWillAppear(bool /*animated*/) {}
    virtual void viewDidAppear(bool /*animated*/) {}
    virtual void viewWillDisappear(bool /*animated*/) {}
    virtual void viewDidDisappear(bool /*animated*/) {}

    // True from before viewWillDisappear to after viewDidDisappear of a dismissal, respectively of
    // a removal from the parent controller.
    bool isBeingDismissed() const { return isBeingDismissed_; }
    bool isMovingFromParent() const { return isMovingFromParent_; }

    UIModalPresentationStyle modalPresentationStyle() const { return presentationStyle_; }
    void setModalPresentationStyle(UIModalPresentationStyle style) { presentationStyle_ = style; }

    // Shows the controller over this one, or over what this one already presents; where that is on
    // its way out, once it is gone. A controller covered by a full-screen one disappears
    // without being dismissed, and its view is in no window meanwhile. Nothing when the controller
    // is presented or has a parent.
    void present(const std::shared_ptr<UIViewController>& controller, bool animated,
                 std::function<void()> completion = {});
    // Takes away what this controller presents, else this controller itself, and before it what it
    // presents. Nothing when neither is presented, or it is on its way out already. The covered
    // controller appears again.
    void dismiss(bool animated, std::function<void()> completion = {});

    UIViewController* presentingViewController() const { return presenting_; }
    const std::shared_ptr<UIViewController>& presentedViewController() const { return presented_; }

    // A controller shown inside this one, owned by it. Its view is a subview of this one's.
    void addChild(const std::shared_ptr<UIViewController>& child);
    void removeFromParent();
    UIViewController* parent() const { return parent_; }

    // For ports: whether a window shows this controller's view as its root. Set by the port for a
    // controller it hands out to present from; for presented ones this class does it.
    void setShownByStage(bool isShown);

  private:
    using AppearanceCallback = void (UIViewController::*)(bool animated);

    UIViewController& container();
    std::shared_ptr<UIViewController> covered() const;
    void tell(AppearanceCallback callback, bool animated);
    void presentOnTop(const std::shared_ptr<UIViewController>& controller, bool animated,
                      std::function<void()> completion);
    void takeOutOfWindow(UIViewController& below);
    void leave(bool animated, std::function<void()> completion);
    void finishDismissal(bool animated, const std::function<void()>& completion);

    std::shared_ptr<UIView> view_;
    std::shared_ptr<UIViewController> presented_;
    std::vector<std::shared_ptr<UIViewController>> children_;
    UIViewController* presenting_ = nullptr;
    UIViewController* parent_ = nullptr;
    UIModalPresentationStyle presentationStyle_ = UIModalPresentationStyle::automatic;
    std::vector<std::function<void()>> whenOnStage_;    // asked for before the stage had it
    std::vector<std::function<void()>> whenDismissed_;  // asked for while it was on its way out
    bool coversWindow_ = false;  // took the covered controller's view out of its window
    bool isComing_ = false;      // being presented, not yet handed to the stage
    bool isBeingDismissed_ = false;
    bool isMovingFromParent_ = false;
};

}  // namespace zorvik::platform
