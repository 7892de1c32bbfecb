#include "core/development/OrderBook.h"

#include <gmock/gmock.h>

#include "core/development/OrderToken.h"
#include "platform/foundation/Data.h"
#include "platform/foundation/JSONSerialization.h"

namespace zorvik::development {

using platform::Dictionary;
using platform::Value;
using testing::HasSubstr;

OrderRecord newOrder(OrderBook& book) {
    return book.create({149900, "INR", {}, std::nullopt}).value();
}

TEST(OrderTokenTest, ClaimsOfEveryLengthAreReadableToAllReaders) {
    for (const char* orderId : {"", "a", "ab", "abc", "?>?>~~~ÿ₹🛍"}) {
        const Dictionary claims{{"order_id", orderId}, {"sub_merchant_id", "SM-1"}};
        const std::string token = makeOrderToken(claims);
        const std::size_t start = token.find('.') + 1;
        const std::string segment = token.substr(start, token.rfind('.') - start);
        EXPECT_EQ(segment.find_first_of("=-_."), std::string::npos) << segment;
        const std::string json = platform::base64Decode(segment).value();
        EXPECT_EQ(platform::JSONSerialization::jsonObject(json, {}).value(), Value(claims));
    }
    EXPECT_EQ(makeOrderToken({{"order_id", "\xff"}}), "");
}

TEST(AmountTest, MoneyIsReadToTheHundredthAndNothingElseIsMoney) {
    const std::pair<const char*, std::int64_t> rows[] = {
        {"1499", 149900}, {"1499.5", 149950}, {"0.01", 1}, {"9999999999.99", 999999999999}};
    for (const auto& [text, units] : rows)
        EXPECT_EQ(minorUnitsFrom(text), units) << text;
    for (const char* text :
         {"0", "0.00", "", ".5", "5.", "1.234", "-1", "+1", "1,499", "1e3", " 1", "10000000000"})
        EXPECT_EQ(minorUnitsFrom(text), std::nullopt) << text;
    EXPECT_EQ(minorUnitsFrom(0.1 + 0.2), 30);
    for (const double amount : {14.999, -1.0, 0.0 / 0.0, 1e300})
        EXPECT_EQ(minorUnitsFrom(amount), std::nullopt) << amount;
    EXPECT_EQ(amountText(5), "0.05");
}

TEST(OrderBookTest, TheStatusFollowsThePaymentsAndAPaidOrderIsNeverPaidAgain) {
    using enum PaymentStatus;
    struct Row {
        const char* name;
        std::vector<std::pair<const char*, PaymentStatus>> payments;
        const char* answers;
        PaymentStatus status;
    };
    const Row rows[] = {
        {"one is pending", {{"T1", pending}, {"T2", failed}}, "++", pending},
        {"paid, told twice", {{"T1", pending}, {"T1", success}, {"T1", success}}, "+++", success},
        {"failed, then paid", {{"T1", failed}, {"T2", pending}, {"T2", success}}, "+++", success},
        {"contradiction", {{"T1", failed}, {"T1", success}, {"T1", pending}}, "+--", failed},
        {"paid twice", {{"T1", success}, {"T2", success}, {"T2", failed}}, "+-+", success},
        {"paid twice late", {{"T1", pending}, {"T2", success}, {"T1", success}}, "++-", success},
        {"told again late", {{"T1", pending}, {"T2", success}, {"T1", pending}}, "+++", success},
        {"nonsense", {{"", success}, {"T1", created}}, "--", created},
    };
    for (const Row& row : rows) {
        MemoryOrderBook book;
        const OrderRecord order = newOrder(book);
        std::string answers;
        for (const auto& [id, status] : row.payments)
            answers += book.recordPayment(order.orderId, {id, "UPI", status, ""}) ? '+' : '-';
        EXPECT_EQ(answers, row.answers) << row.name;
        EXPECT_EQ(book.find(order.token, order.orderId).value().status(), row.status) << row.name;
    }
}

TEST(OrderBookTest, OrdersThatAreNoneAndTokensOfOtherOrdersAreRefused) {
    MemoryOrderBook book;
    for (const std::int64_t amount : {std::int64_t{0}, std::int64_t{1'000'000'000'000}})
        EXPECT_FALSE(book.create({amount, "INR", {}, {}}));
    EXPECT_FALSE(book.create({100, "inr", {}, {}}));
    const OrderRecord order = newOrder(book);
    EXPECT_THAT(book.find(newOrder(book).token, order.orderId).error().localizedDescription,
                HasSubstr("does not belong"));
    EXPECT_FALSE(book.updateDetails("x", order.orderId, {}));
}

}  // namespace zorvik::development
