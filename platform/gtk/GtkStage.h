#pragma once

#include <memory>
#include <vector>

#include "platform/gtk/ObjectPointer.h"
#include "platform/services/Scheduler.h"
#include "platform/services/Stage.h"

typedef struct _GtkWidget GtkWidget;
typedef struct _GtkWindow GtkWindow;

namespace zorvik::platform::gtk {

// Shows controllers over what the host's windows show. A window that is destroyed takes the
// controllers shown in it along: they are dismissed from within its destruction, the topmost first
// and each in a turn of its own after it. One that only hides keeps them. Owned by the platform;
// main thread only.
class GtkStage : public Stage {
  public:
    GtkStage(Scheduler& scheduler, const UIEdgeInsets& safeArea);
    ~GtkStage() override;

    // The controller to present from in a window: one for each window, owned for it from the first
    // call until the window is destroyed or dropScreens. nullptr for no window or a destroyed one.
    std::shared_ptr<UIViewController> presenterFor(GtkWindow* window);
    void setSafeAreaInsets(const UIEdgeInsets& insets);
    // At the port's end: takes everything off the screen and lets go of the windows that live on.
    // No turn runs any more: a controller may hear that it leaves, but not that it has left.
    void dropScreens();

    void show(std::shared_ptr<UIViewController> presented, UIViewController& presenter,
              bool animated, std::function<void()> shown) override;
    void hide(UIViewController& presented, bool animated, std::function<void()> hidden) override;
    void viewDidChange(UIView& view) override;
    Size measureText(const std::string& text, double fontSize, double maximumWidth) override;

  private:
    class Screen;
    struct Presenter {
        std::shared_ptr<UIViewController> controller;
        GtkWindow* window;  // open: the entry goes when it is destroyed
    };

    void endPresentersOfClosedWindows();
    GtkWindow* windowOf(const UIViewController& presenter) const;
    void removeScreen(const UIViewController& controller);

    Scheduler& scheduler_;
    UIEdgeInsets safeArea_;
    ObjectPointer<GtkWidget> ruler_;  // a label that is never shown, to measure with
    unsigned long windowsSignal_ = 0;
    std::vector<Presenter> presenters_;
    std::vector<std::unique_ptr<Screen>> screens_;  // the topmost last
};

}  // namespace zorvik::platform::gtk
