#include "platform/gtk/ScriptValues.h"

#include <jsc/jsc.h>

#include <charconv>
#include <string>
#include <string_view>

#include "platform/gtk/ObjectPointer.h"

namespace zorvik::platform::gtk {
namespace {

ScriptValue::Type typeOf(JSCValue* value) {
    if (jsc_value_is_string(value)) return ScriptValue::Type::string;
    if (jsc_value_is_number(value)) return ScriptValue::Type::number;
    if (jsc_value_is_boolean(value)) return ScriptValue::Type::boolean;
    if (jsc_value_is_null(value) || jsc_value_is_undefined(value)) return ScriptValue::Type::null;
    if (jsc_value_is_array(value)) return ScriptValue::Type::array;
    return ScriptValue::Type::object;
}

void appendUtf8(std::string& text, unsigned codeUnit) {
    if (codeUnit >= 0xD800 && codeUnit <= 0xDFFF) codeUnit = 0xFFFD;
    char bytes[6];
    text.append(bytes, static_cast<std::size_t>(g_unichar_to_utf8(codeUnit, bytes)));
}

// The text of a JSON string as the engine writes one. Its own conversions to UTF-8 end at the
// first NUL or at half a surrogate pair; in JSON both are escaped, and nothing else above ASCII is.
std::string decoded(std::string_view json) {
    std::string text;
    text.reserve(json.size());
    for (std::size_t i = 1; i + 1 < json.size(); ++i) {
        if (json[i] != '\\') {
            text += json[i];
            continue;
        }
        switch (const char escaped = json[++i]) {
            case 'b':
                text += '\b';
                break;
            case 'f':
                text += '\f';
                break;
            case 'n':
                text += '\n';
                break;
            case 'r':
                text += '\r';
                break;
            case 't':
                text += '\t';
                break;
            case 'u': {
                unsigned codeUnit = 0xFFFD;
                const std::string_view digits = json.substr(i + 1, 4);
                std::from_chars(digits.data(), digits.data() + digits.size(), codeUnit, 16);
                appendUtf8(text, codeUnit);
                i += 4;
                break;
            }
            default:
                text += escaped;
        }
    }
    return text;
}

}  // namespace

std::optional<ScriptValue> scriptValue(JSCValue* value) {
    const ScriptValue::Type type = typeOf(value);
    if (type == ScriptValue::Type::null) return ScriptValue{};
    const TextPointer json(jsc_value_to_json(value, 0));
    if (!json) {
        jsc_context_clear_exception(jsc_value_get_context(value));
        return std::nullopt;
    }
    return ScriptValue{type, type == ScriptValue::Type::string ? decoded(json.get()) : json.get()};
}

}  // namespace zorvik::platform::gtk
