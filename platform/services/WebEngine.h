#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/foundation/Error.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/URL.h"
#include "platform/foundation/URLRequest.h"

namespace zorvik::platform {

// A value as a page's script holds it: its type, and its text. A string is its own text (UTF-8,
// NUL characters included), every other type is its JSON text. One that has none, or unfolds to one
// of many megabytes, has the text "null".
struct ScriptValue {
    enum class Type { null, boolean, number, string, array, object };

    Type type = Type::null;
    std::string text = "null";

    friend bool operator==(const ScriptValue&, const ScriptValue&) = default;
};

enum class NavigationDecision { cancel, allow };

// alert, confirm or prompt as the page asked for it.
struct ScriptPanel {
    enum class Kind { alert, confirm, prompt };

    Kind kind = Kind::alert;
    std::string message;
    std::optional<std::string> defaultText;  // of a prompt
};

// How a panel was left; alerts have no answer.
struct ScriptPanelAnswer {
    bool confirmed = false;           // of a confirm panel
    std::optional<std::string> text;  // of a prompt; nullopt means cancelled
};

// What a page reports, on the main thread. Implemented by the toolkit's web view.
//
// Every navigation to another document (the host's, the page's, redirects, sub-frames) is asked for
// first. One within the document, to about:blank, or that the engine refuses by itself may be asked
// for or not, as the engine does. One that is cancelled reports nothing more. A main-frame load
// reports started, then committed and finished, or exactly one failure: before its commit or after
// it. A web process that dies, or no longer answers and is ended, is one failure before a commit,
// whatever it was doing, an idle page too: nothing is left of what was committed. No load follows
// by itself. What a page that is shown starts, and what turns out to be no page (a document to
// save, an empty answer), is cancelled like that by the engine; asked for by load(), it fails.
// Nothing is reported after the page's destruction.
class ZORVIK_API WebPageDelegate {
  public:
    virtual ~WebPageDelegate() = default;

    // The answer may come later; dropping it unanswered cancels. An engine that cannot keep a
    // posted form waiting cancels it when the answer is not given inside this call. No URL: the
    // engine named none.
    virtual void pageAsksToNavigate(const std::optional<URL>& url,
                                    std::function<void(NavigationDecision)> decide) = 0;
    virtual void pageStarted() = 0;
    virtual void pageCommitted() = 0;
    virtual void pageFinished() = 0;
    virtual void pageFailedBeforeCommit(const Error& error) = 0;
    virtual void pageFailedAfterCommit(const Error& error) = 0;
    // A message posted to a registered handler name.
    virtual void pagePosted(const std::string& name, const ScriptValue& body) = 0;
    // The page waits for the answer; dropping it unanswered cancels the panel.
    virtual void pageAsksWithPanel(const ScriptPanel& panel,
                                   std::function<void(ScriptPanelAnswer)> answer) = 0;
};

// What a page's own script may do.
struct WebPageConfiguration {
    bool allowsContentJavaScript = true;
    bool javaScriptCanOpenWindowsAutomatically = false;
};

// One page of a web engine. Owned by the toolkit's web view; main thread only. Destroying it is
// allowed at any time, inside its own reports too.
class ZORVIK_API WebPage {
  public:
    using Completion = std::function<void(const Result<ScriptValue>&)>;

    virtual ~WebPage() = default;

    // Starts a load; one that is running fails as cancelled first. A load in which nothing moves
    // for the request's time-out fails. Never reports inside the call.
    virtual void load(const URLRequest& request) = 0;
    // A load that started fails as cancelled, later; one still asked for is dropped in silence.
    virtual void stopLoading() = 0;
    // Completes exactly once on the main thread, never inside the call: with the script's value,
    // or with an Error when it throws, its value has no JSON form, the web process died or the
    // page was destroyed.
    virtual void evaluate(const std::string& script, Completion completion) = 0;
    // nullopt before any load and after the web process died.
    virtual std::optional<URL> currentUrl() const = 0;

    // The page posts with window.webkit.messageHandlers.NAME.postMessage(body). Removing a name
    // drops messages under way. Adding one twice or removing an unknown one does nothing.
    virtual void addMessageHandler(const std::string& name) = 0;
    virtual void removeMessageHandler(const std::string& name) = 0;
    virtual void removeAllUserScripts() = 0;
    virtual void removeAllContentRules() = 0;

    // The engine's own page, for the port's stage to show: another one only where this one stands
    // before it and forwards.
    virtual WebPage& enginePage() { return *this; }
};

// Makes pages. Owned by the port; main thread only.
class ZORVIK_API WebEngine {
  public:
    virtual ~WebEngine() = default;

    // The delegate is held weakly.
    virtual std::unique_ptr<WebPage> makePage(const WebPageConfiguration& configuration,
                                              std::weak_ptr<WebPageDelegate> delegate) = 0;
};

}  // namespace zorvik::platform
