#include "platform/headless/HeadlessDefaults.h"

namespace zorvik::platform::headless {

std::optional<DefaultsValue> HeadlessDefaults::read(const std::string& key) const {
    const auto entry = entries_.find(key);
    if (entry == entries_.end()) return std::nullopt;
    return entry->second;
}

void HeadlessDefaults::write(const std::string& key, const DefaultsValue& value) {
    entries_.insert_or_assign(key, value);
}

void HeadlessDefaults::remove(const std::vector<std::string>& keys) {
    for (const auto& key : keys) {
        entries_.erase(key);
        removals_.push_back(key);
    }
}

}  // namespace zorvik::platform::headless
