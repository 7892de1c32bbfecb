#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace zorvik {

// One text of several parts.
template <class... Parts>
std::string joined(const Parts&... parts) {
    std::string text;
    text.reserve((std::string_view(parts).size() + ...));
    (text.append(parts), ...);
    return text;
}

// The text with its ASCII letters in lower case.
inline std::string lowercased(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char character) {
        return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                    : character;
    });
    return text;
}

}  // namespace zorvik
