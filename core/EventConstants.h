#pragma once

#include <string>

namespace zorvik {

// The names of the analytics events. The texts are the linked core services' own.
struct EventConstants {
    static const std::string SDK_INITIALIZED;
    static const std::string CHECKOUT_INITIATED;
    static const std::string UPDATE_ORDER_PAYLOAD;
    static const std::string UPI_APPS_LISTED;
    static const std::string EXCEPTION_THROWN;
    static const std::string BACK_BUTTON_PRESSED;
    static const std::string PAYMENT_STATUS;
    static const std::string WEBVIEW_LAUNCH;
    static const std::string WEBVIEW_LOADED;
    static const std::string WEBVIEW_FAILED;
    static const std::string URL_INTERCEPTED;
    static const std::string REDIRECT_URL_HIT;
    static const std::string UPI_INTENT_STARTED;
};

}  // namespace zorvik
