#include <signal.h>

#include "platform/foundation/JSONSerialization.h"
#include "platform/gtk/GtkPlatform.h"
#include "tests/contract/PortUnderTest.h"
#include "tests/desktop/ProcessTree.h"
#include "tests/support/RawServer.h"

namespace zorvik::contract {

namespace {

using tests::RawServer;

void addPages(RawServer& server) {
    for (const std::string path : {"/plain", "/second", "/third"})
        server.replyPage(path, path);
    server.reply("/error-500", {RawServer::response("500 Internal Server Error", "<p>Sorry")});
    server.replyRedirect("/redirect-twice", "/redirect-once");
    server.replyRedirect("/redirect-once", "/plain");
    server.replyRedirect("/redirect-upi", "upi://pay?tr=1");
    server.reply("/closes-before-headers", {});
    server.reply("/no-content", {"HTTP/1.1 204 No Content\r\nConnection: close\r\n\r\n"});
    const std::string half =
        "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Length: 100000\r\n\r\n"
        "<!doctype html><title>half</title><body>" +
        std::string(2000, ' ');
    server.reply("/closes-half-way", {half});
    server.reply("/slow-forever", {"", RawServer::Afterwards::holdOpen});
    server.reply("/slow-body", {half, RawServer::Afterwards::holdOpen});
}

std::string literal(const std::string& text) {
    return JSONSerialization::data(Value(text)).value();
}

class GtkPort : public PortUnderTest {
  public:
    GtkPort() {
        addPages(server_);
        window_ = platform_->openWindow("contract", {390, 700});
        presenter_ = platform_->presenterFor(window_);
    }

    URL url(const std::string& path) override {
        const bool isRefused = path == "/refused";
        return *URL::parse(isRefused ? server_.refusedAddress(path) : server_.address(path));
    }
    std::shared_ptr<UIViewController> presenter() override { return presenter_; }
    bool spinUntil(const std::function<bool()>& condition, double seconds) override {
        return platform_->runUntil(condition, seconds);
    }

    void pagePosts(WKWebView& view, const std::string& name, const ScriptValue& body) override {
        const std::string text =
            body.type == ScriptValue::Type::string ? literal(body.text) : body.text;
        run(view, "const h = window.webkit.messageHandlers[" + literal(name) +
                      "]; if (h) h.postMessage(" + text + ");");
    }
    void pageShowsPanel(WKWebView& view, const ScriptPanel& panel) override {
        std::string call;
        switch (panel.kind) {
            case ScriptPanel::Kind::alert:
                call = "(alert(" + literal(panel.message) + "), null)";
                break;
            case ScriptPanel::Kind::confirm:
                call = "confirm(" + literal(panel.message) + ")";
                break;
            case ScriptPanel::Kind::prompt:
                call = "prompt(" + literal(panel.message) +
                       (panel.defaultText ? ", " + literal(*panel.defaultText) : "") + ")";
        }
        run(view, "window.webkit.messageHandlers.answer.postMessage(" + call + ")");
    }
    void pageNavigates(WKWebView& view, const std::string& address) override {
        run(view, "location.href = " + literal(address));
    }
    void pageChangesFragment(WKWebView& view, const std::string& fragment) override {
        run(view, "location.hash = " + literal(fragment));
    }
    void pageAddsFrame(WKWebView& view, const std::string& address) override {
        run(view, "const f = document.createElement('iframe'); f.src = " + literal(address) +
                      "; document.body.appendChild(f)");
    }
    void killWebProcess(WKWebView&) override {
        for (const pid_t process : tests::descendantsNamed("WebKitWebProcess")) {
            kill(process, SIGKILL);
        }
    }

  private:
    // In a task of the page's own, so that no evaluation waits for what it does.
    static void run(WKWebView& view, const std::string& script) {
        view.evaluateJavaScript("setTimeout(() => { " + script + " }, 0);0", {});
    }

    RawServer server_;
    // Without a page ahead, so that every web process there is belongs to the test's own view.
    const std::unique_ptr<gtk::GtkPlatform> platform_ =
        gtk::GtkPlatform::make({.applicationId = "contract", .keepsSparePage = false});
    GtkWindow* window_ = nullptr;
    std::shared_ptr<UIViewController> presenter_;
};

}  // namespace

std::unique_ptr<PortUnderTest> PortUnderTest::make() {
    return std::make_unique<GtkPort>();
}

}  // namespace zorvik::contract
