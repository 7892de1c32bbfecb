#pragma once

#include <optional>
#include <string>

namespace zorvik {

// One UPI payment app installed on the device, as the checkout page is told of it. A value. One
// without a package name is not told of, and of those with the same one only the first.
struct UPIAppsVO {
    std::optional<std::string> upiAppCode;
    std::optional<std::string> upiAppName;
    std::optional<std::string> packageName;
    std::optional<std::string> logoUrl;  // given to the page as it is
};

}  // namespace zorvik
