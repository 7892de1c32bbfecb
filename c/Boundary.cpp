#include "c/Boundary.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <new>

#include "platform/foundation/Data.h"
#include "platform/foundation/JSONSerialization.h"
#include "platform/runtime/Environment.h"

namespace zorvik::c {

using platform::Array;
using platform::Dictionary;
using platform::Environment;
using platform::JSONSerialization;
using platform::Value;

namespace {

thread_local std::string lastError;
thread_local zorvik_result lastResult = ZORVIK_OK;
thread_local int callbackDepth = 0;

constexpr int writableDepth = 64;

Value writable(const Value& value, int depth) {
    if (const auto* text = value.string()) return platform::readableText(*text);
    if (const auto* number = value.number(); number && !std::isfinite(*number)) return nullptr;
    if (!value.array() && !value.dictionary()) return value;
    if (depth == writableDepth) return nullptr;
    if (const auto* array = value.array()) {
        Array copy;
        for (const Value& element : *array)
            copy.push_back(writable(element, depth + 1));
        return copy;
    }
    Dictionary copy;
    for (const auto& [key, element] : *value.dictionary())
        copy[platform::readableText(key)] = writable(element, depth + 1);
    return copy;
}

std::string sentence(std::string_view name, std::string_view rest) {
    return std::string(name).append(rest);
}

}  // namespace

zorvik_result refuse(zorvik_result result, std::string_view reason) noexcept {
    lastResult = result;
    try {
        lastError = reason;
    } catch (...) {
        lastError.clear();
    }
    return result;
}

Call& Call::require(bool holds, zorvik_result otherwise, std::string_view reason) {
    if (!holds && result_ == ZORVIK_OK) result_ = refuse(otherwise, reason);
    return *this;
}

Call& Call::onMainThread() {
    require(Environment::isInstalled(), ZORVIK_WRONG_STATE,
            "there is no platform: make one (zorvik_headless_make, zorvik_gtk_make) and keep it");
    return require(Environment::isMainThread(), ZORVIK_WRONG_THREAD,
                   "this is not the main thread, the one that made the platform");
}

Call& Call::outsideCallbacks() {
    return require(callbackDepth == 0, ZORVIK_WRONG_STATE,
                   "a platform cannot be freed inside a callback: free it after the function "
                   "that runs it has returned");
}

Call& Call::withoutPlatform() {
    return require(!Environment::isInstalled(), ZORVIK_WRONG_STATE,
                   "there is a platform already, and only one can be: free it first");
}

Call& Call::given(const void* argument, std::string_view name) {
    return require(argument != nullptr, ZORVIK_INVALID_ARGUMENT, sentence(name, " is NULL"));
}

Call& Call::text(const char* argument, std::string_view name) {
    return given(argument, name).optionalText(argument, name);
}

Call& Call::optionalText(const char* argument, std::string_view name) {
    return require(argument == nullptr || platform::isValidUtf8(argument), ZORVIK_INVALID_ARGUMENT,
                   sentence(name, " is not UTF-8"));
}

Value Call::json(const char* argument, std::string_view name) {
    if (!given(argument, name)) return nullptr;
    auto value = JSONSerialization::jsonObject(argument,
                                               JSONSerialization::ReadingOptions::fragmentsAllowed);
    if (value) return std::move(value).value();
    require(false, ZORVIK_INVALID_ARGUMENT,
            sentence(name, " is not JSON: ") + value.error().localizedDescription);
    return nullptr;
}

Dictionary Call::object(const char* argument, std::string_view name) {
    const Value value = json(argument, name);
    const Dictionary* object = value.dictionary();
    require(object != nullptr, ZORVIK_INVALID_ARGUMENT, sentence(name, " is not a JSON object"));
    return object == nullptr ? Dictionary() : *object;
}

std::optional<std::string> optionalString(const char* text) {
    if (text == nullptr) return std::nullopt;
    return text;
}

char* hostString(std::string_view text) {
    auto* copy = static_cast<char*>(std::malloc(text.size() + 1));
    if (copy == nullptr) throw std::bad_alloc();
    std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    return copy;
}

std::string jsonText(const Value& value) {
    auto text = JSONSerialization::data(value);
    if (!text) text = JSONSerialization::data(writable(value, 0));
    return text ? std::move(text).value() : "null";
}

std::string plainText(const std::string& text) {
    return platform::readableText(text);
}

InsideCallback::InsideCallback() {
    ++callbackDepth;
}
InsideCallback::~InsideCallback() {
    --callbackDepth;
}

}  // namespace zorvik::c

using namespace zorvik;
using namespace zorvik::c;

extern "C" {

const char* zorvik_last_error(void) {
    return lastError.c_str();
}

zorvik_result zorvik_last_result(void) {
    return lastResult;
}

void zorvik_string_free(char* text) {
    std::free(text);
}

zorvik_result zorvik_text_set(zorvik_text* answer, const char* text) {
    return atBoundary([&] {
        Call call;
        if (!call.given(answer, "answer").text(text, "text")) return call.result();
        answer->content = text;
        return ZORVIK_OK;
    });
}

}  // extern "C"
