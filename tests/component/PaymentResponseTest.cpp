#include "platform/foundation/Data.h"
#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

using platform::base64Encode;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string invalidResponse = "Invalid payment response";
const std::string invalidFormat = "Invalid response format";

class PaymentResponseTest : public CheckoutTest {
  protected:
    // The response redirect with this query, decided at once; the marker needs "?response=" first.
    Policy redirect(const std::string& value) {
        return decide(core.webViewRespCheckUrl + "?response=" + value);
    }
};

struct ResponseCase {
    const char* name;
    std::string response;               // as the page wrote it, before percent-escaping
    std::optional<Dictionary> payload;  // of the success; nullopt: an undecodable response
};

TEST_F(PaymentResponseTest, AResponseThatDecodesIsASuccessOneTurnLaterAndAnyOtherAFailureAtOnce) {
    const std::string object = R"({"payload":{"status":"FAILED","n":9007199254740993,"x":null}})";
    const Dictionary payload{{"status", "FAILED"}, {"n", 9007199254740993}, {"x", nullptr}};
    const std::string plus = R"({"payload":{"a":">>>"}})";  // a "+" in its base64
    const std::string slash = R"({"payload":{"a":"???"}})";
    std::string unpadded = base64Encode(R"({"payload":{}})");
    while (unpadded.ends_with('='))
        unpadded.pop_back();
    const std::string levels(100'000, '[');
    const std::string megabytes = R"({"payload":{"a":")" + std::string(10'000'000, 'x') + "\"}}";
    const ResponseCase cases[] = {
        {"JSON", object, payload},
        {"base64 of JSON", base64Encode(object), payload},
        {"base64 with a plus sign", base64Encode(plus), Dictionary{{"a", ">>>"}}},
        {"base64 that is URL-safe for +", urlSafeBase64(plus), std::nullopt},
        {"base64 that is URL-safe for /", urlSafeBase64(slash), std::nullopt},
        {"base64 without its padding", unpadded, std::nullopt},
        {"base64 with a line break", base64Encode(object) + "\n", std::nullopt},
        {"base64 of no JSON", base64Encode("hello!"), std::nullopt},
        {"no payload", R"({"status":"SUCCESS"})", Dictionary{}},
        {"payload a string", R"({"payload":"{}"})", Dictionary{}},
        {"payload an array", R"({"payload":[{}]})", Dictionary{}},
        {"a number", "123", Dictionary{}},
        {"a string", "\"payload\"", Dictionary{}},
        {"null", "null", Dictionary{}},
        {"an array", R"([{"payload":{"a":1}}])", Dictionary{}},
        {"emoji and quotes", R"({"payload":{"a":"😀 \"'\\ ₹"}})", Dictionary{{"a", "😀 \"'\\ ₹"}}},
        {"a plus sign stays", R"({"payload":{"a":"1+1"}})", Dictionary{{"a", "1+1"}}},
        {"empty", "", std::nullopt},
        {"text after the JSON", "{} x", std::nullopt},
        {"single quotes", "{'payload':{}}", std::nullopt},
        {"not UTF-8", "{\"payload\":{\"a\":\"\xff\"}}", std::nullopt},
        {"100,000 levels", levels, std::nullopt},
        {"100,000 levels in base64", base64Encode(levels), std::nullopt},
        {"10 MB", megabytes, Dictionary{{"a", std::string(10'000'000, 'x')}}},
    };
    openScreen();
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        outcome->successes.clear();
        outcome->failures.clear();
        EXPECT_EQ(redirect(escapedForQuery(row.response)), Policy::cancel);
        if (row.payload) {
            EXPECT_EQ(outcome->count(), 0u);
            EXPECT_EQ(turnsUntilReport(), 1);
            ASSERT_EQ(outcome->successes.size(), 1u);
            EXPECT_TRUE(outcome->successes[0] == *row.payload);
        } else {
            EXPECT_THAT(outcome->failures, ElementsAre(failurePayload(invalidFormat)));
        }
        scheduler.runUntilIdle();
        EXPECT_EQ(outcome->count(), 1u);
    }
    EXPECT_THAT(core.events(), IsEmpty());
}

struct MissingCase {
    const char* name;
    std::string url;
    std::string items;  // as printed; "": the address does not parse
};

TEST_F(PaymentResponseTest, AnAddressWithoutAResponseIsAFailureTwoTurnsLater) {
    // A page's current address reaches the reader too, and may hold what the marker excludes.
    const std::string site = "https://pay.example/";
    const MissingCase cases[] = {
        {"a broken escape", site + "check?response=%7B%zz", ""},
        {"marker in the fragment", site + "a#https://pay.example/check?response=1", "[]"},
        {"marker in another item", site + "a?u=https://pay.example/check?response=1",
         "[u=https://pay.example/check?response=1]"},
        {"other letter case", site + "a?Response=1&u=https://pay.example/check?response=1",
         "[Response=1, u=https://pay.example/check?response=1]"},
        {"the first has no value",
         site + "a?response&response=1&u=https://pay.example/check?response=1",
         "[response, response=1, u=https://pay.example/check?response=1]"},
    };
    openScreen();
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        outcome->failures.clear();
        takeLines();
        EXPECT_EQ(decide(row.url), Policy::cancel);
        EXPECT_EQ(outcome->count(), 0u);
        EXPECT_EQ(turnsUntilReport(), 2);
        EXPECT_THAT(outcome->failures, ElementsAre(failurePayload(invalidResponse)));
        const Lines end = row.items.empty()
                              ? Lines{"[REDIRECT] 🔗 Processing URL: " + row.url,
                                      "[REDIRECT] ❌ Failed to parse URL components"}
                              : Lines{"[REDIRECT] 📊 Available query items: " + row.items,
                                      "[REDIRECT] ❌ No response parameter found"};
        EXPECT_EQ(Lines(lines.end() - 2, lines.end()), end);
    }
}

TEST_F(PaymentResponseTest, EachWayThroughTheDecodingPrintsItsOwnLines) {
    const std::string base64First = "[REDIRECT] JSON parsing failed, trying Base64";
    const std::string failed = "[REDIRECT] ❌ Both JSON and Base64 decoding failed";
    const std::string parsed = "[REDIRECT] 🚀 handleParsedResponse called with data: ";
    const std::string bytes = base64Encode("hi!");
    const std::pair<std::string, Lines> cases[] = {
        {R"({"a":1})", {parsed + R"(["a": 1])"}},
        {base64Encode(R"({"a":1})"), {base64First, parsed + R"(["a": 1])"}},
        {"?", {base64First, failed}},
        {bytes, {base64First, "[REDIRECT] Base64 JSON parsing failed", failed}},
        {"", {base64First, "[REDIRECT] Base64 JSON parsing failed", failed}},
    };
    openScreen();
    for (const auto& [response, expected] : cases) {
        SCOPED_TRACE(response);
        takeLines();
        redirect(escapedForQuery(response));
        const auto found = std::find(lines.begin(), lines.end(),
                                     "[REDIRECT] ✅ Response parameter found: " + response);
        ASSERT_NE(found, lines.end());
        EXPECT_EQ(Lines(found + 1, lines.end()), expected);
        runAll();
    }
}

TEST_F(PaymentResponseTest, WithoutATokenTheFailureHoldsEmptyTexts) {
    openScreen(optionsOf("t"));
    screen()->setOptions(optionsOf(std::nullopt));
    redirect("!");
    EXPECT_THAT(outcome->failures, ElementsAre(Dictionary{{"error", invalidFormat},
                                                          {"order_id", ""},
                                                          {"zorvik_order_id", ""},
                                                          {"token", ""},
                                                          {"subMerchantId", ""}}));
}

TEST_F(PaymentResponseTest, AReportOnItsWayIsDroppedWithItsScreenOrItsDelegate) {
    for (const char* response : {"1", "%zz"}) {
        SCOPED_TRACE(response);
        openScreen();
        redirect(response);
        EXPECT_NE(scheduler.pendingCount(), 0u);
        screen()->setDelegate({});
        scheduler.runUntilIdle();

        dismissScreen();

        auto alone = loadUnshownScreen();
        redirect(response);
        alone.reset();
        EXPECT_FALSE(screen());
        scheduler.runUntilIdle();
        EXPECT_EQ(outcome->count(), 0u);
    }
}

}  // namespace
}  // namespace zorvik
