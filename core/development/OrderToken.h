#pragma once

#include <string>

#include "platform/foundation/Export.h"
#include "platform/foundation/Value.h"

namespace zorvik::development {

// A three-part token (header.claims.signature) that carries these claims. The claims part is
// standard base64 that needs no padding, so every reader of tokens understands it. The signature
// is a checksum and proves nothing. "" when JSON cannot write the claims.
ZORVIK_API std::string makeOrderToken(const platform::Dictionary& claims);

}  // namespace zorvik::development
