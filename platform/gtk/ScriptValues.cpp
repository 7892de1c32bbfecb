#include "platform/gtk/ScriptValues.h"

#include <jsc/jsc.h>

#include <algorithm>
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
    const std::size_t end = json.size() - 1;  // of the closing quote
    for (std::size_t i = 1; i < end; ++i) {
        const std::size_t plain = std::min(json.find('\\', i), end) - i;
        text.append(json, i, plain);
        i += plain;
        if (i == end) break;
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

// Whether the text of an object can be written within a moment. The engine keeps what an object
// holds in several places in one, so that a few of them may unfold to a text without end, and gaps
// of a list cost nothing until they are written.
bool hasShortText(JSCValue* value) {
    constexpr auto source = R"((value, limit) => {
        const open = [value];
        while (open.length > 0 && limit > 0) {
            const each = open.pop();
            limit -= 16;
            if (typeof each === 'string') limit -= each.length;
            if (typeof each !== 'object' || each === null) continue;
            if (Array.isArray(each)) limit -= each.length;
            if (limit < 0) break;
            for (const key in each) {
                limit -= key.length;
                open.push(each[key]);
                if (open.length * 16 > limit) return false;
            }
        }
        return limit > 0;
    })";
    constexpr double longest = 1 << 22;  // characters, about
    JSCContext* context = jsc_value_get_context(value);
    const ObjectPointer<JSCValue> function(jsc_context_evaluate(context, source, -1));
    const ObjectPointer<JSCValue> answer(jsc_value_function_call(
        function.get(), JSC_TYPE_VALUE, value, G_TYPE_DOUBLE, longest, G_TYPE_NONE));
    return jsc_value_to_boolean(answer.get());
}

}  // namespace

std::optional<ScriptValue> scriptValue(JSCValue* value) {
    const ScriptValue::Type type = typeOf(value);
    if (type == ScriptValue::Type::null) return ScriptValue{};
    const bool isContainer = type == ScriptValue::Type::array || type == ScriptValue::Type::object;
    if (isContainer && !hasShortText(value)) return std::nullopt;
    const TextPointer json(jsc_value_to_json(value, 0));
    if (!json) {
        jsc_context_clear_exception(jsc_value_get_context(value));
        return std::nullopt;
    }
    return ScriptValue{type, type == ScriptValue::Type::string ? decoded(json.get()) : json.get()};
}

}  // namespace zorvik::platform::gtk
