#pragma once

#include <memory>

#include "platform/webkit/WKUserContentController.h"

namespace zorvik::platform {

// Applies to a web view as a whole.
struct WKPreferences {
    bool javaScriptCanOpenWindowsAutomatically = false;
};

// Applies to every page a web view loads.
struct WKWebpagePreferences {
    bool allowsContentJavaScript = true;
};

// How a web view is made. The view keeps a copy that shares the user content controller.
struct WKWebViewConfiguration {
    WKPreferences preferences;
    WKWebpagePreferences defaultWebpagePreferences;
    std::shared_ptr<WKUserContentController> userContentController =
        std::make_shared<WKUserContentController>();
};

}  // namespace zorvik::platform
