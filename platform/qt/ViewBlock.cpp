#include "platform/qt/ViewBlock.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QPainter>
#include <utility>

namespace zorvik::platform::qt {
namespace {

constexpr double buttonRadius = 10;
constexpr double ringWidth = 2;

class PlainBlock : public QWidget, public ViewBlock {
  public:
    explicit PlainBlock(QWidget& parent) : QWidget(&parent) {}

    QWidget& widget() override { return *this; }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        drawBackground(painter);
    }
};

// A label to those who read the screen by other means; it sets its text as the layout measured it.
class LabelBlock : public QLabel, public ViewBlock {
  public:
    explicit LabelBlock(QWidget& parent) : QLabel(&parent) { setTextFormat(Qt::PlainText); }

    QWidget& widget() override { return *this; }

  protected:
    void tellText(const QString& text) override { QLabel::setText(text); }
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        drawBackground(painter);
        drawText(painter);
    }
};

class ButtonBlock : public QAbstractButton, public ViewBlock {
  public:
    explicit ButtonBlock(QWidget& parent) : QAbstractButton(&parent) {
        setAttribute(Qt::WA_Hover);
        setCursor(Qt::PointingHandCursor);
    }

    QWidget& widget() override { return *this; }

  protected:
    void tellText(const QString& text) override {
        // An ampersand would name a key.
        QAbstractButton::setText(QString(text).replace('&', "&&"));
        setAccessibleName(text);
    }
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        drawBackground(painter);
        UIColor tint = UIColor::systemBlue();
        if (hasFocus() && showsFocus_) {
            painter.setBrush(Qt::NoBrush);
            painter.setPen({toQColor(tint), ringWidth});
            const double inset = ringWidth / 2;
            painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset),
                                    buttonRadius - inset, buttonRadius - inset);
            painter.setPen(Qt::NoPen);
        }
        tint.alpha = isDown() ? 0.18 : underMouse() ? 0.08 : 0;
        painter.setBrush(toQColor(tint));
        painter.drawRoundedRect(rect(), buttonRadius, buttonRadius);
        drawText(painter);
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
    bool showsFocus_ = false;
};

}  // namespace

void ViewBlock::show(const Look& look) {
    if (std::exchange(look_, look) == look) return;
    widget().update();
}

void ViewBlock::setText(const std::string& text, const UIColor& color, const TextStyle& style) {
    text_ = toQString(text);
    color_ = color;
    style_ = style;
    tellText(text_);
    widget().update();
}

void ViewBlock::drawBackground(QPainter& painter) {
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(look_.opacity);
    painter.setPen(Qt::NoPen);
    if (look_.background.alpha <= 0) return;
    painter.setBrush(toQColor(look_.background));
    painter.drawRoundedRect(widget().rect(), look_.cornerRadius, look_.cornerRadius);
}

void ViewBlock::drawText(QPainter& painter) {
    painter.setPen(toQColor(color_));
    qt::drawText(painter, widget().rect(), text_, style_);
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
