#pragma once

#include <functional>

#include "platform/foundation/Export.h"
#include "platform/foundation/URL.h"

namespace zorvik::platform {

// Hears of the application's returns. Implemented by the toolkit.
class ZORVIK_API ApplicationDelegate {
  public:
    virtual ~ApplicationDelegate() = default;
    // The application came back to the front; once for each return, on the main thread.
    virtual void applicationDidBecomeActive() = 0;
};

// The application among others on this machine. Owned by the port; main thread only.
class ZORVIK_API ApplicationService {
  public:
    virtual ~ApplicationService() = default;

    // Whether an installed application handles the address's scheme. No side effects.
    virtual bool canOpen(const URL& url) = 0;
    // Hands the address to that application. Completes once, on the main thread, never inside the
    // call: true when the hand-over happened, false when it was refused.
    virtual void open(const URL& url, std::function<void(bool opened)> completion) = 0;
    // Not owned; nullptr takes it away.
    virtual void setDelegate(ApplicationDelegate* delegate) = 0;
};

}  // namespace zorvik::platform
