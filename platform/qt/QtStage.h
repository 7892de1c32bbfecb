#pragma once

#include <QObject>
#include <memory>

#include "platform/desktop/DesktopStage.h"

class QWidget;

namespace zorvik::platform::qt {

// Screens in Qt's windows. Owned by the platform; main thread only.
class QtStage : public desktop::DesktopStage {
  public:
    QtStage(Scheduler& scheduler, const UIEdgeInsets& safeArea);

    // The controller to present from in the window that this widget stands in. nullptr for none.
    std::shared_ptr<UIViewController> presenterFor(QWidget* widget);

    Size measureText(const std::string& text, double fontSize, double maximumWidth) override;

  private:
    class Screen;

    std::unique_ptr<desktop::DesktopScreen> makeScreen(std::shared_ptr<UIViewController> shown,
                                                       desktop::DesktopWindow window) override;

    QObject connections_;  // those to windows end with it
};

}  // namespace zorvik::platform::qt
