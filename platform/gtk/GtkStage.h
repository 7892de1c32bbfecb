#pragma once

#include <memory>
#include <vector>

#include "platform/gtk/ObjectPointer.h"
#include "platform/services/Scheduler.h"
#include "platform/services/Stage.h"

typedef struct _GtkWidget GtkWidget;
typedef struct _GtkWindow GtkWindow;

namespace zorvik::platform::gtk {

// Shows controllers over what the host's windows show. Owned by the platform; main thread only.
class GtkStage : public Stage {
  public:
    GtkStage(Scheduler& scheduler, const UIEdgeInsets& safeArea);
    ~GtkStage() override;

    // The controller to present from in a window; the same one as long as somebody holds it.
    std::shared_ptr<UIViewController> presenterFor(GtkWindow* window);
    void setSafeAreaInsets(const UIEdgeInsets& insets);
    // Takes everything off the screen at once, calling nobody.
    void dropScreens();

    void show(std::shared_ptr<UIViewController> presented, UIViewController& presenter,
              bool animated, std::function<void()> shown) override;
    void hide(UIViewController& presented, bool animated, std::function<void()> hidden) override;
    void viewDidChange(UIView& view) override;
    Size measureText(const std::string& text, double fontSize, double maximumWidth) override;

  private:
    class Screen;
    struct Presenter;

    GtkWindow* windowOf(const UIViewController& presenter) const;
    void removeScreen(const UIViewController& controller);

    Scheduler& scheduler_;
    UIEdgeInsets safeArea_;
    ObjectPointer<GtkWidget> ruler_;  // a label that is never shown, to measure with
    std::vector<std::unique_ptr<Presenter>> presenters_;
    std::vector<std::unique_ptr<Screen>> screens_;  // the topmost last
};

}  // namespace zorvik::platform::gtk
