#include <unistd.h>

#include <thread>

#include "platform/dispatch/DispatchQueue.h"
#include "platform/gtk/GtkPlatform.h"

// Another application of the desktop: shows a window until its standard input ends.
int main() {
    const auto platform = zorvik::platform::gtk::GtkPlatform::make(
        {.applicationId = "other-application", .keepsSparePage = false});
    if (!platform) return 1;
    platform->openWindow("other application", {300, 300});
    std::thread input([&platform] {
        char byte = 0;
        while (read(STDIN_FILENO, &byte, 1) > 0)
            continue;
        zorvik::platform::DispatchQueue::main().async([&platform] { platform->quit(); });
    });
    platform->run();
    input.join();
    return 0;
}
