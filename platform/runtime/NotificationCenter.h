#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/Export.h"

namespace zorvik::platform {

// Tells observers of named happenings. Main thread only; delivers on the posting thread, inside
// the call.
class ZORVIK_API NotificationCenter {
  public:
    // Posted each time the application comes back to the front.
    static constexpr std::string_view applicationDidBecomeActive =
        "UIApplicationDidBecomeActiveNotification";

    // That of the installed port.
    static NotificationCenter& defaultCenter();

    // The observer is held weakly; adding it again for the same name delivers twice.
    template <class Observer>
    void addObserver(const std::weak_ptr<Observer>& observer, void (Observer::*selector)(),
                     std::string_view name) {
        add(observer, name, [observer, selector] {
            if (const auto object = observer.lock()) ((*object).*selector)();
        });
    }
    // Ends every registration of this observer, in the middle of a delivery too. The object is
    // only compared, so a destructor may call it.
    void removeObserver(const void* observer);
    void post(std::string_view name);
    // Registrations that were not removed, of observers that are gone too.
    std::size_t observerCount() const { return registrations_.size(); }

  private:
    struct Registration {
        const void* address;
        std::weak_ptr<const void> observer;
        std::string name;
        std::function<void()> deliver;
        bool isRemoved = false;
    };

    void add(const std::weak_ptr<const void>& observer, std::string_view name,
             std::function<void()> deliver);

    std::vector<std::shared_ptr<Registration>> registrations_;
};

}  // namespace zorvik::platform
