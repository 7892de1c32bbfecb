#pragma once

#include <string>

#include "platform/foundation/Export.h"
#include "platform/services/WebEngine.h"

namespace zorvik::platform {

// A message a page posted to a registered handler name. A value.
struct WKScriptMessage {
    std::string name;
    ScriptValue body;
};

class WKUserContentController;

// Receives a page's messages, on the main thread. Held weakly.
class ZORVIK_API WKScriptMessageHandler {
  public:
    virtual ~WKScriptMessageHandler() = default;
    virtual void userContentControllerDidReceive(WKUserContentController& controller,
                                                 const WKScriptMessage& message) = 0;
};

}  // namespace zorvik::platform
