#include "platform/foundation/JSONSerialization.h"
#include "tests/hostile/HostileCheckout.h"

namespace zorvik::tests {
namespace {

using platform::JSONSerialization;

// What would end a script's string literal, a script element or a text before its end.
const std::string closers[] = {
    "');broken = true;//",
    "\\');broken = true;//",
    "\\\\');broken = true;//",
    "\n');broken = true;//",
    "</script><script>broken = true</script><!--",
    "\u2028broken = true;\u2029",
    "${broken = true}`",
    "\\u0027);broken = true;//",
    std::string("\0\u007f", 2),
    "'\"\\\b\f\r\t",
    "\\",
    "*/ broken = true; /*",
    "__proto__",
    "\U0001F600'",
};

std::string list(const std::vector<UPIAppsVO>& apps) {
    platform::Array objects;
    for (const UPIAppsVO& app : apps)
        objects.emplace_back(Dictionary{{"upi_app_code", *app.upiAppCode},
                                        {"upi_app_name", *app.upiAppName},
                                        {"package_name", *app.packageName},
                                        {"appiconbase64", *app.logoUrl}});
    return JSONSerialization::data(Dictionary{{"UPIApps", objects}}).value();
}

std::string statusMessage(const std::string& status) {
    return JSONSerialization::data(Dictionary{{"transaction_enquiry_api_response", status},
                                              {"upi_intent_back_response", "close"}})
        .value();
}

constexpr auto listens = R"(<script>var broken = false; let list = '';
    window.zorvik_web = { UPIIntentAvailable: text => { list = text; } };</script>)";

}  // namespace

std::vector<Row> textRows() {
    return {
        {"AppsThatCloseTheScript", listens,
         [](HostileCheckout& checkout) {
             std::vector<UPIAppsVO> apps;
             for (const std::string& text : closers)
                 apps.push_back({text, text, text, "data:" + text});
             checkout.core.appsAnswer = apps;
             checkout.open();
             checkout.waitForValue("JSON.stringify(JSON.parse(list || '{}').UPIApps?.length)",
                                   std::to_string(apps.size()));
             // Rely on no order of apps.
             const auto parsed = JSONSerialization::jsonObject(
                 checkout.evaluated("list"), JSONSerialization::ReadingOptions::none);
             const auto expected =
                 JSONSerialization::jsonObject(list(apps), JSONSerialization::ReadingOptions::none);
             ASSERT_TRUE(parsed);
             EXPECT_THAT(*parsed.value().dictionary()->at("UPIApps").array(),
                         testing::UnorderedElementsAreArray(
                             *expected.value().dictionary()->at("UPIApps").array()));
             EXPECT_EQ(checkout.evaluated("broken"), "false");
         },
         Leaves::page, Row::Opens::inStory},
        {"AppsThatAreNoText", listens,
         [](HostileCheckout& checkout) {
             checkout.core.appsAnswer = std::vector<UPIAppsVO>{
                 {"\xED\xA0\x80", "half of a pair", "app.half", ""}, {"\xFF", "", "app.byte", ""}};
             checkout.open();
             checkout.waitForPage();
             checkout.settle(0.3);
             EXPECT_EQ(checkout.evaluated("list"), "") << "a list that cannot be written";
         },
         Leaves::page, Row::Opens::inStory},
        {"AMegabyteOfApps", listens,
         [](HostileCheckout& checkout) {
             std::vector<UPIAppsVO> apps;
             for (int i = 0; i < 1000; ++i)
                 apps.push_back(
                     {"C", std::string(1000, i % 2 ? '\'' : 'x'), "app" + std::to_string(i), ""});
             checkout.core.appsAnswer = apps;
             checkout.open();
             checkout.waitForValue("list.length", std::to_string(list(apps).size()));
         },
         Leaves::page, Row::Opens::inStory},
        // In a status double quotes alone are escaped: what else ends a literal does not arrive as
        // it was, and may run as a script of the page's own.
        {"StatusesThatCloseTheScript", listens,
         [](HostileCheckout& checkout) {
             checkout.waitForPage();
             checkout.handOff();
             std::size_t posted = 0;
             for (const std::string& status : closers) {
                 checkout.core.enquiryAnswer = TransactionEnquiryResponse{Order{status}};
                 checkout.evaluated("heard = ''");
                 checkout.becomeActive();
                 ++posted;
                 EXPECT_TRUE(checkout.waitUntil([&] {
                     return checkout.timesPrinted("[UPI BACK] ✅ JavaScript executed successfully") +
                                checkout.timesPrintedFrom("[UPI BACK] ❌ JavaScript error: ") ==
                            posted;
                 })) << status;
                 const std::string fragile("'\\\n\r\t\b\f\0", 8);
                 if (status.find_first_of(fragile) == std::string::npos)
                     checkout.waitForValue("heard", statusMessage(status));
             }
             checkout.core.enquiryAnswer = TransactionEnquiryResponse{Order{"\xED\xA0\x80"}};
             checkout.becomeActive();
             EXPECT_TRUE(checkout.waitUntil([&] {
                 return checkout.timesPrintedFrom("[UPI BACK] ❌ JSON serialization error: ") == 1;
             }));
         }},
    };
}

}  // namespace zorvik::tests
