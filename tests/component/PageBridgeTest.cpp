#include "platform/uikit/UIButton.h"
#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

class PageBridgeTest : public CheckoutTest {};

TEST_F(PageBridgeTest, ThePageIsGivenOneAppForEachPackageNameWithNullForWhatIsMissing) {
    const std::string odd = "O'Brien \"Pay\" \\ 😀\n\r\t</script> ₹ \x01 \xe2\x80\xa8";
    presentScreen();
    screen()->setUpiApps(Apps{{"N", odd, "app.'odd\\", "https://i.example/a\"b"},
                              {"X", "second of the name", "app.'odd\\", std::nullopt},
                              {"E", "empty package", "", std::nullopt},
                              {"M", "no package", std::nullopt, std::nullopt},
                              {std::nullopt, std::nullopt, "app.bare", std::nullopt}});
    run();
    EXPECT_THAT(
        scripts().at(0),
        HasSubstr(
            R"js(UPIIntentAvailable('{\"UPIApps\":[)js"
            R"js({\"appiconbase64\":\"https://i.example/a\\\"b\",\"package_name\":\"app.\'odd\\\\\",)js"
            R"js(\"upi_app_code\":\"N\",\"upi_app_name\":\"O\'Brien \\\"Pay\\\" \\\\ 😀\\n\\r\\t</script> )js"
            "₹ \\\\u0001 \xe2\x80\xa8\\\"},"
            R"js({\"appiconbase64\":null,\"package_name\":\"app.bare\",\"upi_app_code\":null,)js"
            R"js(\"upi_app_name\":null}]}');)js"));
}

TEST_F(PageBridgeTest, TheAppsAreGivenOnceALoadAndAgainOnlyAfterAFailedEvaluation) {
    const auto scriptsAfterAPageWith = [this](const UPIAppsVO& app) {
        screen()->setUpiApps(Apps{app});
        page().navigate("https://pay.example/next");
        run();
        return scripts().size();
    };
    openScreen();  // without a list
    EXPECT_EQ(scriptsAfterAPageWith({"N", "\xff\xfe", "app.n", ""}), 0u)
        << "a name that is no text";
    const UPIAppsVO unnamed{"N", "n", "", ""};
    evaluation = someError("no page");
    EXPECT_EQ(scriptsAfterAPageWith(unnamed), 1u);
    EXPECT_THAT(scripts().at(0), HasSubstr(R"(UPIIntentAvailable('{\"UPIApps\":[]}'))"));
    evaluation = ScriptValue{};
    for (int count = 0; count < 2; ++count)
        EXPECT_EQ(scriptsAfterAPageWith(unnamed), 2u);
    find<platform::UIButton>()->sendTouchUpInside();  // loads the checkout page again
    run();
    EXPECT_EQ(scripts().size(), 3u);
}

TEST_F(PageBridgeTest, EveryIntentMessageIsLoggedWithTheIdItsTextHolds) {
    using Type = ScriptValue::Type;
    const std::string format = "\n[UPI INTENT] Invalid message format - expected string\n";
    const std::string parse = "\n[UPI INTENT] Failed to parse JSON from message body\n";
    const std::string fields = "\n[UPI INTENT] Missing required fields: url or packagename\n";
    // The body, its transaction id, what is printed after the event.
    const std::tuple<ScriptValue, std::string, std::string> cases[] = {
        {{Type::null, "null"}, "", format},
        {{Type::object, R"({"tr":"1","url":"u","package_name":"p"})"}, "", format},
        {stringBody(""), "", parse},
        {stringBody("\"tr\""), "", parse},
        {stringBody("{\"tr\":\"\xc3\"}"), "", parse},
        {stringBody(R"({"tr":"1","amount":5})"), "", parse},
        {stringBody(std::string(100'000, '[')), "", parse},
        {stringBody(R"({"package_name":"p","tr":"1"})"), "1", fields},
        {stringBody(R"({"txnId":"A","tr":""})"), "", fields},
    };
    openScreen();
    for (const auto& [body, id, transcript] : cases) {
        SCOPED_TRACE(body.text.substr(0, 100));
        postIntent(body);
        run();
        const Dictionary data{{"transactionId", id}, {"parameters", body.text}};
        EXPECT_EQ(seen("event").at(0), "UPI_INTENT_STARTED " + description(data));
        EXPECT_TRUE(hasTranscript("[UPI", transcript));
    }
    forget();
    screen()->userContentControllerDidReceive(
        *find<WKWebView>()->configuration().userContentController,
        {"OpenUpiIntent", stringBody("{}")});
    EXPECT_TRUE(hasTranscript("", "\n"));
}

}  // namespace
}  // namespace zorvik
