#pragma once

#include <string>

#include "examples/backend/Backend.h"
#include "examples/backend/HttpServer.h"
#include "examples/common/OrderRecordJSON.h"
#include "platform/foundation/JSONSerialization.h"
#include "platform/webkit/WKWebView.h"
#include "tests/contract/ContractTest.h"
#include "tests/platform/desktop/DesktopPortTest.h"

// GTK's own declarations: only its port includes its headers.
extern "C" {
void* gtk_settings_get_default();
void g_object_set(void* object, const char* property, ...);
}

namespace zorvik::tests {

// The demonstration's checkout page in the real engine, with its back end in this process. What the
// page sends to the application is the recorder's: no UPI app opens, no response is loaded.
class CheckoutPageTest : public DesktopPortTest {
  protected:
    CheckoutPageTest() {
        const std::string origin = "http://127.0.0.1:" + std::to_string(server->port());
        backend.setOrigins(origin, "http://localhost:" + std::to_string(server->port()));
        WKWebViewConfiguration configuration;
        configuration.userContentController->add(recorder, "openUpiIntent");
        page = makeOnMainThread<WKWebView>(Rect{0, 0, 390, 844}, configuration);
        page->setNavigationDelegate(recorder);
        recorder->onEvent = [this](const std::string& event) {
            if (event.starts_with("ask /payment/response?")) recorder->cancelled = event.substr(4);
        };
        screen->view()->addSubview(page);
        show(screen);
    }
    ~CheckoutPageTest() override {
        page->removeFromSuperview();
        page.reset();
        dismiss(screen);
    }

    // What the customer set for the whole desktop.
    static void setDesktop(const char* setting, int value) {
        g_object_set(gtk_settings_get_default(), setting, value, nullptr);
    }

    // A new order's page, as the application opens it: with the UPI apps.
    void open(const std::string& more = "") {
        token =
            text(post("/api/orders",
                      {{"amount", "1499.00"}, {"currency", "INR"}, {"line_items", lineItems()}}),
                 "order_token");
        load("/checkout?token=" + token + more);
        evaluate("window.zorvik_web.UPIIntentAvailable('" + apps() + "')");
        waitFor("!document.getElementById('methods').hidden");
    }
    void load(const std::string& path) {
        recorder->events.clear();
        page->load({*URL::parse("http://127.0.0.1:" + std::to_string(server->port()) + path)});
        ASSERT_TRUE(waitUntil([&] {
            return !recorder->events.empty() && recorder->events.back().starts_with("finish ");
        }));
        recorder->events.clear();
    }

    Dictionary post(const std::string& path, const Dictionary& body) {
        const auto response =
            backend.handle({"POST", path, {}, JSONSerialization::data(body).value()});
        return *JSONSerialization::jsonObject(response.body, {}).value().dictionary();
    }
    static std::string text(const Dictionary& fields, const std::string& name) {
        return demo::textOf(fields, name);
    }

    // The value's text; what the script threw otherwise.
    std::string evaluate(const std::string& script) {
        std::optional<std::string> answer;
        page->evaluateJavaScript(script, [&](const Result<ScriptValue>& value) {
            EXPECT_TRUE(value) << script << " threw " << value.error().localizedDescription;
            answer = value ? value.value().text : "";
        });
        EXPECT_TRUE(waitUntil([&] { return answer.has_value(); })) << script;
        return answer.value_or("");
    }
    void waitFor(const std::string& condition) {
        ASSERT_TRUE(askUntil([&] { return evaluate("!!(" + condition + ")") == "true"; }))
            << condition;
    }
    void resize(double width, double height, int scale = 1) {
        page->setFrame({0, 0, width, height});
        page->setHidden(false);  // has the screen laid out anew
        waitFor("innerWidth === " + std::to_string(static_cast<int>(width) / scale));
    }

    demo::Backend backend{ZORVIK_SOURCE_FOLDER "/examples/checkout_page", 0};
    const std::unique_ptr<demo::HttpServer> server = demo::HttpServer::listen(
        0, [this](const demo::HttpRequest& request) {
            demo::HttpResponse response = backend.handle(request);
            if (request.path == "/api/checkout") response.delayMilliseconds = orderLatency;
            return response;
        });
    unsigned orderLatency = 0;  // milliseconds
    const std::shared_ptr<contract::Recorder> recorder = std::make_shared<contract::Recorder>();
    std::shared_ptr<WKWebView> page;
    std::string token;

  private:
    static Array lineItems() {
        return {Value(Dictionary{{"name", "Tea kettle"}, {"amount", "1499.00"}})};
    }
    static std::string apps() {
        return R"({"UPIApps":[{"appiconbase64":null,"package_name":"demo.nilgiri.pay",)"
               R"("upi_app_code":"NILGIRI","upi_app_name":"Nilgiri Pay"},)"
               R"({"appiconbase64":null,"package_name":"demo.tamarind.upi",)"
               R"("upi_app_code":"TAMARIND","upi_app_name":"Tamarind UPI"}]})";
    }
};

}  // namespace zorvik::tests
