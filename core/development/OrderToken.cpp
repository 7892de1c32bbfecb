#include "core/development/OrderToken.h"

#include <array>
#include <cstdint>

#include "platform/foundation/Data.h"
#include "platform/foundation/JSONSerialization.h"

namespace zorvik::development {

namespace {

// JSON may end in white space, so spaces bring the text to a length that needs no padding.
std::string segment(std::string json) {
    while (json.size() % 3 != 0)
        json += ' ';
    return platform::base64Encode(json);
}

std::string checksum(const std::string& text) {
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (const char byte : text) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3U;
    }
    std::string digits;
    for (int shift = 60; shift >= 0; shift -= 4) {
        digits += "0123456789abcdef"[(hash >> shift) & 0xfU];
    }
    return digits;
}

}  // namespace

std::string makeOrderToken(const platform::Dictionary& claims) {
    auto json = platform::JSONSerialization::data(claims);
    if (!json) return "";
    const std::string body =
        segment(R"({"alg":"none","typ":"JWT"})") + "." + segment(std::move(json).value());
    return body + "." + checksum(body);
}

}  // namespace zorvik::development
