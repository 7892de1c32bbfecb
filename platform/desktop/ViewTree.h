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

enum class ViewKind {
    plain,
    label,
    button,
    spinner,
    scroller,
    web,
    placeholder,  // a scroller of blocks without a word: stands there while something loads
    panel,        // within another view, a text with a button: the customer is asked for something
};
ViewKind kindOf(const UIView& view);

constexpr UIColor textColor{0.07, 0.07, 0.08, 1};

// Said to those who do not see the screen, where the views have no word of their own.
constexpr const char* loadingName = "Loading";
// The words of a panel; of a view in one, when it is a button. Empty for any other view.
std::string panelText(const UIView& view);

// What a port does not see in the view itself.
struct Circumstances {
    bool hasNewText = false;  // or another colour of it
    // By the pointer, the keyboard and a screen reader: neither the view nor what it is in is
    // hidden, faded out or beneath a panel.
    bool isReached = true;
};

// Where a view stands, in points.
struct Placement {
    Rect frame;    // relative to its parent
    Size content;  // of a scroller or a panel
    Size touch;    // of a button: around its middle, what a finger finds
};

// What a port shows of one view. It leaves the screen when destroyed. A parent hears of everything
// before its subviews, and these in their order.
class ShownView {
  public:
    virtual ~ShownView() = default;

    // The subview's place is directly after `previous` in this one, nullptr: the first. Called for
    // all of the tree when something about its order is another one.
    virtual void put(ShownView& subview, ShownView* previous) = 0;
    // The look is that of the view now.
    virtual void follow(UIView& view, const Circumstances& circumstances) = 0;
    virtual void place(const Placement& placement) = 0;
    virtual void setOpacity(double opacity) = 0;
    // A button or a page gets the keyboard, and shows that it has it.
    virtual void takeFocus() = 0;
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
    // To be called when texts have another size now: follows and places them all anew.
    void renewTexts();
    // What the keyboard belongs to, the button of the topmost panel or else the page, when that is
    // another one than at the last call. nullptr for none.
    ShownView* newFocus();

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
        double shift = 0;  // of a panel's contents, downwards
        bool translatesMask = false;
        bool isReached = true;
        unsigned visit = 0;
    };

    Node& nodeOf(UIView& view);
    // Notes the view and those below it as visited.
    void visit(UIView& view, const Node* parent, bool isReached);
    void putSubviews(const UIView& view);
    bool hasNewText(Node& node, const UIView& view);
    bool layoutChanged(Node& node, const UIView& view);
    static Placement placementOf(Node& node, const UIView& view);
    const Node* keyboardOwner() const;

    const std::weak_ptr<UIView> root_;
    const Maker make_;
    std::unordered_map<const UIView*, Node> nodes_;
    std::vector<Node*> visited_;  // by the last walk, parents before their subviews
    unsigned visit_ = 0;
    bool hasNewOrder_ = true;
    bool needsLayout_ = true;
    bool hasNewTexts_ = false;
    std::weak_ptr<UIView> focused_;
    Size size_;
    UIEdgeInsets safeArea_;
};

}  // namespace zorvik::platform::desktop
