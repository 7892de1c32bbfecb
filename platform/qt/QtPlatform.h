#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/desktop/PlatformOptions.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/Geometry.h"
#include "platform/uikit/UIViewController.h"

class QWidget;  // Qt's own declaration, so that this header needs no Qt

namespace zorvik::platform::qt {

using desktop::PageData;
using QtPlatformOptions = desktop::PlatformOptions;

// The desktop port on Qt 6 Widgets and Qt WebEngine: installed from construction to destruction on
// the thread of the QApplication, which is the main thread. The application object is the host's
// and is never ended; where the host has none, one is made that lives until the process ends.
// Owned by the host's main function, made after the QApplication and gone before it. Main thread
// only. Its end waits two seconds at the most for background tasks (events, core services of the
// host's); what they answer later is dropped.
class ZORVIK_API QtPlatform {
  public:
    // nullptr when no display is named, when called on another thread than the QApplication's, or
    // when the applicationId cannot be the name of a folder; standard error says which. A display
    // that is named and cannot be opened ends the process, as it does for any QApplication.
    static std::unique_ptr<QtPlatform> make(const QtPlatformOptions& options);
    ~QtPlatform();

    // An empty window on the screen, for a host that has none of its own. `closed` is called when
    // the customer closes it, which hides it; it ends with closeWindow or the platform.
    QWidget* openWindow(const std::string& title, const Size& size,
                        std::function<void()> closed = {});
    // Destroys a window of openWindow; nothing for any other.
    void closeWindow(QWidget* window);

    // The view controller to present from in this window of the host's (of any widget: the window
    // that it stands in), the same one each time. What the window shows stays beneath presented
    // screens. It belongs to the window: nobody need hold it, and when the window is destroyed
    // what is presented from it is dismissed; a window that only hides keeps its screens. The
    // platform's end lets go of a window that lives on. nullptr for no window.
    std::shared_ptr<UIViewController> presenterFor(QWidget* window);

    // What screens keep free at the edges from now on, in points.
    void setSafeAreaInsets(const UIEdgeInsets& insets);

    // Runs the main loop until quit. Loops may be nested; quit ends the innermost. A host that
    // calls QApplication::exec itself needs neither.
    void run();
    // Ends the loop that runs; nothing without one.
    void quit();
    // Runs the main loop until the condition holds (asked after every turn); false when `seconds`
    // passed first.
    bool runUntil(const std::function<bool()>& condition, double seconds);

    // Writes what the window shows, web content included, as a PNG; false when it shows nothing
    // yet or the file cannot be written.
    bool savePng(QWidget* window, const std::string& path);

    // Turns of the main queue and timers run so far: an idle screen adds none.
    unsigned long wakeUps() const;

  private:
    struct Parts;
    explicit QtPlatform(std::unique_ptr<Parts> parts);

    std::unique_ptr<Parts> parts_;
};

}  // namespace zorvik::platform::qt
