#include "platform/gtk/ShownWidget.h"

#include <utility>

#include "platform/gtk/GtkWebPage.h"
#include "platform/gtk/Text.h"
#include "platform/uikit/UIActivityIndicatorView.h"
#include "platform/uikit/UIButton.h"
#include "platform/uikit/UILabel.h"
#include "platform/uikit/UIScrollView.h"
#include "platform/webkit/WKWebView.h"

namespace zorvik::platform::gtk {

using desktop::ViewKind;

namespace {

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

// From screen readers.
void hide(GtkWidget* widget, bool isHidden) {
    gtk_accessible_update_state(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_STATE_HIDDEN, isHidden, -1);
}

GtkWidget* makeScroller(GtkWidget* content) {
    GtkWidget* scroller = gtk_scrolled_window_new();
    gtk_widget_add_css_class(scroller, "zorvik-scroller");
    gtk_widget_set_focusable(scroller, FALSE);
    gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scroller), content);
    hide(gtk_scrolled_window_get_hscrollbar(GTK_SCROLLED_WINDOW(scroller)), true);
    hide(gtk_scrolled_window_get_vscrollbar(GTK_SCROLLED_WINDOW(scroller)), true);
    return scroller;
}

GtkAccessibleRole roleOf(ViewKind kind) {
    if (kind == ViewKind::placeholder) return GTK_ACCESSIBLE_ROLE_STATUS;
    if (kind == ViewKind::panel) return GTK_ACCESSIBLE_ROLE_ALERT;
    return GTK_ACCESSIBLE_ROLE_GENERIC;
}

void setWords(GtkWidget* widget, GtkAccessibleProperty property, const std::string& words) {
    gtk_accessible_update_property(GTK_ACCESSIBLE(widget), property, validText(words).get(), -1);
}

void followScroller(GtkScrolledWindow* scroller, const UIScrollView& view) {
    const auto policy = [](bool showsBar) {
        return showsBar ? GTK_POLICY_AUTOMATIC : GTK_POLICY_EXTERNAL;
    };
    gtk_scrolled_window_set_policy(scroller, policy(view.showsHorizontalScrollIndicator()),
                                   policy(view.showsVerticalScrollIndicator()));
}

void followLabel(GtkLabel* label, const UILabel& view, bool hasNewText) {
    if (hasNewText) setText(label, view.text(), UILabel::fontSize, desktop::textColor);
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

ShownWidget::ShownWidget(UIView& view)
    : kind_(desktop::kindOf(view)),
      widget_(makeViewWidget(roleOf(kind_))),
      owner_(share(asWidget(widget_))),
      childParent_(widget_) {
    if (kind_ == ViewKind::label) {
        content_ = makeLabel();
    } else if (kind_ == ViewKind::button) {
        content_ = makeButton(view.weak_from_this());
    } else if (kind_ == ViewKind::spinner) {
        content_ = gtk_spinner_new();
        setWords(content_, GTK_ACCESSIBLE_PROPERTY_LABEL, desktop::loadingName);
    } else if (isScrolled()) {
        childParent_ = makeViewWidget(GTK_ACCESSIBLE_ROLE_GENERIC);
        content_ = makeScroller(asWidget(childParent_));
    } else if (kind_ == ViewKind::web) {
        // Of another port no page could be shown.
        if (auto* page = dynamic_cast<GtkWebPage*>(&static_cast<WKWebView&>(view).page())) {
            leaveParent(page->widget());
            gtk_widget_set_parent(page->widget(), asWidget(widget_));
        }
        return;  // the page takes its widget away when it goes, so no pointer is kept
    }
    if (content_ != nullptr) gtk_widget_set_parent(content_, asWidget(widget_));
    if (kind_ == ViewKind::panel) {
        gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(content_), GTK_POLICY_NEVER,
                                       GTK_POLICY_AUTOMATIC);
        keepFocusInSight(GTK_SCROLLED_WINDOW(content_), childParent_);
    } else if (kind_ == ViewKind::placeholder) {
        setWords(asWidget(widget_), GTK_ACCESSIBLE_PROPERTY_LABEL, desktop::loadingName);
        gtk_accessible_update_state(GTK_ACCESSIBLE(widget_), GTK_ACCESSIBLE_STATE_BUSY, TRUE, -1);
        hide(content_, true);
    }
}

ShownWidget::~ShownWidget() {
    leaveParent(asWidget(widget_));
}

bool ShownWidget::isScrolled() const {
    return kind_ == ViewKind::scroller || kind_ == ViewKind::placeholder ||
           kind_ == ViewKind::panel;
}

void ShownWidget::follow(UIView& view, const desktop::Circumstances& circumstances) {
    const auto [hasNewText, isReached] = circumstances;
    GtkWidget* widget = asWidget(widget_);
    setBackground(widget_, view.backgroundColor(), view.cornerRadius());
    gtk_widget_set_can_target(widget, isReached);
    gtk_widget_set_can_focus(widget, isReached);
    if (kind_ != ViewKind::web) gtk_widget_set_visible(widget, !view.isHidden());
    if (kind_ == ViewKind::label) {
        followLabel(GTK_LABEL(content_), static_cast<UILabel&>(view), hasNewText);
    } else if (kind_ == ViewKind::button && hasNewText) {
        const auto& button = static_cast<UIButton&>(view);
        setText(GTK_LABEL(gtk_button_get_child(GTK_BUTTON(content_))), button.title(),
                UIButton::fontSize, button.titleColor());
    } else if (kind_ == ViewKind::spinner) {
        gtk_spinner_set_spinning(GTK_SPINNER(content_),
                                 static_cast<UIActivityIndicatorView&>(view).isAnimating());
    } else if (kind_ == ViewKind::scroller || kind_ == ViewKind::placeholder) {
        followScroller(GTK_SCROLLED_WINDOW(content_), static_cast<UIScrollView&>(view));
    }
    tellReaders(view, isReached);
}

void ShownWidget::tellReaders(const UIView& view, bool isReached) {
    // A block says nothing, nor does a wheel at rest.
    const bool isMute = (kind_ == ViewKind::plain && view.subviews().empty()) ||
                        (kind_ == ViewKind::spinner &&
                         !static_cast<const UIActivityIndicatorView&>(view).isAnimating());
    // Each time: GTK says so itself of what it shows and hides.
    hide(asWidget(widget_), !isReached || isMute);
    if (kind_ == ViewKind::button)
        setWords(content_, GTK_ACCESSIBLE_PROPERTY_LABEL,
                 static_cast<const UIButton&>(view).title());
    std::string text = desktop::panelText(view);
    if (panelText_ == text) return;
    panelText_ = std::move(text);
    if (kind_ == ViewKind::button) {
        setWords(content_, GTK_ACCESSIBLE_PROPERTY_DESCRIPTION, panelText_);
    } else {
        setWords(asWidget(widget_), GTK_ACCESSIBLE_PROPERTY_LABEL, panelText_);
    }
}

void ShownWidget::put(desktop::ShownView& subview, desktop::ShownView* previous) {
    GtkWidget* parent = asWidget(childParent_);
    GtkWidget* before = childParent_ == widget_ ? content_ : nullptr;
    if (kind_ == ViewKind::web) before = gtk_widget_get_first_child(parent);
    if (previous != nullptr) before = asWidget(static_cast<ShownWidget*>(previous)->widget_);
    moveAfter(asWidget(static_cast<ShownWidget&>(subview).widget_), parent, before);
}

void ShownWidget::place(const desktop::Placement& placement) {
    setFrame(widget_, placement.frame);
    if (kind_ == ViewKind::button) setMinimumHitSize(widget_, placement.touch);
    if (isScrolled()) setContentSize(childParent_, placement.content);
}

void ShownWidget::setOpacity(double opacity) {
    gtk_widget_set_opacity(asWidget(widget_), opacity);
}

void ShownWidget::takeFocus() {
    // A page's widget is the first, where the page still has one.
    GtkWidget* widget =
        content_ != nullptr ? content_ : gtk_widget_get_first_child(asWidget(widget_));
    if (widget != nullptr) gtk_widget_grab_focus(widget);
    if (kind_ != ViewKind::button) return;
    GtkWidget* panel = gtk_widget_get_parent(asWidget(widget_));
    if (panel != nullptr) scrollToFocus(reinterpret_cast<ViewWidget*>(panel));
}

}  // namespace zorvik::platform::gtk
