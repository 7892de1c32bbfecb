#pragma once

#include <cstdio>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "c/zorvik_checkout.h"
#include "platform/foundation/Value.h"
#include "platform/uikit/UIViewController.h"

// What a callback is asked for.
struct zorvik_text {
    std::optional<std::string> content;
};

struct zorvik_presenter {
    std::shared_ptr<zorvik::platform::UIViewController> controller;
};

namespace zorvik::c {

// Remembers for zorvik_last_error why this thread's call is refused.
zorvik_result refuse(zorvik_result result, std::string_view reason) noexcept;

// Runs the body of a public function; what it throws is its refusal.
template <class Body, class Result>
Result atBoundary(Result whenItThrows, const Body& body) noexcept {
    try {
        return body();
    } catch (const std::exception& exception) {
        refuse(ZORVIK_FAILED, exception.what());
    } catch (...) {
        refuse(ZORVIK_FAILED, "an unknown exception");
    }
    return whenItThrows;
}
template <class Body>
zorvik_result atBoundary(const Body& body) noexcept {
    return atBoundary(ZORVIK_FAILED, body);
}

// Looks at what a call was given, one after another; the first that will not do is its refusal.
class Call {
  public:
    explicit operator bool() const { return result_ == ZORVIK_OK; }
    zorvik_result result() const { return result_; }

    Call& onMainThread();
    Call& outsideCallbacks();
    Call& withoutPlatform();
    Call& given(const void* argument, std::string_view name);
    Call& text(const char* argument, std::string_view name);
    Call& optionalText(const char* argument, std::string_view name);
    Call& require(bool holds, zorvik_result otherwise, std::string_view reason);

    // A JSON text of this kind, or the refusal.
    platform::Value json(const char* argument, std::string_view name);
    platform::Dictionary object(const char* argument, std::string_view name);

  private:
    zorvik_result result_ = ZORVIK_OK;
};

std::optional<std::string> optionalString(const char* text);
// A copy for the host to free.
char* hostString(std::string_view text);
// The value as JSON. What JSON cannot hold is replaced: bytes that are not UTF-8, infinite numbers,
// what nests too deep.
std::string jsonText(const platform::Value& value);
// The same for a text of its own, which a NUL in it would end.
std::string plainText(const std::string& text);

// In being while this thread runs a callback of the host's.
class InsideCallback {
  public:
    InsideCallback();
    InsideCallback(const InsideCallback&) = delete;
    InsideCallback& operator=(const InsideCallback&) = delete;
    ~InsideCallback();
};

// Calls a function of the host's; nothing it throws gets past this.
template <class Function, class... Arguments>
auto callHost(Function function, Arguments... arguments) noexcept {
    const InsideCallback inside;
    using Answer = decltype(function(arguments...));
    try {
        return function(arguments...);
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "zorvik: a callback threw: %s\n", exception.what());
    } catch (...) {
        std::fprintf(stderr, "zorvik: a callback threw\n");
    }
    return Answer();
}

// A callback with its data, which goes with the last copy.
template <class Function>
class Callback {
  public:
    Callback(Function function, void* userData, zorvik_destroy destroy)
        : parts_(std::make_shared<const Parts>(function, userData, destroy)) {}

    explicit operator bool() const { return parts_->function != nullptr; }

    template <class... Arguments>
    auto operator()(Arguments... arguments) const {
        return callHost(parts_->function, parts_->userData, arguments...);
    }

  private:
    struct Parts {
        Parts(Function hostFunction, void* data, zorvik_destroy hostDestroy)
            : function(hostFunction), userData(data), destroy(hostDestroy) {}
        Parts(const Parts&) = delete;
        Parts& operator=(const Parts&) = delete;
        ~Parts() {
            if (destroy != nullptr) callHost(destroy, userData);
        }

        const Function function;
        void* const userData;
        const zorvik_destroy destroy;
    };

    std::shared_ptr<const Parts> parts_;
};

}  // namespace zorvik::c
