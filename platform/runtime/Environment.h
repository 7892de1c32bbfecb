#pragma once

#include "platform/services/ApplicationService.h"
#include "platform/services/DefaultsStore.h"
#include "platform/services/Scheduler.h"
#include "platform/services/Stage.h"
#include "platform/services/WebEngine.h"

namespace zorvik::platform {

class NotificationCenter;
class UIApplication;
class UserDefaults;

// The services of one port. Not owned; they outlive the installation.
struct Services {
    Scheduler& scheduler;
    WebEngine& webEngine;
    ApplicationService& application;
    DefaultsStore& defaults;
    Stage& stage;
};

// The port in force, and the toolkit's process-wide objects that stand on it. One port at a time.
class Environment {
  public:
    // Main thread (the calling thread becomes it). Installing over an installed port is a
    // programming error. The notification centre, user defaults and application object start anew.
    static void install(const Services& services);
    // Main thread. Toolkit objects that outlive it may only be destroyed.
    static void uninstall();
    static bool isInstalled();

    // Asking without an installed port is a programming error and ends the process with a message.
    // The scheduler may be asked for on any thread, the others on the main one.
    static Scheduler& scheduler();
    static WebEngine& webEngine();
    static ApplicationService& application();
    static DefaultsStore& defaults();
    static Stage& stage();

    static NotificationCenter& notificationCenter();
    static UIApplication& sharedApplication();
    static UserDefaults& standardDefaults();
};

}  // namespace zorvik::platform
