#pragma once

#include <string_view>

#include "platform/foundation/Export.h"

namespace zorvik {

// The names of the analytics events. The texts are the linked core services' own: constants without
// a destructor, so they can be read at any time, also while the process starts or ends.
struct ZORVIK_API EventConstants {
    static const std::string_view SDK_INITIALIZED;       // first use of the facade, initialize
    static const std::string_view CHECKOUT_INITIATED;    // a checkout starts
    static const std::string_view UPDATE_ORDER_PAYLOAD;  // the order was updated
    static const std::string_view UPI_APPS_LISTED;       // the UPI apps are known
    static const std::string_view EXCEPTION_THROWN;      // something failed, see its "error"
    static const std::string_view BACK_BUTTON_PRESSED;   // a back action
    static const std::string_view PAYMENT_STATUS;        // an outcome
    static const std::string_view WEBVIEW_LAUNCH;        // the screen's view is there
    static const std::string_view WEBVIEW_LOADED;        // a page finished
    static const std::string_view WEBVIEW_FAILED;        // a load failed
    static const std::string_view URL_INTERCEPTED;       // a page was committed
    static const std::string_view REDIRECT_URL_HIT;      // a "processing" page finished
    static const std::string_view UPI_INTENT_STARTED;    // the page asked for a UPI app
};

}  // namespace zorvik
