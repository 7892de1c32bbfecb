#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zorvik::demo {

// How the checkout page hands a settled payment of this app back to the merchant's application.
enum class WayBack {
    returnAddress,   // by the app's return address
    processingPage,  // by the processing page, which ends in the response redirect
};

// The UPI apps of the demonstration. All names are invented.
struct DemoUPIApp {
    std::string code;
    std::string name;
    std::string packageName;
    std::string scheme;        // of its deep links
    std::string returnScheme;  // by which it hands control back
    std::string icon;          // file name in the checkout page's icons folder
    std::string accent;        // its colour, #rrggbb
    WayBack wayBack = WayBack::returnAddress;
};

const std::vector<DemoUPIApp>& demoUPIApps();
// nullptr for an unknown app.
const DemoUPIApp* demoUPIAppByCode(std::string_view code);
const DemoUPIApp* demoUPIAppByPackage(std::string_view packageName);

}  // namespace zorvik::demo
