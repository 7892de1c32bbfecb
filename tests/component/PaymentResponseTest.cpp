#include "platform/foundation/Data.h"
#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

using platform::base64Encode;

class PaymentResponseTest : public CheckoutTest {};

struct ResponseCase {
    const char* name;
    std::string response;               // as the page wrote it, before percent-escaping
    std::optional<Dictionary> payload;  // of the success; nullopt: an undecodable response
};

std::string escaped(const std::string& text) {
    std::string all;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        all += {'%', "0123456789ABCDEF"[byte / 16], "0123456789ABCDEF"[byte % 16]};
    }
    return all;
}

TEST_F(PaymentResponseTest, AResponseThatDecodesIsASuccessOneTurnLaterAndAnyOtherAFailureAtOnce) {
    const std::string object = R"({"payload":{"status":"FAILED","n":9007199254740993,"x":null}})";
    const Dictionary payload{{"status", "FAILED"}, {"n", 9007199254740993}, {"x", nullptr}};
    const std::string plus = R"({"payload":{"a":">>>"}})";  // a "+" in its base64
    const std::string levels(100'000, '[');
    const std::string megabytes(10'000'000, 'x');
    const ResponseCase cases[] = {
        {"JSON", object, payload},
        {"base64 of JSON", base64Encode(object), payload},
        {"base64 with a plus sign", base64Encode(plus), Dictionary{{"a", ">>>"}}},
        {"URL-safe base64", urlSafeBase64(plus), std::nullopt},
        {"base64 without its padding", "eyJwYXlsb2FkIjp7fX0", std::nullopt},
        {"base64 with a line break", base64Encode(object) + "\n", std::nullopt},
        {"base64 of no JSON", base64Encode("hello!"), std::nullopt},
        {"a reference of 21 digits", R"({"id":1e400,"payload":{"ref":[123456789012345678901]}})",
         Dictionary{{"ref", platform::Array{*Value::parseNumber("123456789012345678901")}}}},
        {"no payload", R"({"status":"SUCCESS"})", Dictionary{}},
        {"payload a string", R"({"payload":"{}"})", Dictionary{}},
        {"no object", R"([{"payload":{"a":1}}])", Dictionary{}},
        {"emoji and quotes", R"({"payload":{"a":"😀 \"'\\ 1+1"}})",
         Dictionary{{"a", "😀 \"'\\ 1+1"}}},
        {"empty", "", std::nullopt},
        {"text after the JSON", "{} x", std::nullopt},
        {"not UTF-8", "{\"payload\":{\"a\":\"\xff\"}}", std::nullopt},
        {"100,000 levels", levels, std::nullopt},
        {"100,000 levels in base64", base64Encode(levels), std::nullopt},
        {"10 MB", R"({"payload":{"a":")" + megabytes + "\"}}", Dictionary{{"a", megabytes}}},
    };
    openScreen();
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        *outcome = {};
        EXPECT_EQ(redirect(escaped(row.response)), Policy::cancel);
        EXPECT_EQ(turnsUntilReport(), row.payload ? 1 : 0);
        if (row.payload) {
            EXPECT_TRUE(outcome->successes.at(0) == *row.payload);
        } else {
            EXPECT_THAT(outcome->failures, ElementsAre(failurePayload("Invalid response format")));
        }
        scheduler.runUntilIdle();
        EXPECT_EQ(outcome->count(), 1u);
    }
    EXPECT_THAT(core.events(), IsEmpty());
}

TEST_F(PaymentResponseTest, AnAddressWithoutAResponseIsAFailureTwoTurnsLater) {
    // A page's current address reaches the reader too, and may hold what the marker excludes.
    const std::string marker = "https://pay.example/check?response=1";
    openScreen();
    for (const std::string& url :
         {std::string("https://pay.example/check?response=%7B%zz"),
          "https://pay.example/a#" + marker, "https://pay.example/a?u=" + marker,
          "https://pay.example/a?Response=1&u=" + marker,
          "https://pay.example/a?response&response=1&u=" + marker}) {
        SCOPED_TRACE(url);
        outcome->failures.clear();
        EXPECT_EQ(decide(url), Policy::cancel);
        EXPECT_EQ(turnsUntilReport(), 2);
        EXPECT_THAT(outcome->failures, ElementsAre(failurePayload("Invalid payment response")));
    }
}

TEST_F(PaymentResponseTest, AReportOnItsWayIsDroppedWithItsScreenOrItsDelegate) {
    for (const char* response : {"1", "%zz"}) {
        auto alone = loadUnshownScreen();
        redirect(response);
        EXPECT_NE(scheduler.pendingCount(), 0u);
        alone.reset();
        EXPECT_FALSE(screen());
        scheduler.runUntilIdle();

        openScreen();
        redirect(response);
        screen()->setDelegate({});
        scheduler.runUntilIdle();
        dismissScreen();
        EXPECT_EQ(outcome->count(), 0u);
    }
}

}  // namespace
}  // namespace zorvik
