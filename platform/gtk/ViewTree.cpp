#include "platform/gtk/ViewTree.h"

#include <utility>

#include "platform/gtk/GtkWebPage.h"
#include "platform/gtk/Text.h"
#include "platform/uikit/Layout.h"
#include "platform/uikit/UIActivityIndicatorView.h"
#include "platform/uikit/UIButton.h"
#include "platform/uikit/UILabel.h"
#include "platform/uikit/UIScrollView.h"
#include "platform/webkit/WKWebView.h"

namespace zorvik::platform::gtk {
namespace {

constexpr UIColor textColor{0.07, 0.07, 0.08, 1};
constexpr Size smallestButton{88, 44};
constexpr double leastTouchableAlpha = 0.01;

void leaveParent(GtkWidget* widget) {
    if (gtk_widget_get_parent(widget) != nullptr) gtk_widget_unparent(widget);
}

// Puts the child directly after `previous` (nullptr: first), from wherever it was.
void moveAfter(GtkWidget* child, GtkWidget* parent, GtkWidget* previous) {
    const bool isInPlace =
        gtk_widget_get_parent(child) == parent && gtk_widget_get_prev_sibling(child) == previous;
    if (isInPlace) return;
    if (gtk_widget_get_parent(child) != parent) leaveParent(child);
    gtk_widget_insert_after(child, parent, previous);
}

GtkWidget* makeScroller(GtkWidget* content) {
    GtkWidget* scroller = gtk_scrolled_window_new();
    gtk_widget_add_css_class(scroller, "zorvik-scroller");
    gtk_widget_set_focusable(scroller, FALSE);
    gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scroller), content);
    return scroller;
}

void followScroller(GtkScrolledWindow* scroller, const UIScrollView& view) {
    const auto policy = [](bool showsBar) {
        return showsBar ? GTK_POLICY_AUTOMATIC : GTK_POLICY_EXTERNAL;
    };
    gtk_scrolled_window_set_policy(scroller, policy(view.showsHorizontalScrollIndicator()),
                                   policy(view.showsVerticalScrollIndicator()));
}

void followLabel(GtkLabel* label, const UILabel& view, bool isNewText) {
    if (isNewText) setText(label, view.text(), UILabel::fontSize, textColor);
    const bool isCentred = view.textAlignment() == NSTextAlignment::center;
    const bool wraps = view.numberOfLines() != 1;
    gtk_label_set_xalign(label, isCentred ? 0.5F : 0.0F);
    gtk_label_set_justify(label, isCentred ? GTK_JUSTIFY_CENTER : GTK_JUSTIFY_LEFT);
    gtk_label_set_wrap(label, wraps);
    gtk_label_set_ellipsize(label,
                            view.numberOfLines() == 0 ? PANGO_ELLIPSIZE_NONE : PANGO_ELLIPSIZE_END);
    gtk_label_set_lines(label, view.numberOfLines() > 1 ? view.numberOfLines() : -1);
}

GtkWidget* makeButton(const std::weak_ptr<UIView>& view) {
    GtkWidget* button = gtk_button_new();
    gtk_button_set_has_frame(GTK_BUTTON(button), FALSE);
    gtk_widget_add_css_class(button, "zorvik-button");
    gtk_button_set_child(GTK_BUTTON(button), makeLabel());
    g_signal_connect_data(
        button, "clicked", G_CALLBACK(+[](GtkButton*, gpointer held) {
            const auto target = static_cast<std::weak_ptr<UIView>*>(held)->lock();
            if (target) static_cast<UIButton&>(*target).sendTouchUpInside();
        }),
        new std::weak_ptr<UIView>(view),
        [](gpointer held, GClosure*) { delete static_cast<std::weak_ptr<UIView>*>(held); },
        G_CONNECT_DEFAULT);
    return button;
}

}  // namespace

ViewTree::ViewTree(const std::shared_ptr<UIView>& root) : root_(root) {
    follow();
}

ViewWidget* ViewTree::widget() {
    const auto root = root_.lock();
    return root ? nodeOf(*root).widget : nullptr;
}

ViewTree::Node& ViewTree::nodeOf(UIView& view) {
    Node& node = nodes_[&view];
    if (node.view.lock().get() == &view) return node;
    if (node.widget != nullptr) leaveParent(asWidget(node.widget));
    node = {};
    build(node, view);
    needsLayout_ = true;
    return node;
}

void ViewTree::build(Node& node, UIView& view) {
    node.view = view.weak_from_this();
    node.widget = makeViewWidget();
    node.owner = share(asWidget(node.widget));
    node.childParent = node.widget;
    if (dynamic_cast<UILabel*>(&view) != nullptr) {
        node.kind = Kind::label;
        node.content = makeLabel();
    } else if (dynamic_cast<UIButton*>(&view) != nullptr) {
        node.kind = Kind::button;
        node.content = makeButton(node.view);
        setMinimumHitSize(node.widget, smallestButton);
    } else if (dynamic_cast<UIActivityIndicatorView*>(&view) != nullptr) {
        node.kind = Kind::spinner;
        node.content = gtk_spinner_new();
    } else if (dynamic_cast<UIScrollView*>(&view) != nullptr) {
        node.kind = Kind::scroller;
        node.childParent = makeViewWidget();
        node.content = makeScroller(asWidget(node.childParent));
    } else if (auto* web = dynamic_cast<WKWebView*>(&view)) {
        node.kind = Kind::web;
        // Of another port no page could be shown.
        if (auto* page = dynamic_cast<GtkWebPage*>(&web->page())) {
            leaveParent(page->widget());
            gtk_widget_set_parent(page->widget(), asWidget(node.widget));
        }
        return;  // the page takes its widget away when it goes, so no pointer is kept
    }
    if (node.content != nullptr) gtk_widget_set_parent(node.content, asWidget(node.widget));
}

void ViewTree::follow() {
    const auto root = root_.lock();
    if (!root) return;
    ++visit_;
    followView(*root);
    std::erase_if(nodes_, [this](const auto& entry) {
        const Node& node = entry.second;
        if (node.visit == visit_) return false;
        leaveParent(asWidget(node.widget));
        return true;
    });
}

void ViewTree::followView(UIView& view) {
    Node& node = nodeOf(view);
    node.visit = visit_;
    if (layoutChanged(node, view)) needsLayout_ = true;
    GtkWidget* widget = asWidget(node.widget);
    setBackground(node.widget, view.backgroundColor(), view.cornerRadius());
    const bool isTouchable = !view.isHidden() && view.alpha() >= leastTouchableAlpha;
    gtk_widget_set_can_target(widget, isTouchable);
    gtk_widget_set_can_focus(widget, isTouchable);
    // A page stays mapped while it is hidden: out of a window the engine slows its script down.
    if (node.kind != Kind::web) gtk_widget_set_visible(widget, !view.isHidden());
    followContent(node, view);
    followSubviews(node, view);
}

void ViewTree::followContent(Node& node, UIView& view) {
    if (node.kind == Kind::label) {
        const auto& label = static_cast<UILabel&>(view);
        const bool isNew = std::exchange(node.text, label.text()) != label.text();
        followLabel(GTK_LABEL(node.content), label, isNew);
        if (isNew) needsLayout_ = true;
    } else if (node.kind == Kind::button) {
        const auto& button = static_cast<UIButton&>(view);
        const UIColor& color = button.titleColor();
        if (std::exchange(node.text, button.title()) != button.title())
            needsLayout_ = true;
        else if (node.titleColor == color)
            return;
        node.titleColor = color;
        setText(GTK_LABEL(gtk_button_get_child(GTK_BUTTON(node.content))), button.title(),
                UIButton::fontSize, color);
    } else if (node.kind == Kind::spinner) {
        gtk_spinner_set_spinning(GTK_SPINNER(node.content),
                                 static_cast<UIActivityIndicatorView&>(view).isAnimating());
    } else if (node.kind == Kind::scroller) {
        followScroller(GTK_SCROLLED_WINDOW(node.content), static_cast<UIScrollView&>(view));
    }
}

void ViewTree::followSubviews(Node& node, UIView& view) {
    GtkWidget* parent = asWidget(node.childParent);
    GtkWidget* previous = node.childParent == node.widget ? node.content : nullptr;
    if (node.kind == Kind::web) previous = gtk_widget_get_first_child(parent);
    for (const auto& subview : view.subviews()) {
        GtkWidget* child = asWidget(nodeOf(*subview).widget);
        moveAfter(child, parent, previous);
        followView(*subview);
        previous = child;
    }
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
    for (auto& [address, node] : nodes_) {
        const auto view = node.view.lock();
        if (!view) continue;
        node.frame = view->frame();
        setFrame(node.widget, view->frame());
        if (node.kind != Kind::scroller) continue;
        setContentSize(node.childParent, static_cast<UIScrollView&>(*view).contentSize());
    }
}

bool ViewTree::showOpacities() {
    bool isMoving = false;
    for (auto& [address, node] : nodes_) {
        const auto view = node.view.lock();
        if (!view) continue;
        const double alpha = view->presentationAlpha();
        if (alpha != view->alpha()) isMoving = true;
        const bool isUnseenPage = node.kind == Kind::web && view->isHidden();
        gtk_widget_set_opacity(asWidget(node.widget), isUnseenPage ? 0 : alpha);
    }
    return isMoving;
}

}  // namespace zorvik::platform::gtk
