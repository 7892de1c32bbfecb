#pragma once

#include <memory>

#include "platform/desktop/DesktopStage.h"
#include "platform/gtk/ObjectPointer.h"

typedef struct _GtkWidget GtkWidget;
typedef struct _GtkWindow GtkWindow;

namespace zorvik::platform::gtk {

// Screens in GTK windows. Owned by the platform; main thread only.
class GtkStage : public desktop::DesktopStage {
  public:
    GtkStage(Scheduler& scheduler, const UIEdgeInsets& safeArea);
    ~GtkStage() override;

    // The controller to present from in a window. nullptr for no window or a destroyed one.
    std::shared_ptr<UIViewController> presenterFor(GtkWindow* window);

    Size measureText(const std::string& text, double fontSize, double maximumWidth) override;

  private:
    class Screen;

    std::unique_ptr<desktop::DesktopScreen> makeScreen(std::shared_ptr<UIViewController> shown,
                                                       desktop::DesktopWindow window) override;
    void settingsChanged();

    ObjectPointer<GtkWidget> ruler_;  // a label that is never shown, to measure with
    unsigned long windowsSignal_ = 0;
};

}  // namespace zorvik::platform::gtk
