#pragma once

#include <functional>
#include <string_view>

#include "platform/services/ApplicationService.h"

namespace zorvik::platform {

// The application object of the installed port. Main thread only.
class UIApplication : private ApplicationDelegate {
  public:
    // Posted to the default notification centre each time the application comes back to the front.
    static constexpr std::string_view didBecomeActiveNotification =
        "UIApplicationDidBecomeActiveNotification";

    static UIApplication& shared();

    explicit UIApplication(ApplicationService& service);
    UIApplication(const UIApplication&) = delete;
    UIApplication& operator=(const UIApplication&) = delete;
    ~UIApplication() override;

    // Whether an installed application handles the address.
    bool canOpenURL(const URL& url);
    // Asks for the hand-over; the completion runs once, later, on the main thread.
    void open(const URL& url, std::function<void(bool opened)> completion);

  private:
    void applicationDidBecomeActive() override;

    ApplicationService& service_;
};

}  // namespace zorvik::platform
