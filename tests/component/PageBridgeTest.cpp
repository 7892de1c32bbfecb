#include "platform/uikit/UIButton.h"
#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

const char* const scriptBeforePayload = R"js(console.log('🔍 Injecting UPI apps...');
console.log('🔍 Window object available:', typeof window !== 'undefined');
console.log('🔍 zorvik_web available:', typeof window.zorvik_web !== 'undefined');

// Wait a bit for message handlers to be available
setTimeout(function() {
    try {
        if (window.zorvik_web && window.zorvik_web.UPIIntentAvailable) {
            console.log('✅ zorvik_web.UPIIntentAvailable found, calling...');
            window.zorvik_web.UPIIntentAvailable(')js";
const char* const scriptAfterCall = R"js(');
            console.log('✅ UPI Apps injected successfully');
            console.log('📊 Injected data:', JSON.parse(')js";
const char* const scriptAfterLog = R"js('));
        } else {
            console.log('❌ zorvik_web.UPIIntentAvailable not available');
            console.log('🔍 Available window properties:', Object.keys(window));
            if (window.zorvik_web) {
                console.log('🔍 zorvik_web properties:', Object.keys(window.zorvik_web));
            } else {
                console.log('🔍 zorvik_web object not found');
            }
        }
    } catch (error) {
        console.error('❌ Error injecting UPI apps:', error);
        console.error('📊 JSON data:', ')js";
const char* const scriptEnd = R"js(');
    }
}, 100);)js";

class PageBridgeTest : public CheckoutTest {
  protected:
    // The payload of the last script, which must be the injection to the character.
    Dictionary injectedPayload() {
        const std::string script = scripts().at(scripts().size() - 1);
        const std::size_t start = std::string(scriptBeforePayload).size();
        const std::string escaped = script.substr(start, script.find(scriptAfterCall) - start);
        EXPECT_TRUE(script == scriptBeforePayload + escaped + scriptAfterCall + escaped +
                                  scriptAfterLog + escaped + scriptEnd)
            << script.substr(0, 2000);
        return parsedObject(evaluatedLiteral(escaped));
    }
    void finishAnotherPage() {
        page().navigate("https://pay.example/next");
        runAll();
    }
};

TEST_F(PageBridgeTest, ThePageIsGivenOneAppForEachPackageNameWithNullForWhatIsMissing) {
    const std::string odd = "O'Brien \"Pay\" \\ 😀\n\r\t</script> ₹ \x01 \xe2\x80\xa8";
    openScreen(optionsOf("t"), Apps{{{"N", odd, "app.'odd\\", "https://i.example/a\"b"},
                                     {"X", "second of the name", "app.'odd\\", std::nullopt},
                                     {"E", "empty package", "", std::nullopt},
                                     {"M", "no package", std::nullopt, std::nullopt},
                                     {std::nullopt, std::nullopt, "app.bare", std::nullopt}}});
    EXPECT_THAT(
        *injectedPayload().at("UPIApps").array(),
        testing::UnorderedElementsAre(Value(Dictionary{{"upi_app_name", odd},
                                                       {"package_name", "app.'odd\\"},
                                                       {"appiconbase64", "https://i.example/a\"b"},
                                                       {"upi_app_code", "N"}}),
                                      Value(Dictionary{{"upi_app_name", nullptr},
                                                       {"package_name", "app.bare"},
                                                       {"appiconbase64", nullptr},
                                                       {"upi_app_code", nullptr}})));
    EXPECT_THAT(core.events(), IsEmpty());
}

TEST_F(PageBridgeTest, TheAppsAreGivenOnceALoadAndAgainOnlyAfterAFailedEvaluation) {
    openScreen();  // without a list
    EXPECT_EQ(scripts().size(), 0u);
    screen()->setUpiApps(std::vector<UPIAppsVO>{{"N", "\xff\xfe", "app.n", ""}});
    finishAnotherPage();
    EXPECT_EQ(scripts().size(), 0u) << "a name that is no text injects nothing";
    screen()->setUpiApps(std::vector<UPIAppsVO>{{"N", "n", "", ""}});
    evaluation = someError("no page");
    finishAnotherPage();
    EXPECT_EQ(injectedPayload(), (Dictionary{{"UPIApps", platform::Array{}}}));
    evaluation = ScriptValue{};
    finishAnotherPage();
    EXPECT_EQ(scripts().size(), 2u);
    finishAnotherPage();
    EXPECT_EQ(scripts().size(), 2u);
    find<platform::UIButton>()->sendTouchUpInside();  // loads the checkout page again
    runAll();
    EXPECT_EQ(scripts().size(), 3u);
}

TEST_F(PageBridgeTest, AnInjectionUnderWayDoesNotKeepTheScreen) {
    auto alone = loadUnshownScreen();
    alone->setUpiApps(std::vector<UPIAppsVO>{});
    page().navigate("https://pay.example/next");
    while (scripts().empty()) {
        ASSERT_TRUE(scheduler.runOneTurn());
    }
    alone.reset();
    EXPECT_FALSE(screen());
    scheduler.runUntilIdle();
}

struct MessageCase {
    ScriptValue body;
    std::string transactionId;
    std::string line;  // the first one printed
};

TEST_F(PageBridgeTest, EveryIntentMessageIsLoggedWithTheIdItsTextHolds) {
    using Type = ScriptValue::Type;
    const std::string format = "[UPI INTENT] Invalid message format - expected string";
    const std::string parse = "[UPI INTENT] Failed to parse JSON from message body";
    const std::string fields = "[UPI INTENT] Missing required fields: url or packagename";
    const MessageCase cases[] = {
        {{Type::null, "null"}, "", format},
        {{Type::object, R"({"tr":"1","url":"u","package_name":"p"})"}, "", format},
        {stringBody(""), "", parse},
        {stringBody("\"tr\""), "", parse},
        {stringBody("{\"tr\":\"\xc3\"}"), "", parse},
        {stringBody(R"({"tr":"1","amount":5})"), "", parse},
        {stringBody(std::string(100'000, '[')), "", parse},
        {stringBody(R"({"package_name":"p","tr":"1"})"), "1", fields},
        {stringBody(R"({"url":"u","txnId":"A","transactionId":"B"})"), "B", fields},
        {stringBody(R"({"txnId":"A","tr":""})"), "", fields},
        {stringBody(R"({"tr":"A","transactionId":"B"})"), "B", fields},
        {stringBody(R"({"TR":"A","merchantTransactionId":"M"})"), "M", fields},
        {stringBody(R"({"url":"upi://pay?tr=9","package_name":"p"})"), "",
         "[UPI LAUNCH] ✅ URL created successfully"},
    };
    openScreen();
    for (const auto& row : cases) {
        SCOPED_TRACE(row.body.text.substr(0, 100));
        postIntent(row.body);
        scheduler.runUntilIdle();
        const Dictionary data{{"transactionId", row.transactionId}, {"parameters", row.body.text}};
        EXPECT_TRUE(core.takeEvents() == Lines{"UPI_INTENT_STARTED " + description(data)});
        EXPECT_EQ(takeLines().at(0), row.line);
    }
    platform::WKUserContentController controller;
    screen()->userContentControllerDidReceive(controller, {"OpenUpiIntent", stringBody("{}")});
    EXPECT_THAT(core.events(), IsEmpty());
}

}  // namespace
}  // namespace zorvik
