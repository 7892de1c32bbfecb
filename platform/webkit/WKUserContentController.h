#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/foundation/Export.h"
#include "platform/webkit/WKScriptMessage.h"

namespace zorvik::platform {

// What native code adds to a web view's pages. Owned by the view's configuration; main thread
// only. Names added before the web view is made count from its first page on.
class ZORVIK_API WKUserContentController {
  public:
    // The handler is held weakly and receives what pages post under the name. Adding a name that
    // is taken replaces its handler.
    void add(const std::weak_ptr<WKScriptMessageHandler>& handler, const std::string& name);
    void removeScriptMessageHandler(const std::string& name);
    void removeAllUserScripts();
    void removeAllContentRuleLists();

  private:
    friend class WKWebView;

    void attach(WebPage& page);
    void detach(const WebPage& page);
    void deliver(const std::string& name, const ScriptValue& body);

    std::map<std::string, std::weak_ptr<WKScriptMessageHandler>> handlers_;
    std::vector<WebPage*> pages_;  // of the views made with it
};

}  // namespace zorvik::platform
