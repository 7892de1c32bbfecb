#pragma once

#include <optional>
#include <string>
#include <variant>

#include "platform/foundation/Date.h"

namespace zorvik::platform {

using DefaultsValue = std::variant<std::string, Date, double, bool>;

// The application's small typed store. Owned by the port; main thread only. Whether it outlives
// the process is the port's business; a port that stores durably has stored when the call returns.
class DefaultsStore {
  public:
    virtual ~DefaultsStore() = default;

    virtual std::optional<DefaultsValue> read(const std::string& key) const = 0;
    virtual void write(const std::string& key, const DefaultsValue& value) = 0;
    virtual void remove(const std::string& key) = 0;
};

}  // namespace zorvik::platform
