#include "platform/foundation/JSONSerialization.h"
#include "platform/uikit/UIButton.h"
#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

using platform::Array;
using testing::IsEmpty;

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
        if (page().evaluatedScripts().empty()) {
            ADD_FAILURE() << "nothing was injected";
            return {};
        }
        const std::string script = page().evaluatedScripts().back();
        const std::string before = scriptBeforePayload;
        const auto end = script.find(scriptAfterCall);
        if (!script.starts_with(before) || end == std::string::npos) {
            ADD_FAILURE() << script.substr(0, 2000);
            return {};
        }
        const std::string escaped = script.substr(before.size(), end - before.size());
        EXPECT_TRUE(script == before + escaped + scriptAfterCall + escaped + scriptAfterLog +
                                  escaped + scriptEnd)
            << script.substr(0, 2000);
        return parsedObject(evaluatedLiteral(escaped));
    }

    std::size_t evaluations() { return page().evaluatedScripts().size(); }
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
    const auto payload = injectedPayload();
    ASSERT_EQ(payload.size(), 1u);
    EXPECT_THAT(
        *payload.at("UPIApps").array(),
        testing::UnorderedElementsAre(Value(Dictionary{{"upi_app_name", odd},
                                                       {"package_name", "app.'odd\\"},
                                                       {"appiconbase64", "https://i.example/a\"b"},
                                                       {"upi_app_code", "N"}}),
                                      Value(Dictionary{{"upi_app_name", nullptr},
                                                       {"package_name", "app.bare"},
                                                       {"appiconbase64", nullptr},
                                                       {"upi_app_code", nullptr}})));
    EXPECT_THAT(lines, IsEmpty());
    EXPECT_THAT(core.events(), IsEmpty());
}

TEST_F(PageBridgeTest, ThousandsOfAppsAreAllGivenOnce) {
    std::vector<UPIAppsVO> apps;
    for (int index = 0; index < 6000; ++index) {
        const std::string number = std::to_string(index);
        apps.push_back({number, "App " + number, "app." + std::to_string(index % 3000), ""});
    }
    openScreen(optionsOf("t"), apps);
    const auto payload = injectedPayload();
    std::map<std::string, std::string> codes;
    for (const auto& app : *payload.at("UPIApps").array()) {
        codes[*app.dictionary()->at("package_name").string()] =
            *app.dictionary()->at("upi_app_code").string();
    }
    EXPECT_EQ(payload.at("UPIApps").array()->size(), 3000u);
    EXPECT_EQ(codes.size(), 3000u);
    EXPECT_EQ(codes["app.2999"], "2999");
}

TEST_F(PageBridgeTest, AnEmptyListIsGivenAndAnAbsentOneIsNot) {
    openScreen(optionsOf("t"), Apps{std::vector<UPIAppsVO>{{"N", "n", "", ""}}});
    EXPECT_EQ(injectedPayload(), (Dictionary{{"UPIApps", Array{}}}));
    dismissScreen();
    openScreen(optionsOf("t"), std::nullopt);
    EXPECT_EQ(evaluations(), 0u);
    screen()->setUpiApps(std::vector<UPIAppsVO>{});
    finishAnotherPage();
    EXPECT_EQ(evaluations(), 1u) << "each finished page looks again";
}

TEST_F(PageBridgeTest, ANameThatIsNoTextInjectsNothing) {
    openScreen(optionsOf("t"), Apps{{{"N", "\xff\xfe", "app.n", ""}}});
    EXPECT_EQ(evaluations(), 0u);
    EXPECT_THAT(lines, IsEmpty());
}

TEST_F(PageBridgeTest, TheAppsAreGivenOnceALoadAndAgainOnlyAfterAFailedEvaluation) {
    evaluation = someError("no page");
    openScreen(optionsOf("t"), std::vector<UPIAppsVO>{});
    EXPECT_EQ(evaluations(), 1u);
    evaluation = ScriptValue{};
    finishAnotherPage();
    EXPECT_EQ(evaluations(), 2u);
    finishAnotherPage();
    EXPECT_EQ(evaluations(), 2u);
    find<platform::UIButton>()->sendTouchUpInside();  // loads the checkout page again
    runAll();
    EXPECT_EQ(evaluations(), 3u);
}

TEST_F(PageBridgeTest, AnInjectionUnderWayDoesNotKeepTheScreen) {
    auto alone = loadUnshownScreen();
    alone->setUpiApps(std::vector<UPIAppsVO>{});
    page().navigate("https://pay.example/next");
    EXPECT_GT(turnsUntil([this] { return evaluations() > 0; }), 0);
    alone.reset();
    EXPECT_FALSE(screen());
    scheduler.runUntilIdle();
}

struct MessageCase {
    const char* name;
    ScriptValue body;
    std::string transactionId;
    std::string line;  // the first one printed
};

TEST_F(PageBridgeTest, EveryIntentMessageIsLoggedWithTheIdItsTextHolds) {
    using Type = ScriptValue::Type;
    const std::string format = "[UPI INTENT] Invalid message format - expected string";
    const std::string parse = "[UPI INTENT] Failed to parse JSON from message body";
    const std::string fields = "[UPI INTENT] Missing required fields: url or packagename";
    const std::string created = "[UPI LAUNCH] ✅ URL created successfully";
    const MessageCase cases[] = {
        {"number", {Type::number, "42"}, "", format},
        {"boolean", {Type::boolean, "true"}, "", format},
        {"null", {Type::null, "null"}, "", format},
        {"array", {Type::array, "[\"tr\"]"}, "", format},
        {"object", {Type::object, R"({"tr":"1","url":"u","package_name":"p"})"}, "", format},
        {"empty", stringBody(""), "", parse},
        {"no JSON", stringBody("upi://pay"), "", parse},
        {"text after the JSON", stringBody(R"({"tr":"1"} ;)"), "", parse},
        {"a bare string", stringBody("\"tr\""), "", parse},
        {"not UTF-8", stringBody("{\"tr\":\"\xc3\"}"), "", parse},
        {"one number among strings", stringBody(R"({"tr":"1","amount":5})"), "", parse},
        {"100,000 levels", stringBody(std::string(100'000, '[')), "", parse},
        {"empty object", stringBody("{}"), "", fields},
        {"no url", stringBody(R"({"package_name":"p","tr":"1"})"), "1", fields},
        {"no package", stringBody(R"({"url":"u","tr":"1"})"), "1", fields},
        {"transactionId before txnId", stringBody(R"({"txnId":"A","transactionId":"B"})"), "B",
         fields},
        {"a present key wins even when empty", stringBody(R"({"txnId":"A","tr":""})"), "", fields},
        {"transactionId before tr", stringBody(R"({"tr":"A","transactionId":"B"})"), "B", fields},
        {"the last key", stringBody(R"({"TR":"A","merchantTransactionId":"M"})"), "M", fields},
        {"query items do not count", stringBody(R"({"url":"upi://pay?tr=9","package_name":"p"})"),
         "", created},
    };
    openScreen();
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        postIntent(row.body);
        scheduler.runUntilIdle();
        const Dictionary data{{"transactionId", row.transactionId}, {"parameters", row.body.text}};
        EXPECT_TRUE(core.takeEvents() == Lines{"UPI_INTENT_STARTED " + description(data)});
        EXPECT_EQ(takeLines().at(0), row.line);
    }
}

TEST_F(PageBridgeTest, AMessageOfAnotherNameIsIgnored) {
    openScreen();
    platform::WKUserContentController controller;
    for (const char* name : {"OpenUpiIntent", "openUpiIntent ", "other", ""}) {
        screen()->userContentControllerDidReceive(controller, {name, stringBody("{}")});
        EXPECT_FALSE(page().post(name, stringBody("{}")));
    }
    EXPECT_THAT(core.events(), IsEmpty());
    EXPECT_THAT(lines, IsEmpty());
}

}  // namespace
}  // namespace zorvik
