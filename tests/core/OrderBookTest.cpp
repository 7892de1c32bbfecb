#include "core/development/OrderBook.h"

#include <gmock/gmock.h>

#include <set>
#include <thread>

#include "core/development/OrderToken.h"
#include "platform/foundation/Data.h"
#include "platform/foundation/JSONSerialization.h"

namespace zorvik::development {
namespace {

using platform::Dictionary;
using platform::Value;
using testing::HasSubstr;

OrderRecord newOrder(OrderBook& book, std::int64_t amount = 149900) {
    return book.create(OrderDraft{amount, "INR", {}, std::nullopt}).value();
}

std::vector<std::string> segments(const std::string& token) {
    std::vector<std::string> parts(1);
    for (const char character : token) {
        if (character == '.') {
            parts.emplace_back();
        } else {
            parts.back() += character;
        }
    }
    return parts;
}

TEST(OrderTokenTest, ClaimsOfEveryLengthAreStandardBase64WithoutPadding) {
    for (const char* orderId : {"", "a", "ab", "abc", "?>?>~~~ÿ₹🛍"}) {
        const Dictionary claims{{"order_id", orderId}, {"sub_merchant_id", "SM-1"}};
        const auto parts = segments(makeOrderToken(claims));
        ASSERT_EQ(parts.size(), 3U);
        EXPECT_NE(parts[2], "");
        EXPECT_EQ(parts[1].find_first_of("=-_"), std::string::npos) << parts[1];
        const auto json = platform::base64Decode(parts[1]);
        ASSERT_TRUE(json);
        const auto read = platform::JSONSerialization::jsonObject(
            *json, platform::JSONSerialization::ReadingOptions::none);
        ASSERT_TRUE(read);
        EXPECT_EQ(read.value(), Value(claims));
    }
}

TEST(OrderTokenTest, ClaimsThatJsonCannotWriteGiveNoToken) {
    EXPECT_EQ(makeOrderToken({{"order_id", "\xff"}}), "");
}

TEST(AmountTest, MoneyIsReadToTheHundredthAndNothingElseIsMoney) {
    const std::vector<std::pair<std::string, std::optional<std::int64_t>>> rows{
        {"1499", 149900},
        {"1499.5", 149950},
        {"1499.05", 149905},
        {"0.01", 1},
        {"9999999999.99", 999999999999},
        {"0", std::nullopt},
        {"0.00", std::nullopt},
        {"", std::nullopt},
        {".5", std::nullopt},
        {"5.", std::nullopt},
        {"1.234", std::nullopt},
        {"-1", std::nullopt},
        {"+1", std::nullopt},
        {"1,499", std::nullopt},
        {"1e3", std::nullopt},
        {" 1", std::nullopt},
        {"10000000000", std::nullopt},
    };
    for (const auto& [text, units] : rows)
        EXPECT_EQ(minorUnitsFrom(text), units) << text;
    EXPECT_EQ(minorUnitsFrom(14.99), 1499);
    EXPECT_EQ(minorUnitsFrom(0.1 + 0.2), 30);
    EXPECT_EQ(minorUnitsFrom(14.999), std::nullopt);
    EXPECT_EQ(minorUnitsFrom(-1.0), std::nullopt);
    EXPECT_EQ(minorUnitsFrom(0.0 / 0.0), std::nullopt);
    EXPECT_EQ(minorUnitsFrom(1e300), std::nullopt);
    EXPECT_EQ(amountText(5), "0.05");
    EXPECT_EQ(amountText(149900), "1499.00");
}

TEST(OrderBookTest, AnOrderIsFoundByItsOwnTokenOnly) {
    MemoryOrderBook book;
    const OrderRecord first = newOrder(book);
    const OrderRecord second = newOrder(book);
    EXPECT_EQ(book.find(second.token, second.orderId).value().orderId, second.orderId);
    const auto message = [&](const std::string& token, const std::string& orderId) {
        return book.find(token, orderId).error().localizedDescription;
    };
    EXPECT_EQ(message(first.token, ""), "The order id is empty");
    EXPECT_EQ(message(first.token, "ORD-9"), "Unknown order \"ORD-9\"");
    EXPECT_THAT(message(first.token, second.orderId), HasSubstr("does not belong"));
    EXPECT_THAT(book.updateDetails("x", first.orderId, {}).error().localizedDescription,
                HasSubstr("does not belong"));
}

TEST(OrderBookTest, OrdersThatAreNoneAreRefused) {
    MemoryOrderBook book;
    EXPECT_FALSE(book.create({0, "INR", {}, {}}));
    EXPECT_FALSE(book.create({-5, "INR", {}, {}}));
    EXPECT_FALSE(book.create({1'000'000'000'000, "INR", {}, {}}));
    EXPECT_FALSE(book.create({100, "inr", {}, {}}));
    EXPECT_FALSE(book.create({100, "", {}, {}}));
}

TEST(OrderBookTest, TheStatusFollowsThePaymentsAndAPaidOrderIsNeverPaidAgain) {
    using enum PaymentStatus;
    struct Step {
        std::string transactionId;
        PaymentStatus status;
        bool accepted;
        PaymentStatus orderStatus;
    };
    const std::vector<std::pair<std::string, std::vector<Step>>> rows{
        {"pending, then paid, told twice",
         {{"T1", pending, true, pending},
          {"T1", success, true, success},
          {"T1", success, true, success}}},
        {"failed, then paid by another",
         {{"T1", failed, true, failed},
          {"T2", pending, true, pending},
          {"T2", success, true, success}}},
        {"one pending while another failed",
         {{"T1", pending, true, pending}, {"T2", failed, true, pending}}},
        {"settled payments are not contradicted",
         {{"T1", failed, true, failed},
          {"T1", success, false, failed},
          {"T1", pending, false, failed}}},
        {"a second payment of a paid order",
         {{"T1", success, true, success},
          {"T2", success, false, success},
          {"T2", pending, false, success},
          {"T2", failed, true, success}}},
        {"what was pending when the order was paid may only fail",
         {{"T1", pending, true, pending},
          {"T2", success, true, success},
          {"T1", success, false, success},
          {"T1", failed, true, success}}},
        {"nonsense", {{"", success, false, created}, {"T1", created, false, created}}},
    };
    for (const auto& [name, steps] : rows) {
        MemoryOrderBook book;
        const OrderRecord order = newOrder(book);
        for (const Step& step : steps) {
            const auto answer =
                book.recordPayment(order.orderId, {step.transactionId, "UPI", step.status, ""});
            EXPECT_EQ(answer.isSuccess(), step.accepted) << name;
            EXPECT_EQ(book.find(order.token, order.orderId).value().status(), step.orderStatus)
                << name;
        }
    }
}

TEST(OrderBookTest, AnEnquiryTellsOfTheNamedPaymentElseOfTheOneThatDecided) {
    MemoryOrderBook book;
    const OrderRecord order = newOrder(book);
    const auto record = [&](const Payment& payment) {
        return book.recordPayment(order.orderId, payment).value();
    };
    EXPECT_EQ(enquiryFields(order, "T1").count("transaction_id"), 0U);
    record({"T1", "UPI", PaymentStatus::failed, "Declined"});
    const OrderRecord paid = record({"T2", "CARD", PaymentStatus::success, ""});

    const Dictionary named = enquiryFields(paid, "T1");
    EXPECT_EQ(named.at("payment_message"), Value("Declined"));
    EXPECT_EQ(named.at("payment_status"), Value("FAILED"));
    EXPECT_EQ(named.at("order"), Value(Dictionary{{"status", "SUCCESS"}}));
    EXPECT_EQ(enquiryFields(paid, "unknown").at("transaction_id"), Value("T2"));
    EXPECT_EQ(enquiryFields(paid, "").at("amount"), Value("1499.00"));
}

TEST(OrderBookTest, OrdersMadeAtTheSameTimeHaveIdsOfTheirOwn) {
    MemoryOrderBook book;
    std::vector<std::vector<std::string>> ids(4);
    std::vector<std::jthread> threads;
    for (auto& own : ids) {
        threads.emplace_back([&] {
            for (int i = 0; i < 50; ++i) {
                const OrderRecord order = newOrder(book);
                book.recordPayment(order.orderId, {"T", "UPI", PaymentStatus::success, ""});
                own.push_back(order.orderId);
            }
        });
    }
    threads.clear();
    std::set<std::string> all;
    for (const auto& own : ids)
        all.insert(own.begin(), own.end());
    EXPECT_EQ(all.size(), 200U);
}

}  // namespace
}  // namespace zorvik::development
