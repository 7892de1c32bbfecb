#include "platform/runtime/UserDefaults.h"

#include <type_traits>

#include "platform/foundation/Value.h"
#include "platform/runtime/Environment.h"
#include "platform/runtime/MainThread.h"

namespace zorvik::platform {

UserDefaults& UserDefaults::standard() {
    static UserDefaults instance;
    return instance;
}

void UserDefaults::set(const DefaultsValue& value, const std::string& key) {
    assertMainThread();
    Environment::defaults().write(key, value);
}

void UserDefaults::removeObject(const std::string& key) {
    removeObjects({key});
}

void UserDefaults::removeObjects(const std::vector<std::string>& keys) {
    assertMainThread();
    Environment::defaults().remove(keys);
}

std::optional<std::string> UserDefaults::string(const std::string& key) const {
    const std::optional<DefaultsValue> value = object(key);
    const std::string* text = value ? std::get_if<std::string>(&*value) : nullptr;
    if (text == nullptr) return std::nullopt;
    return *text;
}

std::optional<DefaultsValue> UserDefaults::object(const std::string& key) const {
    assertMainThread();
    return Environment::defaults().read(key);
}

std::string description(const DefaultsValue& value) {
    return std::visit(
        [](const auto& entry) -> std::string {
            if constexpr (std::is_same_v<std::decay_t<decltype(entry)>, std::string>) {
                return entry;
            } else {
                return description(entry);
            }
        },
        value);
}

}  // namespace zorvik::platform
