#include "fuzz/Target.h"
#include "platform/foundation/Data.h"

namespace zorvik::fuzz {

using namespace zorvik::platform;

namespace {

void check(std::string_view input) {
    require(base64Decode(base64Encode(input)) == input, "bytes survive the way there and back");

    if (const auto bytes = base64Decode(input)) {
        const std::string text = base64Encode(*bytes);
        require(text.size() == input.size(), "a text has one length");
        require(base64Decode(text) == bytes, "a decoded text encodes to the same bytes");
    }
}

const Target target("base64", check);

}  // namespace
}  // namespace zorvik::fuzz
