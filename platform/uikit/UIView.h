#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "platform/foundation/Export.h"
#include "platform/foundation/Geometry.h"
#include "platform/runtime/MainThread.h"
#include "platform/uikit/NSLayoutConstraint.h"
#include "platform/uikit/UIColor.h"

namespace zorvik::platform {

class AnimationGroup;

// A view: plain retained data that a port's stage shows. Made by makeOnMainThread, owned by its
// superview and whoever else holds it. Main thread only.
class ZORVIK_API UIView : public std::enable_shared_from_this<UIView> {
  public:
    explicit UIView(Rect frame = {});
    UIView(const UIView&) = delete;
    UIView& operator=(const UIView&) = delete;
    virtual ~UIView();

    // On top of the subviews there are; a view that has a superview leaves it first.
    void addSubview(const std::shared_ptr<UIView>& view);
    void removeFromSuperview();
    UIView* superview() const { return superview_; }
    const std::vector<std::shared_ptr<UIView>>& subviews() const { return subviews_; }
    // Whether the view's tree is shown by the stage.
    bool isInWindow() const;

    bool isHidden() const { return isHidden_; }
    void setHidden(bool hidden);
    // The opacity from 0 to 1 the view has or is on its way to. Setting it outside an animation
    // ends a running one as not finished.
    double alpha() const { return alpha_; }
    void setAlpha(double alpha);
    // The opacity on screen now, running animations included.
    double presentationAlpha() const;
    const UIColor& backgroundColor() const { return backgroundColor_; }
    void setBackgroundColor(const UIColor& color);
    double cornerRadius() const { return cornerRadius_; }  // points
    void setCornerRadius(double radius);
    void setTranslatesAutoresizingMaskIntoConstraints(bool translates);
    bool translatesAutoresizingMaskIntoConstraints() const { return translatesMask_; }

    NSLayoutAnchor topAnchor() { return anchor(LayoutAttribute::top); }
    NSLayoutAnchor bottomAnchor() { return anchor(LayoutAttribute::bottom); }
    NSLayoutAnchor leadingAnchor() { return anchor(LayoutAttribute::left); }
    NSLayoutAnchor trailingAnchor() { return anchor(LayoutAttribute::right); }
    NSLayoutAnchor widthAnchor() { return anchor(LayoutAttribute::width); }
    NSLayoutAnchor heightAnchor() { return anchor(LayoutAttribute::height); }
    NSLayoutAnchor centerXAnchor() { return anchor(LayoutAttribute::centerX); }
    NSLayoutAnchor centerYAnchor() { return anchor(LayoutAttribute::centerY); }
    UILayoutGuide safeAreaLayoutGuide();
    // Those this view holds as the nearest common ancestor of their items.
    const std::vector<NSLayoutConstraint>& constraints() const { return constraints_; }

    // Relative to the superview (to the content in a scroll view), as the last layout left it.
    const Rect& frame() const { return frame_; }
    void setFrame(const Rect& frame) { frame_ = frame; }
    // The size the content asks for where constraints leave it open; nullopt: none.
    virtual std::optional<Size> intrinsicContentSize(double maximumWidth) const;

    // Runs `animations` at once; every alpha set in it moves from what is on screen to the new
    // value over `seconds`, or goes on as it does where it is on its way to that value already. The
    // completion runs once, in a main-queue turn of its own: true when all of them ran to their
    // end, false when one was removed or replaced, or its view went.
    static void animate(double seconds, const std::function<void()>& animations,
                        std::function<void(bool finished)> completion = {});
    // Ends the view's running animations; the opacity is then the one that was set.
    void removeAllAnimations();

  protected:
    // Tells the stage that what is on screen changed.
    void setNeedsDisplay();

  private:
    friend class AnimationGroup;
    friend struct NSLayoutConstraint;
    friend class UIViewController;

    struct RunningAnimation {
        double from = 0;
        double start = 0;  // steady seconds
        double duration = 0;
        std::weak_ptr<AnimationGroup> group;
    };

    NSLayoutAnchor anchor(LayoutAttribute attribute, bool isSafeArea = false);
    bool isInside(const UIView& ancestor) const;
    void removeConstraintsInto(const UIView& subtree);
    void endAnimation();

    // Expires with the view. Anchors hold on to this and not to the view's shared ownership, which
    // does not exist yet while a constructor builds its subviews.
    std::shared_ptr<char> lifetime_ = std::make_shared<char>();
    UIView* superview_ = nullptr;
    std::vector<std::shared_ptr<UIView>> subviews_;
    std::vector<NSLayoutConstraint> constraints_;
    std::optional<RunningAnimation> animation_;
    Rect frame_;
    UIColor backgroundColor_ = UIColor::clear();
    double alpha_ = 1;
    double cornerRadius_ = 0;
    bool isHidden_ = false;
    bool translatesMask_ = true;
    bool isRootInWindow_ = false;  // a controller's view that the stage shows
};

}  // namespace zorvik::platform
