#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/desktop/PlatformOptions.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/Geometry.h"
#include "platform/uikit/UIViewController.h"

typedef struct _GtkWindow GtkWindow;  // GTK's own declaration, so that this header needs no GTK

namespace zorvik::platform::gtk {

using desktop::PageData;
using GtkPlatformOptions = desktop::PlatformOptions;

// The desktop port on GTK 4 and WebKitGTK 6.0: installed from construction to destruction on the
// thread that makes it, which becomes the main thread and the one that runs GLib's main loop.
// Owned by the host's main function. Main thread only. Its end waits two seconds at the most for
// background tasks (events, core services of the host's); what they answer later is dropped.
class ZORVIK_API GtkPlatform {
  public:
    // Initialises GTK when the host has not. nullptr when there is no display to open, or the
    // applicationId cannot be the name of a folder; standard error says which.
    static std::unique_ptr<GtkPlatform> make(const GtkPlatformOptions& options);
    ~GtkPlatform();

    // An empty window on the screen, for a host that has none of its own. `closed` is called when
    // the customer closes it, which hides it; it ends with closeWindow or the platform.
    GtkWindow* openWindow(const std::string& title, const Size& size,
                          std::function<void()> closed = {});
    // Destroys a window of openWindow; nothing for any other.
    void closeWindow(GtkWindow* window);

    // The view controller to present from in this window of the host's, the same one each time.
    // What the window shows stays beneath presented screens. It belongs to the window: nobody need
    // hold it, and when the window is destroyed what is presented from it is dismissed; a window
    // that only hides keeps its screens. The platform's end lets go of a window that lives on.
    // nullptr for no window or a destroyed one.
    std::shared_ptr<UIViewController> presenterFor(GtkWindow* window);

    // What screens keep free at the edges from now on, in points.
    void setSafeAreaInsets(const UIEdgeInsets& insets);

    // Runs the main loop until quit. Loops may be nested; quit ends the innermost.
    void run();
    // Ends the loop that runs; nothing without one.
    void quit();
    // Runs the main loop until the condition holds (asked after every turn); false when `seconds`
    // passed first.
    bool runUntil(const std::function<bool()>& condition, double seconds);

    // Writes what the window shows, web content included, as a PNG; false when it shows nothing
    // yet or the file cannot be written.
    bool savePng(GtkWindow* window, const std::string& path);

    // Turns of the main queue and timers run so far: an idle screen adds none.
    unsigned long wakeUps() const;

  private:
    struct Parts;
    explicit GtkPlatform(std::unique_ptr<Parts> parts);

    std::unique_ptr<Parts> parts_;
};

}  // namespace zorvik::platform::gtk
