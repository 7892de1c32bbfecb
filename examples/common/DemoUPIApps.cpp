#include "examples/common/DemoUPIApps.h"

#include <algorithm>

namespace zorvik::demo {

namespace {

const DemoUPIApp* find(std::string DemoUPIApp::*member, std::string_view value) {
    const auto& apps = demoUPIApps();
    const auto found = std::find_if(apps.begin(), apps.end(),
                                    [&](const DemoUPIApp& app) { return app.*member == value; });
    return found == apps.end() ? nullptr : &*found;
}

}  // namespace

const std::vector<DemoUPIApp>& demoUPIApps() {
    // scripts/demo installs NILGIRI and TAMARIND, and BRASSBELL so that its launch fails;
    // LOTUSPOND stays without a handler.
    static const std::vector<DemoUPIApp> apps{
        {"NILGIRI", "Nilgiri Pay", "demo.nilgiri.pay", "zorvik-demo-nilgiri",
         "zorvik-demo-nilgiri-return", "nilgiri.svg", "#2f5bd0", WayBack::returnAddress},
        {"TAMARIND", "Tamarind UPI", "demo.tamarind.upi", "zorvik-demo-tamarind",
         "zorvik-demo-tamarind-return", "tamarind.svg", "#9a3f12", WayBack::processingPage},
        {"LOTUSPOND", "Lotuspond Wallet", "demo.lotuspond.wallet", "zorvik-demo-lotuspond",
         "zorvik-demo-lotuspond-return", "lotuspond.svg", "#a02c6b", WayBack::returnAddress},
        {"BRASSBELL", "Brassbell Pay", "demo.brassbell.pay", "zorvik-demo-brassbell",
         "zorvik-demo-brassbell-return", "brassbell.svg", "#806000", WayBack::returnAddress},
    };
    return apps;
}

const DemoUPIApp* demoUPIAppByCode(std::string_view code) {
    return find(&DemoUPIApp::code, code);
}

const DemoUPIApp* demoUPIAppByPackage(std::string_view packageName) {
    return find(&DemoUPIApp::packageName, packageName);
}

}  // namespace zorvik::demo
