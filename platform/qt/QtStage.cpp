#include "platform/qt/QtStage.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>
#include <utility>

#include "platform/qt/ScreenLayer.h"
#include "platform/qt/ShownWidget.h"
#include "platform/qt/Text.h"

namespace zorvik::platform::qt {

class QtStage::Screen : public desktop::DesktopScreen, private ScreenLayer::Screen {
  public:
    Screen(QtStage& stage, std::shared_ptr<UIViewController> shown, QWidget& window)
        : DesktopScreen(stage, std::move(shown)),
          window_(&window),
          layer_(window, *this),
          tree_(controller->view(), [this](UIView& view) {
              return std::make_unique<ShownWidget>(view, layer_.content());
          }) {
        tree_.follow();
        layer_.appear();
        follow();
        frame();
    }

    desktop::DesktopWindow window() const override { return window_.data(); }
    void leave() override { layer_.leave(); }

  private:
    desktop::ViewTree& tree() override { return tree_; }
    void setOffset(double offset) override { layer_.setOffset(offset); }
    void requestFrames() override { layer_.requestFrames(); }
    void layerResized(const Size& size) override { resized(size); }
    bool layerFrame() override { return frame(); }
    void layerFontChanged() override { followTexts(); }
    bool hasKeyboard() const override { return layer_.hasKeyboard(); }

    const QPointer<QWidget> window_;
    ScreenLayer layer_;
    desktop::ViewTree tree_;
};

QtStage::QtStage(Scheduler& scheduler, const UIEdgeInsets& safeArea)
    : DesktopStage(scheduler, safeArea) {
    if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        QObject::connect(screen, &QScreen::logicalDotsPerInchChanged, &connections_,
                         [this] { textsChanged(); });
    }
}

std::shared_ptr<UIViewController> QtStage::presenterFor(QWidget* widget) {
    if (widget == nullptr) return nullptr;
    QWidget* const window = widget->window();
    QObject::disconnect(window, &QObject::destroyed, &connections_, nullptr);
    QObject::connect(window, &QObject::destroyed, &connections_, [this, window] {
        endPresenters([window](const void* other) { return other == window; });
    });
    return presenterOf(window);
}

std::unique_ptr<desktop::DesktopScreen> QtStage::makeScreen(std::shared_ptr<UIViewController> shown,
                                                            desktop::DesktopWindow window) {
    return std::make_unique<Screen>(*this, std::move(shown), *static_cast<QWidget*>(window));
}

Size QtStage::measureText(const std::string& text, double fontSize, double maximumWidth) {
    return qt::measureText(text, fontSize, maximumWidth);
}

}  // namespace zorvik::platform::qt
