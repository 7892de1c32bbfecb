#include "platform/desktop/JsonString.h"

#include <charconv>

namespace zorvik::platform::desktop {
namespace {

void appendUtf8(std::string& text, unsigned codeUnit) {
    if (codeUnit >= 0xD800 && codeUnit <= 0xDFFF) codeUnit = 0xFFFD;
    if (codeUnit < 0x80) {
        text += static_cast<char>(codeUnit);
        return;
    }
    if (codeUnit < 0x800) {
        text += static_cast<char>(0xC0 | (codeUnit >> 6));
    } else {
        text += static_cast<char>(0xE0 | (codeUnit >> 12));
        text += static_cast<char>(0x80 | ((codeUnit >> 6) & 0x3F));
    }
    text += static_cast<char>(0x80 | (codeUnit & 0x3F));
}

}  // namespace

std::string textOfJsonString(std::string_view json) {
    std::string text;
    text.reserve(json.size());
    for (std::size_t i = 1; i + 1 < json.size(); ++i) {
        if (json[i] != '\\') {
            text += json[i];
            continue;
        }
        switch (const char escaped = json[++i]) {
            case 'b':
                text += '\b';
                break;
            case 'f':
                text += '\f';
                break;
            case 'n':
                text += '\n';
                break;
            case 'r':
                text += '\r';
                break;
            case 't':
                text += '\t';
                break;
            case 'u': {
                unsigned codeUnit = 0xFFFD;
                const std::string_view digits = json.substr(i + 1, 4);
                std::from_chars(digits.data(), digits.data() + digits.size(), codeUnit, 16);
                appendUtf8(text, codeUnit);
                i += 4;
                break;
            }
            default:
                text += escaped;
        }
    }
    return text;
}

}  // namespace zorvik::platform::desktop
