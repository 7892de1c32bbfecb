#pragma once

#include <optional>
#include <string>

namespace zorvik {

// One UPI payment app installed on the device. A value.
struct UPIAppsVO {
    std::optional<std::string> upiAppCode;
    std::optional<std::string> upiAppName;
    std::optional<std::string> packageName;
    std::optional<std::string> logoUrl;
};

}  // namespace zorvik
