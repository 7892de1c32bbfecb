#pragma once

#include <optional>

#include "platform/foundation/Value.h"
#include "platform/services/DefaultsStore.h"

namespace zorvik::platform::desktop {

// An entry as JSON, which names its type: {"date": 1763844503.25}. Reads back exactly.
Value defaultsEntry(const DefaultsValue& value);
// nullopt for an entry of a kind this version does not know.
std::optional<DefaultsValue> defaultsValue(const Value& entry);

}  // namespace zorvik::platform::desktop
