#include "platform/qt/ViewBlock.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QPainter>
#include <utility>

namespace zorvik::platform::qt {
namespace {

constexpr double buttonRadius = 10;
constexpr double ringWidth = 2;

void begin(QPainter& painter, const Look& look) {
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(look.opacity);
    painter.setPen(Qt::NoPen);
}

void drawBackground(QPainter& painter, const QWidget& widget, const Look& look) {
    if (look.background.alpha <= 0) return;
    painter.setBrush(toQColor(look.background));
    painter.drawRoundedRect(widget.rect(), look.cornerRadius, look.cornerRadius);
}

class PlainBlock : public QWidget, public ViewBlock {
  public:
    explicit PlainBlock(QWidget& parent) : QWidget(&parent) {}

    QWidget& widget() override { return *this; }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        begin(painter, look());
        drawBackground(painter, *this, look());
    }
};

// A label to those who read the screen by other means; it sets its text as the layout measured it.
class LabelBlock : public QLabel, public ViewBlock {
  public:
    explicit LabelBlock(QWidget& parent) : QLabel(&parent) { setTextFormat(Qt::PlainText); }

    QWidget& widget() override { return *this; }
    void setText(const std::string& text, const UIColor& color, const TextStyle& style) override {
        QLabel::setText(toQString(text));
        color_ = color;
        style_ = style;
        update();
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        begin(painter, look());
        drawBackground(painter, *this, look());
        painter.setPen(toQColor(color_));
        drawText(painter, rect(), text(), style_);
    }

  private:
    UIColor color_;
    TextStyle style_;
};

class ButtonBlock : public QAbstractButton, public ViewBlock {
  public:
    explicit ButtonBlock(QWidget& parent) : QAbstractButton(&parent) {
        setAttribute(Qt::WA_Hover);
        setCursor(Qt::PointingHandCursor);
    }

    QWidget& widget() override { return *this; }
    void setText(const std::string& text, const UIColor& color, const TextStyle& style) override {
        // An ampersand would name a key.
        QAbstractButton::setText(toQString(text).replace('&', "&&"));
        setAccessibleName(toQString(text));
        color_ = color;
        style_ = style;
        update();
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        begin(painter, look());
        drawBackground(painter, *this, look());
        UIColor tint = UIColor::systemBlue();
        tint.alpha = isDown() ? 0.18 : underMouse() ? 0.08 : 0;
        painter.setBrush(toQColor(tint));
        painter.drawRoundedRect(rect(), buttonRadius, buttonRadius);
        if (hasFocus() && showsFocus_) {
            tint.alpha = 0.7;
            painter.setBrush(Qt::NoBrush);
            painter.setPen({toQColor(tint), ringWidth});
            const double inset = ringWidth / 2;
            painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset),
                                    buttonRadius - inset, buttonRadius - inset);
        }
        painter.setPen(toQColor(color_));
        drawText(painter, rect(), accessibleName(), style_);
    }
    void keyPressEvent(QKeyEvent* event) override {
        if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
            click();
        } else {
            showsFocus_ = true;
            QAbstractButton::keyPressEvent(event);
        }
    }
    void focusInEvent(QFocusEvent* event) override {
        showsFocus_ = event->reason() != Qt::MouseFocusReason;
        QAbstractButton::focusInEvent(event);
    }

  private:
    UIColor color_;
    TextStyle style_;
    bool showsFocus_ = false;
};

}  // namespace

void ViewBlock::show(const Look& look) {
    if (std::exchange(look_, look) == look) return;
    widget().update();
}

std::unique_ptr<ViewBlock> makePlainBlock(QWidget& parent) {
    return std::make_unique<PlainBlock>(parent);
}

std::unique_ptr<ViewBlock> makeLabelBlock(QWidget& parent) {
    return std::make_unique<LabelBlock>(parent);
}

std::unique_ptr<ViewBlock> makeButtonBlock(QWidget& parent, std::function<void()> clicked) {
    auto button = std::make_unique<ButtonBlock>(parent);
    QObject::connect(button.get(), &QAbstractButton::clicked, std::move(clicked));
    return button;
}

}  // namespace zorvik::platform::qt
