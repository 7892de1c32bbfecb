#pragma once

#include <string_view>

#include "platform/foundation/Export.h"

namespace zorvik {

// The names of the analytics events. The texts are the linked core services' own: constants without
// a destructor, so they can be read at any time, also while the process starts or ends.
struct ZORVIK_API EventConstants {
    static const std::string_view SDK_INITIALIZED;
    static const std::string_view CHECKOUT_INITIATED;
    static const std::string_view UPDATE_ORDER_PAYLOAD;
    static const std::string_view UPI_APPS_LISTED;
    static const std::string_view EXCEPTION_THROWN;
    static const std::string_view BACK_BUTTON_PRESSED;
    static const std::string_view PAYMENT_STATUS;
    static const std::string_view WEBVIEW_LAUNCH;
    static const std::string_view WEBVIEW_LOADED;
    static const std::string_view WEBVIEW_FAILED;
    static const std::string_view URL_INTERCEPTED;
    static const std::string_view REDIRECT_URL_HIT;
    static const std::string_view UPI_INTENT_STARTED;
};

}  // namespace zorvik
