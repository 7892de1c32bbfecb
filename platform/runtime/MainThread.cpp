#include "platform/runtime/MainThread.h"

#include <string>

#include "platform/foundation/ProgrammingError.h"
#include "platform/runtime/Environment.h"

namespace zorvik::platform {

namespace {

void endOffMainThread(const std::string& use) {
    if (!Environment::isInstalled() || Environment::isMainThread()) return;
    endOnProgrammingError(use +
                          " off the main thread; use it on the thread that made the platform, from "
                          "another one by way of DispatchQueue::main().async(...)");
}

}  // namespace

void requireMainThread(const char* call) {
    endOffMainThread(std::string(call) + " was called");
}

void assertMainThread() {
#ifndef NDEBUG
    endOffMainThread("a toolkit object was used");
#endif
}

void destroyOnMainThread(void* object, void (*destroy)(void*)) {
    if (Environment::isMainThread()) {
        destroy(object);
        return;
    }
    // The task owns the object, so that it is destroyed even when the port drops the task unrun.
    Environment::runOnMain(
        [owner = std::shared_ptr<void>(object, destroy)]() mutable { owner.reset(); });
}

}  // namespace zorvik::platform
