#pragma once

#include <functional>
#include <string_view>

#include "platform/foundation/Export.h"
#include "platform/foundation/URL.h"
#include "platform/runtime/NotificationCenter.h"

namespace zorvik::platform {

// The application object of the installed port. Main thread only.
class ZORVIK_API UIApplication {
  public:
    // Posted to the default notification centre each time the application comes back to the front.
    static constexpr std::string_view didBecomeActiveNotification =
        NotificationCenter::applicationDidBecomeActive;

    static UIApplication& shared();

    // Whether an installed application handles the address.
    bool canOpenURL(const URL& url);
    // Asks for the hand-over; the completion runs once, later, on the main thread.
    void open(const URL& url, std::function<void(bool opened)> completion);
};

}  // namespace zorvik::platform
