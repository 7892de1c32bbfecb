#include "platform/runtime/Environment.h"

#include <atomic>

#include "platform/foundation/ProgrammingError.h"
#include "platform/runtime/NotificationCenter.h"
#include "platform/runtime/UserDefaults.h"
#include "platform/uikit/UIApplication.h"

namespace zorvik::platform {

namespace {

struct Installation {
    explicit Installation(const Services& portServices)
        : services(portServices), application(portServices.application) {}

    Services services;
    NotificationCenter notificationCenter;
    UserDefaults standardDefaults;
    UIApplication application;
};

// Atomic because background threads ask whether a port is there.
std::atomic<Installation*> installed = nullptr;

Installation& installation() {
    Installation* current = installed.load(std::memory_order_acquire);
    if (current == nullptr) endOnProgrammingError("no port is installed");
    return *current;
}

}  // namespace

void Environment::install(const Services& services) {
    if (isInstalled()) endOnProgrammingError("a port is installed already");
    installed.store(new Installation(services), std::memory_order_release);
}

void Environment::uninstall() {
    // Unreachable before it goes: whatever is destroyed with it finds no half-gone port.
    delete installed.exchange(nullptr, std::memory_order_acq_rel);
}

bool Environment::isInstalled() {
    return installed.load(std::memory_order_acquire) != nullptr;
}

Scheduler& Environment::scheduler() {
    return installation().services.scheduler;
}
WebEngine& Environment::webEngine() {
    return installation().services.webEngine;
}
ApplicationService& Environment::application() {
    return installation().services.application;
}
DefaultsStore& Environment::defaults() {
    return installation().services.defaults;
}
Stage& Environment::stage() {
    return installation().services.stage;
}

NotificationCenter& Environment::notificationCenter() {
    return installation().notificationCenter;
}
UIApplication& Environment::sharedApplication() {
    return installation().application;
}
UserDefaults& Environment::standardDefaults() {
    return installation().standardDefaults;
}

}  // namespace zorvik::platform
