#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

#include "platform/gtk/ObjectPointer.h"
#include "platform/gtk/ViewWidget.h"
#include "platform/uikit/UIView.h"

namespace zorvik::platform::gtk {

// The widgets of one view tree. Owned by the stage's screen; main thread only.
class ViewTree {
  public:
    explicit ViewTree(const std::shared_ptr<UIView>& root);

    ViewWidget* widget();
    // Makes widgets follow the views: what there is, its order, its look. Frames stay.
    void follow();
    // Lays the views out and places their widgets, when something that counts changed since.
    void place(const Size& size, const UIEdgeInsets& safeArea);
    // Shows the opacities of this moment; whether one is still on its way.
    bool showOpacities();

  private:
    enum class Kind { plain, label, button, spinner, scroller, web };

    // What is on screen of one view. A view's address may be used again by another view, which the
    // weak reference tells.
    struct Node {
        std::weak_ptr<UIView> view;
        Kind kind = Kind::plain;
        ObjectPointer<GtkWidget> owner;     // keeps `widget`
        ViewWidget* widget = nullptr;       // stands for the view
        GtkWidget* content = nullptr;       // what it shows itself: text, a button, a page
        ViewWidget* childParent = nullptr;  // where the subviews' widgets are
        std::string text;
        UIColor titleColor;
        std::size_t constraintCount = 0;
        std::uint64_t lastConstraint = 0;
        Rect frame;
        bool translatesMask = false;
        unsigned visit = 0;
    };

    Node& nodeOf(UIView& view);
    void build(Node& node, UIView& view);
    void followView(UIView& view);
    void followContent(Node& node, UIView& view);
    void followSubviews(Node& node, UIView& view);
    bool layoutChanged(Node& node, const UIView& view);

    std::weak_ptr<UIView> root_;
    std::unordered_map<const UIView*, Node> nodes_;
    unsigned visit_ = 0;
    bool needsLayout_ = true;
    Size size_;
    UIEdgeInsets safeArea_;
};

}  // namespace zorvik::platform::gtk
