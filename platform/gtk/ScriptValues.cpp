#include "platform/gtk/ScriptValues.h"

#include <jsc/jsc.h>

#include "platform/desktop/JsonString.h"
#include "platform/desktop/ShortText.h"
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

// Whether the text of an object can be written within a moment.
bool hasShortText(JSCValue* value) {
    JSCContext* context = jsc_value_get_context(value);
    const ObjectPointer<JSCValue> function(
        jsc_context_evaluate(context, desktop::hasShortText, -1));
    const ObjectPointer<JSCValue> answer(
        jsc_value_function_call(function.get(), JSC_TYPE_VALUE, value, G_TYPE_DOUBLE,
                                static_cast<double>(desktop::longestText), G_TYPE_NONE));
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
    return ScriptValue{type, type == ScriptValue::Type::string
                                 ? desktop::textOfJsonString(json.get())
                                 : json.get()};
}

}  // namespace zorvik::platform::gtk
