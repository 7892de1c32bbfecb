#include <signal.h>

#include "platform/foundation/JSONSerialization.h"
#include "tests/contract/PortUnderTest.h"
#include "tests/platform/desktop/DesktopPortTest.h"
#include "tests/support/RawServer.h"

namespace zorvik::contract {

namespace {

using tests::RawServer;

void addPages(RawServer& server) {
    for (const std::string path : {"/plain", "/second"})
        server.replyPage(path, path);
    server.reply("/error-500", RawServer::response("500 Internal Server Error", "<p>Sorry"));
    for (const auto& [path, target] : {std::pair{"/redirect-twice", "/redirect-once"},
                                       {"/redirect-once", "/plain"},
                                       {"/redirect-upi", "upi://pay?tr=1"}}) {
        const std::string location = std::string("Location: ") + target + "\r\n";
        server.reply(path, RawServer::response("302 Found", "", location));
    }
    server.reply("/closes-before-headers", "");
    server.reply("/attachment",
                 RawServer::response("200 OK", "<p>saved", "Content-Disposition: attachment\r\n"));
    server.reply("/no-content", "HTTP/1.1 204 No Content\r\nConnection: close\r\n\r\n");
    const std::string half =
        "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Length: 100000\r\n\r\n"
        "<!doctype html><title>half</title><body>" +
        std::string(2000, ' ');
    server.reply("/closes-half-way", half);
    server.reply("/slow-forever", "", true);
    server.reply("/slow-body", half, true);
}

std::string literal(const std::string& text) {
    return JSONSerialization::data(Value(text)).value();
}

class DesktopPort : public PortUnderTest {
  public:
    DesktopPort() { addPages(server_); }

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
    void pageNavigates(WKWebView& view, const std::string& address) override {
        run(view, "location.href = " + literal(address));
    }
    void pageAddsFrame(WKWebView& view, const std::string& address) override {
        run(view, "const f = document.createElement('iframe'); f.src = " + literal(address) +
                      "; document.body.appendChild(f)");
    }
    void killWebProcess(WKWebView&) override {
        for (const pid_t process : tests::webProcesses()) {
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
    const std::unique_ptr<tests::Platform> platform_ =
        tests::Platform::make({.applicationId = "contract", .keepsSparePage = false});
    const std::shared_ptr<UIViewController> presenter_ =
        platform_->presenterFor(platform_->openWindow("contract", {390, 700}));
};

}  // namespace

std::unique_ptr<PortUnderTest> PortUnderTest::make() {
    return std::make_unique<DesktopPort>();
}

}  // namespace zorvik::contract
