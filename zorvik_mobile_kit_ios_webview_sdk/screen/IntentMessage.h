#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "platform/services/WebEngine.h"

namespace zorvik {

// The one message the page may post: the customer picked a UPI app.
inline constexpr std::string_view intentMessageName = "openUpiIntent";

// The body of such a message: a string that holds a JSON object whose values are all
// strings. nullopt for anything else.
std::optional<std::map<std::string, std::string>> intentFields(const platform::ScriptValue& body);

}  // namespace zorvik
