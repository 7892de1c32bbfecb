#pragma once

#include <QAbstractButton>
#include <QLabel>
#include <functional>
#include <memory>

#include "platform/qt/Text.h"
#include "platform/uikit/UIColor.h"

// What a screen is made of. They draw what they are given and know no views.
namespace zorvik::platform::qt {

// How a block is drawn.
struct Look {
    UIColor background = UIColor::clear();
    double cornerRadius = 0;
    double opacity = 1;

    friend bool operator==(const Look&, const Look&) = default;
};

// A rectangle with a background, and a text where it has one.
class ViewBlock {
  public:
    virtual ~ViewBlock() = default;

    virtual QWidget& widget() = 0;
    void show(const Look& look);
    void setText(const std::string& text, const UIColor& color, const TextStyle& style);

  protected:
    // To Qt, which tells readers of it.
    virtual void tellText(const QString& /*text*/) {}
    void drawBackground(QPainter& painter);
    void drawText(QPainter& painter);

  private:
    Look look_;
    QString text_;
    UIColor color_;
    TextStyle style_;
};

std::unique_ptr<ViewBlock> makePlainBlock(QWidget& parent);
std::unique_ptr<ViewBlock> makeLabelBlock(QWidget& parent);
// Answers the mouse, and the keyboard when it has the focus.
std::unique_ptr<ViewBlock> makeButtonBlock(QWidget& parent, std::function<void()> clicked);

}  // namespace zorvik::platform::qt
