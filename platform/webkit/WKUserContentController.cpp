#include "platform/webkit/WKUserContentController.h"

#include <algorithm>

#include "platform/runtime/MainThread.h"

namespace zorvik::platform {

void WKUserContentController::add(const std::weak_ptr<WKScriptMessageHandler>& handler,
                                  const std::string& name) {
    assertMainThread();
    handlers_[name] = handler;
    for (WebPage* page : pages_)
        page->addMessageHandler(name);
}

void WKUserContentController::removeScriptMessageHandler(const std::string& name) {
    assertMainThread();
    if (handlers_.erase(name) == 0) return;
    for (WebPage* page : pages_)
        page->removeMessageHandler(name);
}

void WKUserContentController::removeAllUserScripts() {
    assertMainThread();
    for (WebPage* page : pages_)
        page->removeAllUserScripts();
}

void WKUserContentController::removeAllContentRuleLists() {
    assertMainThread();
    for (WebPage* page : pages_)
        page->removeAllContentRules();
}

void WKUserContentController::attach(WebPage& page) {
    pages_.push_back(&page);
    for (const auto& [name, handler] : handlers_)
        page.addMessageHandler(name);
}

void WKUserContentController::detach(const WebPage& page) {
    std::erase(pages_, &page);
}

void WKUserContentController::deliver(const std::string& name, const ScriptValue& body) {
    const auto found = handlers_.find(name);
    if (found == handlers_.end()) return;
    if (const auto handler = found->second.lock()) {
        handler->userContentControllerDidReceive(*this, {name, body});
    }
}

}  // namespace zorvik::platform
