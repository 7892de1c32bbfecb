#include "platform/qt/ShownWidget.h"

#include <QApplication>
#include <QScrollArea>
#include <QScrollBar>
#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/qt/QtWebPage.h"
#include "platform/qt/Spoken.h"
#include "platform/uikit/UIButton.h"
#include "platform/uikit/UILabel.h"
#include "platform/uikit/UIScrollView.h"
#include "platform/webkit/WKWebView.h"

namespace zorvik::platform::qt {

using desktop::ViewKind;

namespace {

// Edges on whole points, so that text and blocks are crisp.
QRect wholePoints(const QPointF& origin, const Rect& frame) {
    const auto whole = [](double length) { return static_cast<int>(std::lround(length)); };
    const QPoint topLeft(whole(origin.x()), whole(origin.y()));
    return {topLeft, QSize(whole(origin.x() + frame.width) - topLeft.x(),
                           whole(origin.y() + frame.height) - topLeft.y())};
}

// A finger means a button that is a little beside it.
QRect atLeast(const Size& least, QRect area) {
    const QPoint centre = area.center();
    area.setSize(area.size().expandedTo(
        QSize(static_cast<int>(least.width), static_cast<int>(least.height))));
    area.moveCenter(centre);
    return area;
}

bool isScrolled(ViewKind kind) {
    return kind == ViewKind::scroller || kind == ViewKind::placeholder || kind == ViewKind::panel;
}

std::unique_ptr<QScrollArea> makeScroller(ViewKind kind, QWidget& parent) {
    auto scroller = std::make_unique<QScrollArea>(&parent);
    scroller->setFrameShape(QFrame::NoFrame);
    scroller->setFocusPolicy(Qt::NoFocus);
    scroller->setWidget(new QWidget);
    scroller->widget()->setAutoFillBackground(false);
    scroller->viewport()->setAutoFillBackground(false);
    speak(*scroller->widget(), {});
    if (kind == ViewKind::placeholder) {
        speak(*scroller, {QAccessible::StatusBar, desktop::loadingName, true, true});
    } else if (kind == ViewKind::panel) {
        speak(*scroller, {QAccessible::AlertMessage, {}});
        scroller->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        QScrollArea* const self = scroller.get();
        const auto showFocus = [self] {
            QWidget* const focus = QApplication::focusWidget();
            if (focus != nullptr && self->isAncestorOf(focus)) self->ensureWidgetVisible(focus);
        };
        // Once all that is in it has its place.
        QObject::connect(self->verticalScrollBar(), &QScrollBar::rangeChanged, self, showFocus,
                         Qt::QueuedConnection);
    }
    return scroller;
}

std::unique_ptr<ViewBlock> makeBlock(UIView& view, ViewKind kind, QWidget& parent) {
    if (kind == ViewKind::label) return makeLabelBlock(parent);
    if (kind != ViewKind::button) return makePlainBlock(parent);
    return makeButtonBlock(parent, [target = view.weak_from_this()] {
        if (const auto button = target.lock()) static_cast<UIButton&>(*button).sendTouchUpInside();
    });
}

UIColor colourBehind(const UIView& view) {
    for (const UIView* behind = view.superview(); behind != nullptr; behind = behind->superview()) {
        if (behind->backgroundColor().alpha > 0) return behind->backgroundColor();
    }
    return UIColor::white();
}

}  // namespace

ShownWidget::ShownWidget(UIView& view, QWidget& content)
    : kind_(desktop::kindOf(view)),
      block_(makeBlock(view, kind_, content)),
      subviewHost_(&content) {
    setMute(block_->widget(), kind_ != ViewKind::label && kind_ != ViewKind::button);
    if (isScrolled(kind_)) {
        scroller_ = makeScroller(kind_, content);
        subviewHost_ = scroller_->widget();
    } else if (kind_ == ViewKind::web) {
        // Of another port no page could be shown.
        auto* page = dynamic_cast<QtWebPage*>(&static_cast<WKWebView&>(view).page());
        if (page != nullptr) page_ = page->widget();
        cover_ = makePlainBlock(content);
        setMute(cover_->widget(), true);
    }
    moveOnTopIn(content);
}

ShownWidget::~ShownWidget() {
    if (page_ != nullptr) page_->setParent(nullptr);
    if (scroller_ == nullptr) return;
    // These are others'.
    for (QObject* child : QObjectList(subviewHost_->children()))
        static_cast<QWidget*>(child)->setParent(nullptr);
}

void ShownWidget::moveOnTopIn(QWidget& parent) {
    QWidget* const cover = cover_ ? &cover_->widget() : nullptr;
    QWidget* const widgets[] = {page_, cover, &block_->widget(), scroller_.get()};
    for (QWidget* widget : widgets) {
        if (widget == nullptr) continue;
        if (widget->parentWidget() != &parent) {
            widget->setParent(&parent);
            widget->setVisible(isVisible_);
        }
        widget->raise();
    }
    isPageSeen_.reset();
    if (scroller_ == nullptr) subviewHost_ = &parent;
}

void ShownWidget::put(desktop::ShownView& subview, desktop::ShownView* /*previous*/) {
    auto& shown = static_cast<ShownWidget&>(subview);
    shown.parent_ = this;
    shown.moveOnTopIn(*subviewHost_);
}

void ShownWidget::follow(UIView& view, const desktop::Circumstances& circumstances) {
    isReached_ = circumstances.isReached;
    isVisible_ = !view.isHidden() && (parent_ == nullptr || parent_->isVisible_);
    background_ = view.backgroundColor();
    cornerRadius_ = view.cornerRadius();
    QWidget& block = block_->widget();
    if (kind_ != ViewKind::web) block.setVisible(isVisible_);
    block.setAttribute(Qt::WA_TransparentForMouseEvents, !isReached_);
    if (circumstances.hasNewText) followText(view);
    if (kind_ == ViewKind::label || kind_ == ViewKind::button) setMute(block, !isReached_);
    if (kind_ == ViewKind::button) {
        block.setFocusPolicy(isReached_ ? Qt::StrongFocus : Qt::NoFocus);
        block.setAccessibleDescription(toQString(desktop::panelText(view)));
    }
    if (scroller_ != nullptr) followScroller(view);
    if (kind_ == ViewKind::panel)
        speak(*scroller_, {QAccessible::AlertMessage, toQString(desktop::panelText(view))});
    if (kind_ == ViewKind::web) followPage(view);
    show();
}

void ShownWidget::followText(const UIView& view) {
    if (kind_ == ViewKind::button) {
        const auto& button = static_cast<const UIButton&>(view);
        block_->setText(button.title(), button.titleColor(),
                        {UIButton::fontSize, NSTextAlignment::center, 1});
    } else {
        const auto& label = static_cast<const UILabel&>(view);
        block_->setText(label.text(), desktop::textColor,
                        {UILabel::fontSize, label.textAlignment(), label.numberOfLines()});
    }
}

void ShownWidget::followScroller(const UIView& view) {
    const auto policy = [](bool showsBar) {
        return showsBar ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff;
    };
    if (const auto* scrollView = dynamic_cast<const UIScrollView*>(&view)) {
        scroller_->setVerticalScrollBarPolicy(policy(scrollView->showsVerticalScrollIndicator()));
        scroller_->setHorizontalScrollBarPolicy(
            policy(scrollView->showsHorizontalScrollIndicator()));
    }
    scroller_->setVisible(isVisible_);
    scroller_->setAttribute(Qt::WA_TransparentForMouseEvents, !isReached_);
    setMute(*scroller_, !isReached_);
}

void ShownWidget::followPage(const UIView& view) {
    background_ = colourBehind(view);
    block_->widget().setAttribute(Qt::WA_TransparentForMouseEvents);
    if (page_ == nullptr) return;
    // What is hidden with all it stands in is of no interest to anybody.
    page_->setVisible(parent_ == nullptr || parent_->isVisible_);
    page_->setEnabled(isReached_);
    setMute(*page_, !isReached_);
}

// A page stays on the screen while it is not to be seen, since the engine slows it down elsewhere:
// beneath all the others. Seen, it is faded by a veil in the colour behind it.
void ShownWidget::placePage(bool isSeen) {
    if (page_ == nullptr || std::exchange(isPageSeen_, isSeen) == isSeen) return;
    block_->widget().setVisible(isSeen);
    cover_->widget().setVisible(!isSeen && page_->isVisibleTo(page_->parentWidget()));
    if (isSeen) {
        page_->stackUnder(&block_->widget());
    } else {
        cover_->widget().lower();
        page_->lower();
    }
}

void ShownWidget::place(const desktop::Placement& placement) {
    const Rect& frame = placement.frame;
    origin_ = {frame.x, frame.y};
    if (parent_ != nullptr && parent_->scroller_ == nullptr) origin_ += parent_->origin_;
    const QRect area = wholePoints(origin_, frame);
    block_->widget().setGeometry(atLeast(placement.touch, area));
    if (page_ != nullptr) page_->setGeometry(area);
    if (cover_ != nullptr) cover_->widget().setGeometry(area);
    if (scroller_ == nullptr) return;
    scroller_->setGeometry(area);
    const Size& size = placement.content;
    const QSize whole(static_cast<int>(std::ceil(size.width)),
                      static_cast<int>(std::ceil(size.height)));
    scroller_->widget()->resize(whole.expandedTo(area.size()));
}

void ShownWidget::setOpacity(double opacity) {
    opacity_ = parent_ != nullptr ? opacity * parent_->opacity_ : opacity;
    show();
}

void ShownWidget::takeFocus() {
    QWidget* const widget = kind_ == ViewKind::web ? page_.data() : &block_->widget();
    if (widget != nullptr) widget->setFocus(Qt::OtherFocusReason);
}

void ShownWidget::show() {
    const bool isPage = kind_ == ViewKind::web;
    block_->show({background_, cornerRadius_, isPage ? 1 - opacity_ : opacity_});
    if (!isPage) return;
    cover_->show({background_, 0, 1});
    placePage(isVisible_ && opacity_ > 0);
}

}  // namespace zorvik::platform::qt
