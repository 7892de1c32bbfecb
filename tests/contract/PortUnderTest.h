#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/foundation/URL.h"
#include "platform/services/WebEngine.h"
#include "platform/uikit/UIViewController.h"
#include "platform/webkit/WKWebView.h"

// The contract every port keeps, as tests: the *Contract.cpp of this folder, compiled once for each
// port with one source that implements PortUnderTest for it (HeadlessPort.cpp, GtkPort.cpp). Texts
// of errors are a port's own; everything else a test sees must be the same.
//
// Pages, by path; a real port serves them from a local socket, the headless one scripts them:
//
//   /plain  /second              ordinary pages, status 200
//   /error-500                   status 500 with an HTML body
//   /redirect-twice              302 to /redirect-once, which is 302 to /plain
//   /redirect-upi                302 to upi://pay?tr=1
//   /refused                     nobody listens at this address
//   /closes-before-headers       the connection closes before the status line
//   /no-content                  status 204
//   /attachment                  an HTML document sent to be saved
//   /closes-half-way             status 200 and the start of a body, then the connection closes
//   /slow-forever                the connection is accepted and nothing is ever sent
//   /slow-body                   headers and the start of a body at once, then nothing, ever
//
// The headless port answers the scripts of PageContract.cpp by a table, the real engine runs them.
namespace zorvik::contract {

using namespace zorvik::platform;

// A port, installed from construction to destruction on the calling thread. make() is called once
// per test, after the one before is gone.
class PortUnderTest {
  public:
    static std::unique_ptr<PortUnderTest> make();
    virtual ~PortUnderTest() = default;

    // The address of one of the pages above.
    virtual URL url(const std::string& path) = 0;
    // What a test presents its screens from: a controller whose window is on the screen.
    virtual std::shared_ptr<UIViewController> presenter() = 0;
    // Runs the main loop until the condition holds (asked before the first turn and after each);
    // false when `seconds` of the port's own time passed first.
    virtual bool spinUntil(const std::function<bool()>& condition, double seconds) = 0;

    // What a page's script can do. Each takes effect in later turns, never inside the call, in
    // the page the view has committed.

    // window.webkit.messageHandlers.<name>.postMessage(<body>), nothing when the name is unknown.
    virtual void pagePosts(WKWebView& view, const std::string& name, const ScriptValue& body) = 0;
    // location.href = <address>, of another scheme too.
    virtual void pageNavigates(WKWebView& view, const std::string& address) = 0;
    // A sub-frame with this address is added to the page.
    virtual void pageAddsFrame(WKWebView& view, const std::string& address) = 0;
    // The view's web process dies, as by a crash.
    virtual void killWebProcess(WKWebView& view) = 0;
};

}  // namespace zorvik::contract
