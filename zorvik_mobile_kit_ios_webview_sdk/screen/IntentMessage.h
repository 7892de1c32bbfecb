#pragma once

#include <map>
#include <optional>
#include <string>

#include "platform/services/WebEngine.h"

namespace zorvik {

// The body of an "openUpiIntent" message: a string that holds a JSON object whose values are all
// strings. nullopt for anything else.
std::optional<std::map<std::string, std::string>> intentFields(const platform::ScriptValue& body);

}  // namespace zorvik
