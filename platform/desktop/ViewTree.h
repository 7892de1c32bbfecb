#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/uikit/UIView.h"

namespace zorvik::platform::desktop {

enum class ViewKind { plain, label, button, spinner, scroller, web };
ViewKind kindOf(const UIView& view);

// Whether the customer's pointer and keyboard reach the view, as far as it has a say in that.
bool isTouchable(const UIView& view);

constexpr UIColor textColor{0.07, 0.07, 0.08, 1};
constexpr Size smallestButton{88, 44};  // points

// What a port shows of one view. It leaves the screen when destroyed. A parent hears of everything
// before its subviews, and these in their order.
class ShownView {
  public:
    virtual ~ShownView() = default;

    // The subview's place is directly after `previous` in this one, nullptr: the first. Called for
    // all of the tree when something about its order is another one.
    virtual void put(ShownView& subview, ShownView* previous) = 0;
    // The look is that of the view now; whether its text, or the text's colour, is another one.
    virtual void follow(UIView& view, bool hasNewText) = 0;
    // The frame is that of the view now.
    virtual void place(const UIView& view) = 0;
    virtual void setOpacity(double opacity) = 0;
};

// What is shown of one view tree. Owned by the stage's screen; main thread only.
class ViewTree {
  public:
    using Maker = std::function<std::unique_ptr<ShownView>(UIView&)>;

    // `make` is called for each view that joins the tree.
    ViewTree(const std::shared_ptr<UIView>& root, Maker make);

    // nullptr once the view is gone.
    ShownView* root();
    // Follows the views: what there is, its order, its look. Frames stay.
    void follow();
    // Lays the views out and places them, when something that counts changed since.
    void place(const Size& size, const UIEdgeInsets& safeArea);
    // Shows the opacities of this moment; whether one is still on its way.
    bool showOpacities();

  private:
    // A view's address may be used again by another view, which the weak reference tells.
    struct Node {
        std::weak_ptr<UIView> view;
        ViewKind kind = ViewKind::plain;
        std::unique_ptr<ShownView> shown;
        const Node* parent = nullptr;
        std::string text;
        UIColor titleColor;
        std::size_t constraintCount = 0;
        std::uint64_t lastConstraint = 0;
        Rect frame;
        bool translatesMask = false;
        unsigned visit = 0;
    };

    Node& nodeOf(UIView& view);
    // Notes the view and those below it as visited.
    void visit(UIView& view, const Node* parent);
    void putSubviews(const UIView& view);
    bool hasNewText(Node& node, const UIView& view);
    bool layoutChanged(Node& node, const UIView& view);

    const std::weak_ptr<UIView> root_;
    const Maker make_;
    std::unordered_map<const UIView*, Node> nodes_;
    std::vector<Node*> visited_;  // by the last walk, parents before their subviews
    unsigned visit_ = 0;
    bool hasNewOrder_ = true;
    bool needsLayout_ = true;
    Size size_;
    UIEdgeInsets safeArea_;
};

}  // namespace zorvik::platform::desktop
