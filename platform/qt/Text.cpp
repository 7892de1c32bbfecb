#include "platform/qt/Text.h"

#include <QApplication>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QPainter>
#include <QScreen>
#include <QTextLayout>
#include <algorithm>
#include <cmath>
#include <limits>

namespace zorvik::platform::qt {
namespace {

constexpr double ordinaryDpi = 96;
constexpr double largestOrdinaryFont = 11;  // of an application's own texts, in typographic points

// How much larger than ordinary the customer wants texts. The desktop's scale comes as the screen's
// resolution where it does not enlarge the whole window, or as a larger font for applications.
double textScale() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    const double dpi = screen != nullptr ? screen->logicalDotsPerInchY() : ordinaryDpi;
    const double font = QFontInfo(QApplication::font()).pointSizeF();
    return dpi / ordinaryDpi * std::max(1.0, font / largestOrdinaryFont);
}

QFont fontOf(double size) {
    QFont font = QApplication::font();
    font.setPixelSize(static_cast<int>(std::lround(size * textScale())));
    return font;
}

// The lines of a text, broken at words, or within one that is longer than a line.
class Lines {
  public:
    Lines(QString text, const TextStyle& style, double width)
        : text_(text.replace('\n', QChar::LineSeparator)), layout_(text_, fontOf(style.fontSize)) {
        QTextOption option(style.alignment == NSTextAlignment::center ? Qt::AlignHCenter
                                                                      : Qt::AlignLeft);
        option.setWrapMode(style.maximumLines == 1 ? QTextOption::ManualWrap
                                                   : QTextOption::WrapAtWordBoundaryOrAnywhere);
        layout_.setTextOption(option);
        layout_.beginLayout();
        for (QTextLine line = layout_.createLine(); line.isValid(); line = layout_.createLine()) {
            line.setLineWidth(width);
            line.setPosition({0, height_});
            height_ += line.height();
        }
        layout_.endLayout();
    }

    QTextLayout& layout() { return layout_; }
    const QString& text() const { return text_; }
    double height() const { return height_; }
    double width() const {
        double widest = 0;
        for (int i = 0; i < layout_.lineCount(); ++i)
            widest = std::max(widest, layout_.lineAt(i).naturalTextWidth());
        return widest;
    }

  private:
    const QString text_;
    QTextLayout layout_;
    double height_ = 0;
};

// The text with no more lines than it may have.
QString elided(const QString& text, const TextStyle& style, double width) {
    if (style.maximumLines == 0) return text;
    Lines lines(text, style, width);
    const QTextLayout& layout = lines.layout();
    const int last = std::min(layout.lineCount(), style.maximumLines) - 1;
    if (last < 0) return text;
    const int start = layout.lineAt(last).textStart();
    const QFontMetricsF metrics(layout.font());
    return lines.text().left(start) +
           metrics.elidedText(lines.text().mid(start), Qt::ElideRight, width);
}

}  // namespace

QString toQString(const std::string& text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QColor toQColor(const UIColor& color, double opacity) {
    return QColor::fromRgbF(static_cast<float>(color.red), static_cast<float>(color.green),
                            static_cast<float>(color.blue),
                            static_cast<float>(color.alpha * opacity));
}

void drawText(QPainter& painter, const QRectF& area, const QString& text, const TextStyle& style) {
    Lines lines(elided(text, style, area.width()), style, area.width());
    const double top = std::floor(area.top() + (area.height() - lines.height()) / 2);
    lines.layout().draw(&painter, {area.left(), top});
}

Size measureText(const std::string& text, double fontSize, double maximumWidth) {
    const double width = maximumWidth > 0 ? maximumWidth : std::numeric_limits<short>::max();
    const Lines lines(toQString(text), {fontSize, NSTextAlignment::left, 0}, width);
    return {std::ceil(lines.width()), std::ceil(lines.height())};
}

}  // namespace zorvik::platform::qt
