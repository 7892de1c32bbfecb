#include "platform/desktop/ViewTree.h"

#include <algorithm>
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
constexpr Size smallestTouch{88, 44};  // points, as is all below
constexpr Size aroundTitle{32, 12};
constexpr double panelMargin = 16;

bool isTouchable(const UIView& view) {
    return !view.isHidden() && view.alpha() >= leastTouchableAlpha;
}

template <class Kind>
bool has(const UIView& view) {
    return std::ranges::any_of(view.subviews(), [](const auto& subview) {
        return dynamic_cast<const Kind*>(subview.get()) != nullptr;
    });
}

bool isPanel(const UIView& view) {
    return view.superview() != nullptr && has<UILabel>(view) && has<UIButton>(view);
}

bool isOfBlocks(const UIView& view) {
    return std::ranges::all_of(view.subviews(), [](const auto& subview) {
        return kindOf(*subview) == ViewKind::plain && isOfBlocks(*subview);
    });
}

Size touchSize(const UIView& button) {
    const Rect& frame = button.frame();
    const Size own = button.intrinsicContentSize(0).value_or(Size{});
    return {std::max({frame.width, smallestTouch.width, own.width + aroundTitle.width}),
            std::max({frame.height, smallestTouch.height, own.height + aroundTitle.height})};
}

}  // namespace

ViewKind kindOf(const UIView& view) {
    if (dynamic_cast<const UILabel*>(&view) != nullptr) return ViewKind::label;
    if (dynamic_cast<const UIButton*>(&view) != nullptr) return ViewKind::button;
    if (dynamic_cast<const UIActivityIndicatorView*>(&view) != nullptr) return ViewKind::spinner;
    if (dynamic_cast<const UIScrollView*>(&view) != nullptr) {
        const bool standsForMore = !view.subviews().empty() && isOfBlocks(view);
        return standsForMore ? ViewKind::placeholder : ViewKind::scroller;
    }
    if (dynamic_cast<const WKWebView*>(&view) != nullptr) return ViewKind::web;
    return isPanel(view) ? ViewKind::panel : ViewKind::plain;
}

std::string panelText(const UIView& view) {
    if (dynamic_cast<const UIButton*>(&view) != nullptr)
        return view.superview() != nullptr ? panelText(*view.superview()) : "";
    if (!isPanel(view)) return "";
    std::string text;
    for (const auto& subview : view.subviews()) {
        const auto* label = dynamic_cast<const UILabel*>(subview.get());
        if (label == nullptr || label->text().empty()) continue;
        if (!text.empty()) text += ' ';
        text += label->text();
    }
    return text;
}

ViewTree::ViewTree(const std::shared_ptr<UIView>& root, Maker make)
    : root_(root), make_(std::move(make)) {}

ShownView* ViewTree::root() {
    const auto root = root_.lock();
    return root ? nodeOf(*root).shown.get() : nullptr;
}

ViewTree::Node& ViewTree::nodeOf(UIView& view) {
    Node& node = nodes_[&view];
    const ViewKind kind = kindOf(view);
    if (node.view.lock().get() == &view && node.kind == kind) return node;
    node = {};
    node.view = view.weak_from_this();
    node.kind = kind;
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
    visit(*root, nullptr, true);
    if (before != visited_) hasNewOrder_ = true;
    if (std::exchange(hasNewOrder_, false)) putSubviews(*root);
    std::erase_if(nodes_, [this](const auto& entry) { return entry.second.visit != visit_; });
    for (Node* node : visited_) {
        const auto view = node->view.lock();
        if (layoutChanged(*node, *view)) needsLayout_ = true;
        node->shown->follow(*view, {hasNewText(*node, *view), node->isReached});
    }
    hasNewTexts_ = false;
}

void ViewTree::visit(UIView& view, const Node* parent, bool isReached) {
    Node& node = nodeOf(view);
    node.visit = visit_;
    node.isReached = isReached && isTouchable(view);
    if (std::exchange(node.parent, parent) != parent) hasNewOrder_ = true;
    visited_.push_back(&node);
    const auto& subviews = view.subviews();
    const auto top = std::find_if(subviews.rbegin(), subviews.rend(), [](const auto& subview) {
        return isTouchable(*subview) && kindOf(*subview) == ViewKind::panel;
    });
    bool isBeneath = top != subviews.rend();
    for (const auto& subview : subviews) {
        if (isBeneath && subview == *top) isBeneath = false;
        visit(*subview, &node, node.isReached && !isBeneath);
    }
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
    const bool isOther = std::exchange(node.text, text) != text || hasNewTexts_;
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
        node->shown->place(placementOf(*node, *view));
    }
}

Placement ViewTree::placementOf(Node& node, const UIView& view) {
    node.frame = view.frame();
    Placement placement{node.frame, {}, {}};
    if (node.parent != nullptr) placement.frame.y += node.parent->shift;
    if (node.kind == ViewKind::button) placement.touch = touchSize(view);
    if (const auto* scrollView = dynamic_cast<const UIScrollView*>(&view))
        placement.content = scrollView->contentSize();
    if (node.kind != ViewKind::panel) return placement;
    // What does not fit moves in, and can be scrolled where there is no room for that.
    double top = node.frame.height;
    double bottom = 0;
    for (const auto& subview : view.subviews()) {
        top = std::min(top, subview->frame().y);
        bottom = std::max(bottom, subview->frame().y + subview->frame().height);
    }
    placement.content = {0, node.frame.height};
    node.shift = 0;
    if (top >= 0 && bottom <= node.frame.height) return placement;
    const double height = std::max(node.frame.height, bottom - top + 2 * panelMargin);
    placement.content.height = height;
    node.shift = std::max(panelMargin - top, std::min(0.0, height - panelMargin - bottom));
    return placement;
}

void ViewTree::renewTexts() {
    hasNewTexts_ = true;
    needsLayout_ = true;
}

const ViewTree::Node* ViewTree::keyboardOwner() const {
    const Node* button = nullptr;
    for (auto place = visited_.rbegin(); place != visited_.rend(); ++place) {
        const Node& node = **place;
        if (!node.isReached) continue;
        if (node.kind == ViewKind::web) return &node;
        if (node.kind == ViewKind::button) button = &node;  // the first one of its panel at last
        if (node.kind == ViewKind::panel && button != nullptr && button->parent == &node)
            return button;
    }
    return nullptr;
}

ShownView* ViewTree::newFocus() {
    const Node* owner = keyboardOwner();
    const auto view = owner != nullptr ? owner->view.lock() : nullptr;
    if (view == focused_.lock()) return nullptr;
    focused_ = view;
    return view != nullptr ? owner->shown.get() : nullptr;
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
