#pragma once

#include <QAccessible>
#include <QString>

class QWidget;

// What a screen reader finds of a screen, most widgets of which are only drawn.
namespace zorvik::platform::qt {

// What is said of one widget.
struct Spoken {
    QAccessible::Role role = QAccessible::Client;
    QString name;
    bool isBusy = false;
    bool isAlone = false;  // nothing of what is in it is found

    friend bool operator==(const Spoken&, const Spoken&) = default;
};

// Of a widget this is said, and of its children those are found that are not mute. The first time
// before the widget is shown.
void speak(QWidget& widget, const Spoken& spoken);
// A mute child of such a widget is not found, nor is what is in it.
void setMute(QWidget& widget, bool isMute);

}  // namespace zorvik::platform::qt
