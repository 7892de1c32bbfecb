#include "platform/qt/ScreenLayer.h"

#include <QApplication>
#include <QChildEvent>
#include <QScreen>
#include <QTimerEvent>
#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/qt/Spoken.h"

namespace zorvik::platform::qt {
namespace {

bool isWithin(const QWidget& ancestor, const QWidget& widget) {
    return &ancestor == &widget || ancestor.isAncestorOf(&widget);
}

}  // namespace

ScreenLayer::ScreenLayer(QWidget& window, Screen& screen)
    : QWidget(&window),
      screen_(screen),
      window_(&window),
      formerFocus_(window.focusWidget()),
      content_(new QWidget(this)) {
    speak(*content_, {});
}

void ScreenLayer::appear() {
    raise();
    window_->installEventFilter(this);
    // A child of the window's would be destroyed with it, and the page's own widget in it.
    connect(window_, &QObject::destroyed, this, [this] { setParent(nullptr); });
    connect(qApp, &QApplication::focusChanged, this,
            [this](QWidget*, QWidget* focus) { keepFocus(focus); });
    qApp->installEventFilter(this);
    fillWindow();
    show();
    setFocus();
}

ScreenLayer::~ScreenLayer() {
    leave();
}

void ScreenLayer::setOffset(double shareOfHeight) {
    offset_ = shareOfHeight;
    place();
}

void ScreenLayer::requestFrames() {
    if (frames_.isActive() || !isVisible()) return;
    const double perSecond = screen() != nullptr ? std::max(screen()->refreshRate(), 1.0) : 60;
    frames_.start(static_cast<int>(std::ceil(1000 / std::min(perSecond, 60.0))), Qt::PreciseTimer,
                  this);
}

void ScreenLayer::leave() {
    if (std::exchange(isLeaving_, true)) return;
    QWidget* focus = formerFocus_;
    if (window_ == nullptr) return;
    if (focus != nullptr && isWithin(*window_, *focus)) {
        focus->setFocus();
    } else if (QWidget* own = window_->focusWidget(); own != nullptr && isWithin(*this, *own)) {
        own->clearFocus();
    }
}

bool ScreenLayer::eventFilter(QObject* target, QEvent* event) {
    const QEvent::Type type = event->type();
    if (target == window_.data()) {
        if (type == QEvent::Resize) fillWindow();
        if (type == QEvent::ChildAdded) putBeneath(static_cast<QChildEvent*>(event)->child());
    }
    // A key that belongs to a widget beneath, such as a button's own letter.
    if (type == QEvent::Shortcut && target->isWidgetType() && hasKeyboard()) {
        const auto& widget = static_cast<QWidget&>(*target);
        return window_->isAncestorOf(&widget) && !isWithin(*this, widget);
    }
    return false;
}

void ScreenLayer::timerEvent(QTimerEvent* event) {
    if (event->timerId() != frames_.timerId()) return;
    if (!screen_.layerFrame()) frames_.stop();
}

void ScreenLayer::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    requestFrames();
}

void ScreenLayer::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    frames_.stop();
}

void ScreenLayer::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange) screen_.layerFontChanged();
}

// The keyboard goes round inside the screen.
bool ScreenLayer::focusNextPrevChild(bool next) {
    QWidget* const start = window_ != nullptr ? window_->focusWidget() : nullptr;
    if (start == nullptr || !isWithin(*this, *start)) return false;
    QWidget* candidate = start;
    do {
        candidate = next ? candidate->nextInFocusChain() : candidate->previousInFocusChain();
        const bool takesTab = (candidate->focusPolicy() & Qt::TabFocus) != 0 &&
                              candidate->isVisibleTo(this) && candidate->isEnabled();
        if (takesTab && isAncestorOf(candidate)) {
            candidate->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
            return true;
        }
    } while (candidate != start);
    return true;
}

void ScreenLayer::fillWindow() {
    if (window_ == nullptr) return;
    setGeometry(window_->rect());
    place();
    screen_.layerResized({static_cast<double>(width()), static_cast<double>(height())});
}

void ScreenLayer::place() {
    content_->setGeometry(0, static_cast<int>(std::lround(offset_ * height())), width(), height());
}

// The host shows something else.
void ScreenLayer::putBeneath(QObject* child) {
    if (child->isWidgetType() && child != this) static_cast<QWidget*>(child)->stackUnder(this);
}

bool ScreenLayer::hasKeyboard() const {
    if (isLeaving_ || window_ == nullptr) return false;
    const QObjectList& children = window_->children();
    const auto isTaking = [](QObject* child) {
        const auto* layer = dynamic_cast<ScreenLayer*>(child);
        return layer != nullptr && !layer->isLeaving_;
    };
    const auto top = std::find_if(children.rbegin(), children.rend(), isTaking);
    return top != children.rend() && *top == this;
}

// The host, or a key, gave the focus to what is beneath.
void ScreenLayer::keepFocus(QWidget* focus) {
    if (focus == nullptr || !hasKeyboard() || isWithin(*this, *focus)) return;
    if (focus->window() == window_.data()) setFocus();
}

}  // namespace zorvik::platform::qt
