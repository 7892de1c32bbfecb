#include "platform/runtime/NotificationCenter.h"

#include <utility>

#include "platform/runtime/Environment.h"
#include "platform/runtime/MainThread.h"

namespace zorvik::platform {

NotificationCenter& NotificationCenter::defaultCenter() {
    return Environment::notificationCenter();
}

void NotificationCenter::add(const std::weak_ptr<const void>& observer, std::string_view name,
                             std::function<void()> deliver) {
    assertMainThread();
    std::erase_if(registrations_, [](const auto& entry) { return entry->observer.expired(); });
    registrations_.push_back(std::make_shared<Registration>(
        Registration{observer.lock().get(), observer, std::string(name), std::move(deliver)}));
}

void NotificationCenter::removeObserver(const void* observer) {
    assertMainThread();
    std::erase_if(registrations_, [observer](const auto& entry) {
        if (entry->address != observer) return false;
        entry->isRemoved = true;
        return true;
    });
}

void NotificationCenter::post(std::string_view name) {
    assertMainThread();
    // Delivered from a copy: observers come and go inside the delivery.
    std::vector<std::shared_ptr<Registration>> matching;
    for (const auto& registration : registrations_) {
        if (registration->name == name) matching.push_back(registration);
    }
    for (const auto& registration : matching) {
        if (!registration->isRemoved) registration->deliver();
    }
}

}  // namespace zorvik::platform
