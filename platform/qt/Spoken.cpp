#include "platform/qt/Spoken.h"

#include <QAccessibleWidget>
#include <QVariant>
#include <QWidget>

namespace zorvik::platform::qt {
namespace {

constexpr const char* spokenKey = "zorvikSpoken";
constexpr const char* muteKey = "zorvikMute";

class Voice : public QAccessibleWidget {
  public:
    explicit Voice(QWidget* widget) : QAccessibleWidget(widget) {}

    QAccessible::Role role() const override { return spoken().role; }
    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Name ? spoken().name : QAccessibleWidget::text(kind);
    }
    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.busy = spoken().isBusy;
        return state;
    }
    int childCount() const override { return static_cast<int>(found().size()); }
    QAccessibleInterface* child(int index) const override {
        return QAccessible::queryAccessibleInterface(found().value(index));
    }
    int indexOfChild(const QAccessibleInterface* child) const override {
        return child != nullptr ? static_cast<int>(found().indexOf(child->object())) : -1;
    }

  private:
    Spoken spoken() const { return widget()->property(spokenKey).value<Spoken>(); }
    QObjectList found() const {
        if (spoken().isAlone) return {};
        QObjectList children = widget()->children();
        children.removeIf([](QObject* child) {
            const auto* const part = qobject_cast<QWidget*>(child);
            return part == nullptr || part->isWindow() || part->isHidden() ||
                   part->property(muteKey).toBool();
        });
        return children;
    }
};

}  // namespace

void speak(QWidget& widget, const Spoken& spoken) {
    static const bool isInstalled = [] {
        QAccessible::installFactory([](const QString&, QObject* object) -> QAccessibleInterface* {
            const bool speaks = object->isWidgetType() && object->property(spokenKey).isValid();
            return speaks ? new Voice(static_cast<QWidget*>(object)) : nullptr;
        });
        return true;
    }();
    static_cast<void>(isInstalled);
    const QVariant before = widget.property(spokenKey);
    if (before.isValid() && before.value<Spoken>() == spoken) return;
    widget.setProperty(spokenKey, QVariant::fromValue(spoken));
    QAccessibleEvent event(&widget, QAccessible::NameChanged);
    QAccessible::updateAccessibility(&event);
}

void setMute(QWidget& widget, bool isMute) {
    if (widget.property(muteKey).toBool() != isMute) widget.setProperty(muteKey, isMute);
}

}  // namespace zorvik::platform::qt
