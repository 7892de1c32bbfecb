#pragma once

#include <optional>

#include "platform/services/WebEngine.h"

typedef struct _JSCValue JSCValue;

namespace zorvik::platform::gtk {

// A value of a page's script; undefined counts as null. nullopt when it has no JSON form, as a
// circular object has not. Half of a surrogate pair, which UTF-8 cannot hold, becomes U+FFFD.
std::optional<ScriptValue> scriptValue(JSCValue* value);

}  // namespace zorvik::platform::gtk
