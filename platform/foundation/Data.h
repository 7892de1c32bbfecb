#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/foundation/Export.h"

namespace zorvik::platform {

// Base64 in the standard alphabet of RFC 4648, with "=" padding. Pure; any thread.
ZORVIK_API std::string base64Encode(std::string_view bytes);
// nullopt for a length that is no multiple of four, a character outside the alphabet (white space,
// "-" and "_" included) or misplaced padding. The empty text decodes to no bytes.
ZORVIK_API std::optional<std::string> base64Decode(std::string_view text);

// Whether the bytes are well-formed UTF-8 (no overlong forms, no surrogates).
ZORVIK_API bool isValidUtf8(std::string_view bytes);

// The bytes as they are when they are UTF-8, else with U+FFFD for each that is not ASCII.
ZORVIK_API std::string readableText(const std::string& bytes);

}  // namespace zorvik::platform
