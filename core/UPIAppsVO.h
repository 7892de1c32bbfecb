#pragma once

#include <optional>
#include <string>

namespace zorvik {

// One UPI payment app installed on the device, as the checkout page is told of it. A value. One
// without a package name is not told of, and of those with the same one only the first.
struct UPIAppsVO {
    std::optional<std::string> upiAppCode = std::nullopt;
    std::optional<std::string> upiAppName = std::nullopt;
    std::optional<std::string> packageName = std::nullopt;
    std::optional<std::string> logoUrl = std::nullopt;  // given to the page as it is
};

}  // namespace zorvik
