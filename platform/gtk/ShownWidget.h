#pragma once

#include "platform/desktop/ViewTree.h"
#include "platform/gtk/ObjectPointer.h"
#include "platform/gtk/ViewWidget.h"

namespace zorvik::platform::gtk {

// The widgets of one view. Owned by the screen's tree; main thread only.
class ShownWidget : public desktop::ShownView {
  public:
    explicit ShownWidget(UIView& view);
    ~ShownWidget() override;

    ViewWidget* widget() const { return widget_; }

    void follow(UIView& view, bool hasNewText) override;
    void put(desktop::ShownView& subview, desktop::ShownView* previous) override;
    void place(const UIView& view) override;
    void setOpacity(double opacity) override;

  private:
    const desktop::ViewKind kind_;
    ViewWidget* const widget_;              // stands for the view
    const ObjectPointer<GtkWidget> owner_;  // keeps it
    GtkWidget* content_ = nullptr;          // what it shows itself: text, a button, a scroller
    ViewWidget* childParent_ = nullptr;     // where the subviews' widgets are
};

}  // namespace zorvik::platform::gtk
