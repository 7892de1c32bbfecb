#include "TemplateDefaults.h"

namespace port_template {

using zorvik::platform::DefaultsValue;

std::optional<DefaultsValue> TemplateDefaults::read(const std::string& key) const {
    const auto entry = entries_.find(key);
    if (entry == entries_.end()) return std::nullopt;
    return entry->second;
}

void TemplateDefaults::write(const std::string& key, const DefaultsValue& value) {
    entries_.insert_or_assign(key, value);
}

void TemplateDefaults::remove(const std::vector<std::string>& keys) {
    for (const auto& key : keys)
        entries_.erase(key);
}

}  // namespace port_template
