#pragma once

#include <QColor>
#include <QRectF>
#include <QString>
#include <string>

#include "platform/foundation/Geometry.h"
#include "platform/uikit/UIColor.h"
#include "platform/uikit/UILabel.h"

class QPainter;

// How this port sets text: sizes in points that are layout units, more where the customer wants
// larger texts; the application's own typeface.
namespace zorvik::platform::qt {

// How a text is broken into lines.
struct TextStyle {
    double fontSize = UILabel::fontSize;
    NSTextAlignment alignment = NSTextAlignment::left;
    int maximumLines = 0;  // 0: as many as it needs; what does not fit into the last one is elided
};

QString toQString(const std::string& text);
QColor toQColor(const UIColor& color, double opacity = 1);

// Draws the text in the middle of the area's height.
void drawText(QPainter& painter, const QRectF& area, const QString& text, const TextStyle& style);

// The size of a text drawn like this, rounded up to whole points.
Size measureText(const std::string& text, double fontSize, double maximumWidth);

}  // namespace zorvik::platform::qt
