#pragma once

#include <string_view>

namespace zorvik {

// The component's version record: fixed values that identify the build.
struct SDKVersion {
    static constexpr std::string_view version = "2.0.15-alpha.4";
    static constexpr std::string_view versionName = version;
    static constexpr int versionCode = 20015;
    static constexpr int majorVersion = 2;
    static constexpr int minorVersion = 0;
    static constexpr std::string_view patchVersion = "15-alpha";
    static constexpr std::string_view buildDate = "2025-10-27";
    static constexpr std::string_view buildType = "alpha";
    static constexpr std::string_view minIOSVersion = "13.0";
    static constexpr std::string_view targetIOSVersion = "17.0";
    static constexpr std::string_view sdkName = "Zorvik WebView SDK";
    static constexpr std::string_view sdkDescription =
        "WebView SDK for Zorvik payments, depends on Core API SDK";
    static constexpr std::string_view platform = "iOS";
    // The core services this build expects.
    static constexpr std::string_view requiredCoreAPISDKVersion = "2.0.15-alpha.3";
};

}  // namespace zorvik
