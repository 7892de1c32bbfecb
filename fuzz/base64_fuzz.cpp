#include "fuzz/Property.h"
#include "platform/foundation/Data.h"

using namespace zorvik::platform;

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);

    require(base64Decode(base64Encode(input)) == input, "bytes survive the way there and back");

    if (const auto bytes = base64Decode(input)) {
        const std::string text = base64Encode(*bytes);
        require(text.size() == input.size(), "a text has one length");
        require(base64Decode(text) == bytes, "a decoded text encodes to the same bytes");
    }
    return 0;
}
