#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "platform/foundation/Error.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/Value.h"

namespace zorvik::platform {

// Strict JSON (RFC 8259) in both directions. Numbers are exact: Value::parseNumber says which kind
// of value each becomes, and none is a reason to refuse a text. Pure; any thread; never throws.
class ZORVIK_API JSONSerialization {
  public:
    enum class ReadingOptions {
        none,              // the top level must be an object or an array
        fragmentsAllowed,  // any JSON value at the top level
    };

    // Values nested deeper than this are refused.
    static constexpr std::size_t maximumDepth = 512;

    // An Error for anything but one JSON text: text before or after it, bytes that are not UTF-8,
    // nesting beyond maximumDepth. Of equal keys in one object the last wins.
    static Result<Value> jsonObject(std::string_view text, ReadingOptions options);

    // The value of one key of the text's top-level object, nullopt when it has none; the text is
    // accepted exactly when jsonObject accepts it and its top level is an object, else an Error.
    // For readers that need one member often: nothing else is built.
    static Result<std::optional<Value>> member(std::string_view text, std::string_view key);

    // Compact text, no spaces, no line breaks. An Error for strings that are not UTF-8 and for
    // numbers that JSON cannot write (not finite), and for nesting beyond maximumDepth.
    static Result<std::string> data(const Value& value);
};

}  // namespace zorvik::platform
