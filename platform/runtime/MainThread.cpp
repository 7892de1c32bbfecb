#include "platform/runtime/MainThread.h"

#include "platform/foundation/ProgrammingError.h"
#include "platform/runtime/Environment.h"

namespace zorvik::platform {

void assertMainThread() {
#ifndef NDEBUG
    if (Environment::isInstalled() && !Environment::isMainThread()) {
        endOnProgrammingError("a toolkit object was used off the main thread");
    }
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
