#pragma once

#include <QPointer>
#include <QWidget>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "platform/qt/QtPlatform.h"

// The port that the tests of desktop ports are compiled for.
namespace zorvik::tests {

using Platform = platform::qt::QtPlatform;
using PlatformOptions = platform::qt::QtPlatformOptions;
using Window = QWidget;
// The engine writes %zz in an address as %25zz.
constexpr bool mendsBrokenEscapes = true;
constexpr bool handsProcessesOn = false;
constexpr bool hasNetworkProcess = false;
constexpr int longestPanelText = 100'000;
// Whether the engine has let go of the cookies in this folder, which it does some time after its
// platform has ended.
inline bool hasWrittenCookies(const std::string& folder) {
    std::error_code ignored;
    for (const auto& open : std::filesystem::directory_iterator("/proc/self/fd", ignored)) {
        if (std::filesystem::read_symlink(open.path(), ignored) == folder + "/Cookies")
            return false;
    }
    std::ostringstream text;
    text << std::ifstream(folder + "/Cookies").rdbuf();
    return text.str().find("127.0.0.1") != std::string::npos;
}
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
