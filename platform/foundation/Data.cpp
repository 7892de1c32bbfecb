#include "platform/foundation/Data.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace zorvik::platform {

namespace {

constexpr std::string_view alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t notInAlphabet = 0xFF;

constexpr std::array<std::uint8_t, 256> makeDigits() {
    std::array<std::uint8_t, 256> digits{};
    digits.fill(notInAlphabet);
    for (std::size_t index = 0; index < alphabet.size(); ++index) {
        digits[static_cast<unsigned char>(alphabet[index])] = static_cast<std::uint8_t>(index);
    }
    return digits;
}
constexpr std::array<std::uint8_t, 256> digits = makeDigits();

std::uint32_t byteAt(std::string_view bytes, std::size_t index) {
    return static_cast<unsigned char>(bytes[index]);
}

// The length of the well-formed sequence at `index`, 0 when there is none (the table of Unicode's
// well-formed byte sequences: it leaves no room for overlong forms, surrogates or beyond U+10FFFF).
std::size_t sequenceLength(std::string_view bytes, std::size_t index) {
    const std::uint32_t lead = byteAt(bytes, index);
    std::size_t length = 0;
    std::uint32_t lowest = 0x80;
    std::uint32_t highest = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        if (lead == 0xE0) lowest = 0xA0;
        if (lead == 0xED) highest = 0x9F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        if (lead == 0xF0) lowest = 0x90;
        if (lead == 0xF4) highest = 0x8F;
    } else {
        return lead < 0x80 ? 1 : 0;
    }
    if (bytes.size() - index < length) return 0;
    if (byteAt(bytes, index + 1) < lowest || byteAt(bytes, index + 1) > highest) return 0;
    for (std::size_t offset = 2; offset < length; ++offset) {
        if ((byteAt(bytes, index + offset) & 0xC0) != 0x80) return 0;
    }
    return length;
}

}  // namespace

std::string base64Encode(std::string_view bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t index = 0; index < bytes.size(); index += 3) {
        const std::size_t count = bytes.size() - index < 3 ? bytes.size() - index : 3;
        std::uint32_t group = byteAt(bytes, index) << 16;
        if (count > 1) group |= byteAt(bytes, index + 1) << 8;
        if (count > 2) group |= byteAt(bytes, index + 2);
        text.push_back(alphabet[group >> 18]);
        text.push_back(alphabet[group >> 12 & 0x3F]);
        text.push_back(count > 1 ? alphabet[group >> 6 & 0x3F] : '=');
        text.push_back(count > 2 ? alphabet[group & 0x3F] : '=');
    }
    return text;
}

std::optional<std::string> base64Decode(std::string_view text) {
    if (text.size() % 4 != 0) return std::nullopt;
    const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
    text.remove_suffix(padding);
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3 + 2);
    std::uint32_t bits = 0;
    unsigned count = 0;
    for (const char character : text) {
        const std::uint8_t digit = digits[static_cast<unsigned char>(character)];
        if (digit == notInAlphabet) return std::nullopt;
        bits = bits << 6 | digit;
        count += 6;
        if (count < 8) continue;
        count -= 8;
        bytes.push_back(static_cast<char>(bits >> count & 0xFF));
    }
    return bytes;
}

bool isValidUtf8(std::string_view bytes) {
    for (std::size_t index = 0; index < bytes.size();) {
        if (static_cast<unsigned char>(bytes[index]) < 0x80) {
            ++index;
            continue;
        }
        const std::size_t length = sequenceLength(bytes, index);
        if (length == 0) return false;
        index += length;
    }
    return true;
}

std::string readableText(const std::string& bytes) {
    if (isValidUtf8(bytes)) return bytes;
    std::string text;
    for (const char byte : bytes) {
        if (static_cast<unsigned char>(byte) < 0x80) {
            text += byte;
        } else {
            text += "\uFFFD";
        }
    }
    return text;
}

}  // namespace zorvik::platform
