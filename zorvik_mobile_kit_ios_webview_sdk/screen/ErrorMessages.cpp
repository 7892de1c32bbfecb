#include "zorvik_mobile_kit_ios_webview_sdk/screen/ErrorMessages.h"

#include <array>

#include "zorvik_mobile_kit_ios_webview_sdk/common/Text.h"

namespace zorvik {

std::string_view errorText(const std::string& message) {
    struct Row {
        std::string_view keyword;
        std::string_view text;
    };
    static constexpr std::array<Row, 3> table{{
        {"network",
         "Network connection issue. Please check your internet connection and try again."},
        {"invalid", "Invalid checkout URL. Please try again or contact support."},
        {"timeout", "Request timed out. Please try again."},
    }};
    const std::string lowered = lowercased(message);
    for (const auto& row : table) {
        if (lowered.find(row.keyword) != std::string::npos) return row.text;
    }
    return "Something went wrong. Please try again.";
}

}  // namespace zorvik
