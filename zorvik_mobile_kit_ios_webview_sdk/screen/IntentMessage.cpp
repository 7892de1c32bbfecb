#include "zorvik_mobile_kit_ios_webview_sdk/screen/IntentMessage.h"

#include "platform/foundation/JSONSerialization.h"

namespace zorvik {

using platform::JSONSerialization;
using platform::ScriptValue;

std::optional<std::map<std::string, std::string>> intentFields(const ScriptValue& body) {
    if (body.type != ScriptValue::Type::string) return std::nullopt;
    const auto parsed = JSONSerialization::jsonObject(
        body.text, JSONSerialization::ReadingOptions::fragmentsAllowed);
    if (!parsed || parsed.value().dictionary() == nullptr) return std::nullopt;
    std::map<std::string, std::string> fields;
    for (const auto& [key, value] : *parsed.value().dictionary()) {
        if (value.string() == nullptr) return std::nullopt;
        fields.emplace(key, *value.string());
    }
    return fields;
}

}  // namespace zorvik
