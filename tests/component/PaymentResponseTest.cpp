#include "platform/foundation/Data.h"
#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

using platform::base64Encode;

class PaymentResponseTest : public CheckoutTest {};

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
    const std::string megabyte(1'000'000, 'x');
    // The response as the page wrote it; the payload of its success, if it can be decoded.
    const std::tuple<const char*, std::string, std::optional<Dictionary>> cases[] = {
        {"JSON", object, payload},
        {"base64 of JSON", base64Encode(object), payload},
        {"URL-safe base64", urlSafeBase64(plus), std::nullopt},
        {"base64 with a line break", base64Encode(object) + "\n", std::nullopt},
        {"emoji and quotes", R"({"payload":{"a":"😀 \"'\\ 1+1"}})",
         Dictionary{{"a", "😀 \"'\\ 1+1"}}},
        {"JSON null", "null", Dictionary()},
        {"a list", R"([{"payload":1}])", Dictionary()},
        {"base64 of a number", "MTIz", Dictionary()},
        {"a payload that is none", R"({"payload":[1]})", Dictionary()},
        {"empty", "", std::nullopt},
        {"not UTF-8", "{\"payload\":{\"a\":\"\xff\"}}", std::nullopt},
        {"100,000 levels", levels, std::nullopt},
        {"100,000 levels in base64", base64Encode(levels), std::nullopt},
        {"a megabyte", R"({"payload":{"a":")" + megabyte + "\"}}", Dictionary{{"a", megabyte}}},
    };
    openScreen();
    for (const auto& [name, response, decoded] : cases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(redirect(escaped(response)), Policy::cancel);
        const Lines failures = seen("failure");
        EXPECT_THAT(failures, SizeIs(decoded ? 0 : 1));
        scheduler.runOneTurn();
        EXPECT_TRUE(seen("success") == (decoded ? Lines{description(*decoded)} : Lines()));
        EXPECT_EQ(scheduler.pendingCount(), 0u);
        forget();
    }
}

TEST_F(PaymentResponseTest, AnAddressIsReadAloudAndReportedInItsTurn) {
    // A page's current address reaches the reader too, and may hold what the marker excludes.
    const std::pair<std::string, const char*> cases[] = {
        {"https://pay.example/check?response=eyJwYXlsb2FkIjp7ImEiOjF9fQ==", R"(
[REDIRECT] 🔗 Processing URL: https://pay.example/check?response=eyJwYXlsb2FkIjp7ImEiOjF9fQ==
  | 📊 Available query items: [response=eyJwYXlsb2FkIjp7ImEiOjF9fQ==] | ✅ Response parameter found: eyJwYXlsb2FkIjp7ImEiOjF9fQ==
  | JSON parsing failed, trying Base64 | 🚀 handleParsedResponse called with data: ["payload": ["a": 1]]
(turn 1) success ["a": 1]
)"},
        {"https://pay.example/check?response=aGVsbG8h", R"(
[REDIRECT] 🔗 Processing URL: https://pay.example/check?response=aGVsbG8h | 📊 Available query items: [response=aGVsbG8h]
  | ✅ Response parameter found: aGVsbG8h | JSON parsing failed, trying Base64 | Base64 JSON parsing failed
  | ❌ Both JSON and Base64 decoding failed
failure ["error": "Invalid response format", "order_id": "order-7", "subMerchantId": "sub-3", "token": "TOKEN", "zorvik_order_id": "order-7"]
)"},
        {"https://pay.example/check?response=%zz", R"(
[REDIRECT] 🔗 Processing URL: https://pay.example/check?response=%zz | ❌ Failed to parse URL components
(turn 2) failure ["error": "Invalid payment response", "order_id": "order-7", "subMerchantId": "sub-3", "token": "TOKEN", "zorvik_order_id": "order-7"]
)"},
        {"https://pay.example/?response&response=1&u=https://pay.example/check?response=1",
         R"(
[REDIRECT] 🔗 Processing URL: https://pay.example/?response&response=1&u=https://pay.example/check?response=1
  | 📊 Available query items: [response, response=1, u=https://pay.example/check?response=1] | ❌ No response parameter found
(turn 2) failure ["error": "Invalid payment response", "order_id": "order-7", "subMerchantId": "sub-3", "token": "TOKEN", "zorvik_order_id": "order-7"]
)"},
    };
    openScreen();
    for (const auto& [url, transcript] : cases) {
        EXPECT_EQ(decide(url), Policy::cancel);
        EXPECT_TRUE(leadsTo("[REDIRECT] 🔗", transcript));
    }
    for (const std::string start : {"#", "?u=", "?#", "?Response=1&u="}) {
        decide("https://pay.example/" + start + "https://pay.example/check?response=1");
        run();
        EXPECT_THAT(seen("failure"),
                    ElementsAre(StartsWith(R"(["error": "Invalid payment response")")));
        forget();
    }
}

TEST_F(PaymentResponseTest, WithoutATokenAFailureHasEmptyEntriesAndASuccessIsTheSame) {
    openScreen();
    screen()->setOptions({});
    for (const char* response : {"%zz", "!", "1"}) {
        redirect(response);
        run();
    }
    const std::string rest =
        R"(", "order_id": "", "subMerchantId": "", "token": "", "zorvik_order_id": ""])";
    EXPECT_THAT(seen("failure"), ElementsAre(R"(["error": "Invalid payment response)" + rest,
                                             R"(["error": "Invalid response format)" + rest));
    EXPECT_THAT(seen("success"), ElementsAre("[:]"));
}

}  // namespace
}  // namespace zorvik
