#pragma once

#include <memory>

#include "platform/foundation/Export.h"
#include "platform/services/ApplicationService.h"
#include "platform/services/DefaultsStore.h"
#include "platform/services/Scheduler.h"
#include "platform/services/Stage.h"
#include "platform/services/WebEngine.h"

namespace zorvik::platform {

class NotificationCenter;

// The services of one port. Not owned; they outlive the installation.
struct Services {
    Scheduler& scheduler;
    WebEngine& webEngine;
    ApplicationService& application;
    DefaultsStore& defaults;
    Stage& stage;
};

// The port in force. One port at a time; the thread that installs it is the main thread, until
// another one installs a port.
class ZORVIK_API Environment {
  public:
    // Makes the calling thread the main one. Installing over an installed port is a programming
    // error. The notification centre starts anew.
    static void install(const Services& services);
    // Main thread. What other threads let go of afterwards waits until the next port.
    static void uninstall();
    // Puts these services in the place of those in force, for what stands between the toolkit and
    // its port and forwards to it, such as a recorder; and the port's own back again. Whoever holds
    // on to a service may use it after that, so `owner` is kept until the port goes. Main thread,
    // with a port installed.
    static void exchange(const Services& services, std::shared_ptr<const void> owner = nullptr);
    // Any thread; on others than the main one the answer may be old when it arrives.
    static bool isInstalled();
    // Any thread. True before the first installation.
    static bool isMainThread();

    // Main thread. Asking without an installed port is a programming error and ends the process
    // with a message.
    static Scheduler& scheduler();
    static WebEngine& webEngine();
    static ApplicationService& application();
    static DefaultsStore& defaults();
    static Stage& stage();
    static NotificationCenter& notificationCenter();

    // The scheduler's two queues, for any thread at any time: a task that comes after the port is
    // dropped in silence. Without any port so far it is a programming error.
    static void runOnMain(Task task);
    static void runInBackground(Task task);
    // Seconds since 1970-01-01 UTC by the port's clock, by the system's without a port. Any thread.
    static double wallSeconds();

    // Destroys a task that will not run, and what it holds, where that may be done: here on the
    // main thread, from elsewhere when the port ends or the next one is installed. Any thread.
    static void drop(Task task);
};

}  // namespace zorvik::platform
