#pragma once

#include <QPointer>
#include <QWidget>

#include "platform/qt/QtPlatform.h"

// The port that the tests of desktop ports are compiled for.
namespace zorvik::tests {

using Platform = platform::qt::QtPlatform;
using PlatformOptions = platform::qt::QtPlatformOptions;
using Window = QWidget;
constexpr const char* webProcessName = "QtWebEngineProc";
// Of a process of that name, which runs no page itself.
constexpr bool webProcessesAreCopies = true;
constexpr bool handsProcessesOn = false;
// From where a menu opens to the middle of one of its items.
constexpr int downToMenuItem(int index) {
    return 11 + 22 * index;
}

inline void presentWindow(Window* window) {
    window->show();
}
// As the customer does.
inline void closeByCustomer(Window* window) {
    window->close();
}

// A window that the host made itself.
class HostWindow {
  public:
    HostWindow() = default;
    HostWindow(const HostWindow&) = delete;
    HostWindow& operator=(const HostWindow&) = delete;

    Window* get() const { return window_; }
    void destroy() { delete window_; }
    bool isReleased() const { return window_ == nullptr; }

  private:
    const QPointer<QWidget> window_ = new QWidget;
};

}  // namespace zorvik::tests
