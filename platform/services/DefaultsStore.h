#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "platform/foundation/Date.h"
#include "platform/foundation/Export.h"

namespace zorvik::platform {

using DefaultsValue = std::variant<std::string, Date, double, bool>;

// The application's small typed store. Owned by the port; main thread only. Whether it outlives
// the process is the port's business; a port that stores durably has stored a write and a removal
// when the call returns, so that a process killed afterwards finds neither an entry that was
// removed nor lacks one that was written.
class ZORVIK_API DefaultsStore {
  public:
    virtual ~DefaultsStore() = default;

    virtual std::optional<DefaultsValue> read(const std::string& key) const = 0;
    virtual void write(const std::string& key, const DefaultsValue& value) = 0;
    // In this order, and where the port stores durably as one store: all of them or none. Nothing
    // for absent keys.
    virtual void remove(const std::vector<std::string>& keys) = 0;
};

}  // namespace zorvik::platform
