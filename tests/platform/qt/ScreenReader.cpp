#include "tests/platform/desktop/ScreenReader.h"

#include <QAccessible>
#include <QApplication>
#include <QWidget>

namespace zorvik::tests {
namespace {

void hear(const QAccessibleInterface& part, std::vector<std::string>& lines) {
    if (part.state().invisible) return;
    const auto text = [&](QAccessible::Text what) { return part.text(what).toStdString(); };
    const bool isPage = part.object() != nullptr && part.object()->inherits("QWebEngineView");
    std::string line;
    if (part.role() == QAccessible::AlertMessage) line = "alert";
    if (part.role() == QAccessible::StatusBar) line = "status";
    if (part.role() == QAccessible::StaticText) line = "text";
    if (part.role() == QAccessible::Button) line = "button";
    if (isPage) line = "page";
    if (line.empty() && part.childCount() == 0) line = "nothing";
    if (!line.empty()) {
        if (!text(QAccessible::Name).empty()) line += ": " + text(QAccessible::Name);
        if (!text(QAccessible::Description).empty())
            line += " (" + text(QAccessible::Description) + ")";
        if (part.state().busy) line += " busy";
        const auto* const widget = qobject_cast<QWidget*>(part.object());
        if (part.state().focused ||
            (isPage && widget->focusWidget() == QApplication::focusWidget()))
            line += " focused";
        lines.push_back(line);
    }
    if (isPage) return;
    for (int i = 0; i < part.childCount(); ++i)
        hear(*part.child(i), lines);
}

}  // namespace

std::vector<std::string> heard(void* window) {
    std::vector<std::string> lines;
    std::fprintf(stderr, "active %d\n", QAccessible::isActive());
    hear(*QAccessible::queryAccessibleInterface(static_cast<QWidget*>(window)), lines);
    return lines;
}

void setTextScale(double scale) {
    QFont font = QApplication::font();
    font.setPointSizeF(11 * scale);
    QApplication::setFont(font);
}

}  // namespace zorvik::tests
