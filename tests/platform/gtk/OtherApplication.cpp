#include "platform/gtk/GtkPlatform.h"

// Another application of the desktop: shows a window until it is ended.
int main() {
    const auto platform = zorvik::platform::gtk::GtkPlatform::make(
        {.applicationId = "other-application", .keepsSparePage = false});
    platform->openWindow("other application", {300, 300});
    platform->run();
}
