#include <jsc/jsc.h>

#include <optional>
#include <string>
#include <vector>

#include "fuzz/Target.h"
#include "platform/foundation/Data.h"
#include "platform/foundation/JSONSerialization.h"
#include "testkit/CheckoutTestKit.h"

namespace zorvik::fuzz {

using platform::Dictionary;
using platform::JSONSerialization;
using testkit::CheckoutTestKit;

namespace {

// A page's script engine with what a checkout page offers. Every text that
// reaches the page's functions is kept; nothing else may happen.
class PageEngine {
  public:
    static PageEngine& instance() {
        static PageEngine engine;
        return engine;
    }

    // The texts the page was handed; nullopt when the script did not run to its end.
    std::optional<std::vector<std::string>> run(const std::string& script) {
        evaluate("received = []; intruder = undefined;");
        if (!evaluate(script)) return std::nullopt;
        require(evaluate("'' + intruder") == "undefined", "a text never becomes a script");
        std::vector<std::string> received;
        const int count = std::stoi(evaluate("'' + received.length").value());
        for (int index = 0; index < count; ++index)
            received.push_back(evaluate("received[" + std::to_string(index) + "]").value());
        return received;
    }

  private:
    PageEngine() : context_(jsc_context_new()) {
        evaluate(R"script(
            var received = [], intruder;
            var window = { zorvik_web: { UPIIntentAvailable: text => received.push(text) },
                           postMessage: text => received.push(text) };
            var console = { log: () => {}, error: (what, why) => { throw why; } };
            var setTimeout = (task) => task();)script");
    }
    ~PageEngine() { g_object_unref(context_); }

    // The result as a text; nullopt when the script threw.
    std::optional<std::string> evaluate(const std::string& script) {
        JSCValue* value =
            jsc_context_evaluate(context_, script.data(), static_cast<gssize>(script.size()));
        GBytes* bytes = jsc_value_to_string_as_bytes(value);
        gsize size = 0;
        const void* start = g_bytes_get_data(bytes, &size);
        std::string text(static_cast<const char*>(start), size);
        g_bytes_unref(bytes);
        g_object_unref(value);
        const bool isThrown = jsc_context_get_exception(context_) != nullptr;
        jsc_context_clear_exception(context_);
        if (isThrown) return std::nullopt;
        return text;
    }

    JSCContext* context_;
};

std::vector<std::string> scripts(const CheckoutTestKit& kit, std::string_view start) {
    std::vector<std::string> found;
    for (const auto& script : kit.page().evaluatedScripts())
        if (script.starts_with(start)) found.push_back(script);
    return found;
}

Dictionary objectOf(const std::string& json) {
    const auto parsed =
        JSONSerialization::jsonObject(json, JSONSerialization::ReadingOptions::none);
    require(parsed && parsed.value().dictionary() != nullptr, "the page gets the JSON text itself");
    return *parsed.value().dictionary();
}

void checkApps(const CheckoutTestKit& kit, const std::string& name) {
    const auto injections = scripts(kit, "console.log");
    if (!platform::isValidUtf8(name)) {
        require(injections.empty(), "what cannot be written is not injected");
        return;
    }
    require(injections.size() == 1, "the apps are injected once");
    const auto received = PageEngine::instance().run(injections[0]);
    require(received && received->size() == 1, "the injection runs and calls the page once");
    const auto payload = objectOf(received->at(0));
    const auto& app = *payload.at("UPIApps").array()->at(0).dictionary();
    require(
        *app.at("upi_app_name").string() == name && *app.at("package_name").string() == "p" + name,
        "what comes out is what went in");
}

// A status is escaped more narrowly than an app: its double quotes alone.
void checkStatus(const CheckoutTestKit& kit, const std::string& status) {
    const auto posts = scripts(kit, "window.postMessage");
    if (!platform::isValidUtf8(status)) {
        require(posts.empty(), "what cannot be written is not posted");
        return;
    }
    require(posts.size() == 1, "the status is posted once");
    for (const char character : status)
        if (character == '\\' || character == '\'' || static_cast<unsigned char>(character) < 0x20)
            return;
    const auto received = PageEngine::instance().run(posts[0]);
    require(received && received->size() == 1, "the post runs and reaches the page once");
    require(*objectOf(received->at(0)).at("transaction_enquiry_api_response").string() == status,
            "an ordinary status comes out as it went in");
}

// The bytes are an app's name and its package's, and an order's status.
void check(std::string_view input) {
    const std::string text(input);
    CheckoutTestKit kit;
    kit.appListIs({{std::nullopt, text, "p" + text, std::nullopt}});
    kit.enquiryAnswers({}, text);
    kit.openCheckout();
    checkApps(kit, text);
    kit.customerPicks(testkit::UPIApp::opens);
    kit.customerComesBackAfter(1);
    checkStatus(kit, text);
}

const Target target("literal", check);

}  // namespace
}  // namespace zorvik::fuzz
