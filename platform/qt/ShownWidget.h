#pragma once

#include <QPointF>
#include <QPointer>
#include <QWidget>
#include <memory>
#include <optional>

#include "platform/desktop/ViewTree.h"
#include "platform/qt/ViewBlock.h"

class QScrollArea;

namespace zorvik::platform::qt {

// The widgets of one view. A widget clips its children, and the engine's own takes no opacity, so
// the widgets of a screen are siblings: each stands where the frames of the views above it put it
// and has their opacity too. Owned by the screen's tree; main thread only.
class ShownWidget : public desktop::ShownView {
  public:
    // Its widgets come into the content of its screen.
    ShownWidget(UIView& view, QWidget& content);
    ~ShownWidget() override;

    void put(desktop::ShownView& subview, desktop::ShownView* previous) override;
    void follow(UIView& view, const desktop::Circumstances& circumstances) override;
    void place(const desktop::Placement& placement) override;
    void setOpacity(double opacity) override;
    void takeFocus() override;

  private:
    void moveOnTopIn(QWidget& parent);
    void followText(const UIView& view);
    void followScroller(const UIView& view);
    void followPage(const UIView& view);
    void show();
    void placePage(bool isSeen);

    const desktop::ViewKind kind_;
    const ShownWidget* parent_ = nullptr;
    // The background with what the view shows itself; over a page the veil that fades it.
    std::unique_ptr<ViewBlock> block_;
    std::unique_ptr<QScrollArea> scroller_;
    QPointer<QWidget> page_;            // the page's own
    std::unique_ptr<ViewBlock> cover_;  // hides a page that is not to be seen
    std::optional<bool> isPageSeen_;    // as it stands now
    QWidget* subviewHost_;              // the widget that the subviews' are in
    QPointF origin_;                    // the view's, in its host
    UIColor background_;
    double cornerRadius_ = 0;
    double opacity_ = 1;
    bool isVisible_ = true;
    bool isReached_ = false;
};

}  // namespace zorvik::platform::qt
