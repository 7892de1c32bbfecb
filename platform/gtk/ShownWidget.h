#pragma once

#include <string>

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

    void follow(UIView& view, const desktop::Circumstances& circumstances) override;
    void put(desktop::ShownView& subview, desktop::ShownView* previous) override;
    void place(const desktop::Placement& placement) override;
    void setOpacity(double opacity) override;
    void takeFocus() override;

  private:
    bool isScrolled() const;
    void tellReaders(const UIView& view, bool isReached);

    const desktop::ViewKind kind_;
    ViewWidget* const widget_;              // stands for the view
    const ObjectPointer<GtkWidget> owner_;  // keeps it
    GtkWidget* content_ = nullptr;          // what it shows itself: text, a button, a scroller
    ViewWidget* childParent_ = nullptr;     // where the subviews' widgets are
    std::string panelText_;                 // as told to readers
};

}  // namespace zorvik::platform::gtk
