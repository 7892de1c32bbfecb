#pragma once

#include <optional>
#include <string>

namespace zorvik {

// One UPI payment app installed on the device. A value.
struct UPIAppsVO {
    std::optional<std::string> upiAppCode = std::nullopt;
    std::optional<std::string> upiAppName = std::nullopt;
    std::optional<std::string> packageName = std::nullopt;
    std::optional<std::string> logoUrl = std::nullopt;
};

}  // namespace zorvik
