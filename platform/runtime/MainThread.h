#pragma once

#include <memory>
#include <utility>

#include "platform/foundation/Export.h"

namespace zorvik::platform {

// Ends the process, in release builds too, with a message that names the call when it is not made
// on the main thread. Nothing while no port is installed.
ZORVIK_API void requireMainThread(const char* call);
// Ends a debug build when called off the main thread; nothing in a release build, or while no
// port is installed.
ZORVIK_API void assertMainThread();

// Runs `destroy` at once on the main thread, else in a main-queue turn; where the port is gone by
// then, once the next one is installed.
ZORVIK_API void destroyOnMainThread(void* object, void (*destroy)(void*));

// Makes an object whose destructor runs on the main thread, wherever its last reference drops.
// Every toolkit object and every screen is made by it.
template <class T, class... Arguments>
std::shared_ptr<T> makeOnMainThread(Arguments&&... arguments) {
    return std::shared_ptr<T>(new T(std::forward<Arguments>(arguments)...), [](T* object) {
        destroyOnMainThread(object, [](void* pointer) { delete static_cast<T*>(pointer); });
    });
}

}  // namespace zorvik::platform
