#include "platform/desktop/ViewTree.h"

#include <utility>

#include "platform/uikit/Layout.h"
#include "platform/uikit/UIActivityIndicatorView.h"
#include "platform/uikit/UIButton.h"
#include "platform/uikit/UILabel.h"
#include "platform/uikit/UIScrollView.h"
#include "platform/webkit/WKWebView.h"

namespace zorvik::platform::desktop {
namespace {

constexpr double leastTouchableAlpha = 0.01;

}  // namespace

ViewKind kindOf(const UIView& view) {
    if (dynamic_cast<const UILabel*>(&view) != nullptr) return ViewKind::label;
    if (dynamic_cast<const UIButton*>(&view) != nullptr) return ViewKind::button;
    if (dynamic_cast<const UIActivityIndicatorView*>(&view) != nullptr) return ViewKind::spinner;
    if (dynamic_cast<const UIScrollView*>(&view) != nullptr) return ViewKind::scroller;
    return dynamic_cast<const WKWebView*>(&view) != nullptr ? ViewKind::web : ViewKind::plain;
}

bool isTouchable(const UIView& view) {
    return !view.isHidden() && view.alpha() >= leastTouchableAlpha;
}

ViewTree::ViewTree(const std::shared_ptr<UIView>& root, Maker make)
    : root_(root), make_(std::move(make)) {}

ShownView* ViewTree::root() {
    const auto root = root_.lock();
    return root ? nodeOf(*root).shown.get() : nullptr;
}

ViewTree::Node& ViewTree::nodeOf(UIView& view) {
    Node& node = nodes_[&view];
    if (node.view.lock().get() == &view) return node;
    node = {};
    node.view = view.weak_from_this();
    node.kind = kindOf(view);
    node.shown = make_(view);
    needsLayout_ = true;
    hasNewOrder_ = true;
    return node;
}

void ViewTree::follow() {
    const auto root = root_.lock();
    if (!root) return;
    ++visit_;
    const std::vector<Node*> before = std::exchange(visited_, {});
    visit(*root, nullptr);
    if (before != visited_) hasNewOrder_ = true;
    if (std::exchange(hasNewOrder_, false)) putSubviews(*root);
    std::erase_if(nodes_, [this](const auto& entry) { return entry.second.visit != visit_; });
    for (Node* node : visited_) {
        const auto view = node->view.lock();
        if (layoutChanged(*node, *view)) needsLayout_ = true;
        node->shown->follow(*view, hasNewText(*node, *view));
    }
}

void ViewTree::visit(UIView& view, const Node* parent) {
    Node& node = nodeOf(view);
    node.visit = visit_;
    if (std::exchange(node.parent, parent) != parent) hasNewOrder_ = true;
    visited_.push_back(&node);
    for (const auto& subview : view.subviews())
        visit(*subview, &node);
}

void ViewTree::putSubviews(const UIView& view) {
    ShownView* previous = nullptr;
    for (const auto& subview : view.subviews()) {
        ShownView& shown = *nodes_.at(subview.get()).shown;
        nodes_.at(&view).shown->put(shown, std::exchange(previous, &shown));
        putSubviews(*subview);
    }
}

bool ViewTree::hasNewText(Node& node, const UIView& view) {
    if (node.kind != ViewKind::label && node.kind != ViewKind::button) return false;
    const auto* button = dynamic_cast<const UIButton*>(&view);
    const std::string& text =
        button != nullptr ? button->title() : static_cast<const UILabel&>(view).text();
    const UIColor color = button != nullptr ? button->titleColor() : textColor;
    const bool isOther = std::exchange(node.text, text) != text;
    if (isOther) needsLayout_ = true;
    return !(std::exchange(node.titleColor, color) == color) || isOther;
}

bool ViewTree::layoutChanged(Node& node, const UIView& view) {
    const auto& constraints = view.constraints();
    const std::uint64_t last = constraints.empty() ? 0 : constraints.back().activationOrder;
    const bool translates = view.translatesAutoresizingMaskIntoConstraints();
    const bool isMoved = translates && !(node.frame == view.frame());
    const bool isSame = node.constraintCount == constraints.size() && node.lastConstraint == last &&
                        node.translatesMask == translates && !isMoved;
    node.constraintCount = constraints.size();
    node.lastConstraint = last;
    node.translatesMask = translates;
    return !isSame;
}

void ViewTree::place(const Size& size, const UIEdgeInsets& safeArea) {
    const auto root = root_.lock();
    if (!root || (!needsLayout_ && size == size_ && safeArea == safeArea_)) return;
    needsLayout_ = false;
    size_ = size;
    safeArea_ = safeArea;
    layoutTree(*root, size, safeArea);
    for (Node* node : visited_) {
        const auto view = node->view.lock();
        if (!view) continue;
        node->frame = view->frame();
        node->shown->place(*view);
    }
}

bool ViewTree::showOpacities() {
    bool isMoving = false;
    for (const Node* node : visited_) {
        const auto view = node->view.lock();
        if (!view) continue;
        const double alpha = view->presentationAlpha();
        if (alpha != view->alpha()) isMoving = true;
        // A page stays on the screen while it is hidden: elsewhere engines slow its script down.
        const bool isUnseenPage = node->kind == ViewKind::web && view->isHidden();
        node->shown->setOpacity(isUnseenPage ? 0 : alpha);
    }
    return isMoving;
}

}  // namespace zorvik::platform::desktop
