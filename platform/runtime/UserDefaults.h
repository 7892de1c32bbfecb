#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/Export.h"
#include "platform/services/DefaultsStore.h"

namespace zorvik::platform {

// The application's standard store of small typed entries, over the installed port's. Main thread
// only.
class ZORVIK_API UserDefaults {
  public:
    static UserDefaults& standard();

    void set(const DefaultsValue& value, const std::string& key);
    void removeObject(const std::string& key);
    // In this order, as one store.
    void removeObjects(const std::vector<std::string>& keys);
    // nullopt when there is no entry, and from string() also when it has another type.
    std::optional<std::string> string(const std::string& key) const;
    std::optional<DefaultsValue> object(const std::string& key) const;
};

// The entry for a console line; a Date as its description.
ZORVIK_API std::string description(const DefaultsValue& value);

}  // namespace zorvik::platform
