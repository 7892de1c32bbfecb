#include "core/development/EventSink.h"

#include <cmath>

#include "platform/foundation/Data.h"
#include "platform/foundation/JSONSerialization.h"
#include "platform/foundation/Shortened.h"

namespace zorvik::development {

namespace {

using platform::Array;
using platform::Dictionary;
using platform::JSONSerialization;
using platform::Value;

// Deep enough for any event a person reads, and far from the limit of what JSON may nest.
constexpr int readableDepth = 64;

Value writable(const Value& value, int depth) {
    if (const std::string* text = value.string()) {
        return platform::shortened(platform::readableText(*text));
    }
    if (const double* number = value.number(); number && !std::isfinite(*number)) {
        return platform::description(value);
    }
    if (!value.array() && !value.dictionary()) return value;
    if (depth == readableDepth) return "…";
    if (const Array* array = value.array()) {
        Array copy;
        for (const Value& element : *array)
            copy.push_back(writable(element, depth + 1));
        return copy;
    }
    Dictionary copy;
    for (const auto& [key, element] : *value.dictionary()) {
        copy[platform::readableText(key)] = writable(element, depth + 1);
    }
    return copy;
}

template <class T>
Value valueOrNull(const std::optional<T>& optional) {
    return optional ? Value(*optional) : Value();
}

Value asValue(const RecordedEvent& event) {
    return Dictionary{
        {"event", event.eventName},
        {"orderId", valueOrNull(event.orderId)},
        {"token", valueOrNull(event.token)},
        {"subMerchantId", valueOrNull(event.subMerchantId)},
        {"additionalData", valueOrNull(event.additionalData)},
        {"sdkVersion", event.sdkVersion},
        {"appCode", valueOrNull(event.appCode)},
    };
}

}  // namespace

void MemoryEventSink::record(const RecordedEvent& event) {
    const std::scoped_lock lock(mutex_);
    events_.push_back(event);
}

std::vector<RecordedEvent> MemoryEventSink::events() const {
    const std::scoped_lock lock(mutex_);
    return events_;
}

void JSONLinesEventSink::record(const RecordedEvent& event) {
    const auto line = JSONSerialization::data(writable(asValue(event), 0));
    if (!line) return;
    const std::scoped_lock lock(mutex_);
    stream_ << line.value() << '\n' << std::flush;
}

}  // namespace zorvik::development
