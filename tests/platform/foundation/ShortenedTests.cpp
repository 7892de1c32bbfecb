#include "platform/foundation/Shortened.h"

#include <gtest/gtest.h>

#include "platform/foundation/Data.h"

namespace zorvik::platform {
namespace {

TEST(ShortenedTest, OfTokensNamesAndNumbersTheBeginningIsLeftAndOfTheRestEverything) {
    const std::string token =
        base64Encode(R"({"alg":"none"})") + "." + base64Encode(R"({"order_id": 1})") + ".0a-_Z";
    ASSERT_EQ(token.substr(0, 6), "eyJhbG");
    const std::pair<std::string, std::string> cases[] = {
        {token, "eyJhbG…"},
        {"h." + base64Encode("{ }           ") + ".s", "h…"},
        {"token=" + token + "&payment_mode=UPI", "token=eyJhbG…&payment_mode=UPI"},
        {"current_url=https%3A%2F%2Fa%3Ftoken%3D" + token + "%26b",
         "current_url=https%3A%2F%2Fa%3Ftoken%3DeyJhbG…%26b"},
        {"\"" + token + "\", '" + token + "'", "\"eyJhbG…\", 'eyJhbG…'"},
        {"asha.rao@nilgiri paid, b%40c.example too", "a…@nilgiri paid, b…%40c.example too"},
        {"upi://pay?pa=asha_1@nilgiri&am=10.00", "upi://pay?pa=a…@nilgiri&am=10.00"},
        {"call +91 98765-43210 or 9876543210", "call +91… or 98…"},
        {"tel=%2B919876543210", "tel=%2B91…"},
        {"card 4000001234567899", "card 40…"},
        {"2.0.15-alpha.4, pay.zorvik.example, example.somewhatlongername.app",
         "2.0.15-alpha.4, pay.zorvik.example, example.somewhatlongername.app"},
        {"TXN000000001 at 2026-11-23 06:12:48 for 2548.00 in order-20261123061248",
         "TXN000000001 at 2026-11-23 06:12:48 for 2548.00 in order-20261123061248"},
        {"100 % of a…@b @", "100 % of a…@b @"},
        {"%", "%"},
        {"", ""}};
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(shortened(text), expected);
        EXPECT_EQ(shortened(expected), expected) << "once is enough";
    }
}

}  // namespace
}  // namespace zorvik::platform
