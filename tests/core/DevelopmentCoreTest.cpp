#include "core/development/DevelopmentCore.h"

#include <gmock/gmock.h>

#include <atomic>
#include <deque>
#include <future>
#include <thread>

#include "core/APIUtils.h"
#include "core/EventLogging.h"
#include "core/ZorvikUPIAppDetector.h"

namespace zorvik::development {
namespace {

using platform::Dictionary;
using platform::Error;
using platform::Result;
using platform::Value;
using testing::HasSubstr;

// One core with a queue that runs when told to.
class DevelopmentCoreTest : public testing::Test {
  protected:
    DevelopmentCoreTest() { core_.configure(configuration()); }

    Configuration configuration() {
        Configuration configuration;
        configuration.webViewViewUrl = "http://127.0.0.1/checkout?token=%@";
        configuration.webViewRespCheckUrl = "http://127.0.0.1/response";
        configuration.upiApps = {
            {{"NILGIRI", "Nilgiri Pay", "app.nilgiri", std::nullopt}, "Nilgiri-Return"},
            {{"QUIET", "Quiet", "app.quiet", std::nullopt}, ""},
        };
        configuration.runInBackground = [this](std::function<void()> task) {
            queue_.push_back(std::move(task));
        };
        configuration.eventSink = sink_;
        configuration.orderBook = book_;
        return configuration;
    }

    void runQueue() {
        while (!queue_.empty()) {
            const auto task = std::move(queue_.front());
            queue_.pop_front();
            task();
        }
    }

    // The answers of one call, once the queue has run; empty before.
    template <class T>
    struct Answers {
        std::vector<Result<T>> all;
        std::function<void(const Result<T>&)> completion() {
            return [this](const Result<T>& result) { all.push_back(result); };
        }
    };

    Answers<OrderResponse> updateOf(const std::string& token, const std::string& orderId) {
        Answers<OrderResponse> answers;
        core_.updateOrderDetails(token, orderId, "callback_mobile", "ios", "2",
                                 answers.completion());
        EXPECT_TRUE(answers.all.empty()) << "completed inside the call";
        runQueue();
        return answers;
    }

    DevelopmentCore& core_ = DevelopmentCore::shared();
    std::shared_ptr<MemoryEventSink> sink_ = std::make_shared<MemoryEventSink>();
    std::shared_ptr<MemoryOrderBook> book_ = std::make_shared<MemoryOrderBook>();
    std::deque<std::function<void()>> queue_;
};

TEST_F(DevelopmentCoreTest, AnEnquiryAnswersWhatHappenedToTheOrder) {
    Answers<OrderResponse> created;
    core_.createOrder(1499, "INR", {Dictionary{{"name", "Lamp"}}}, std::nullopt,
                      created.completion());
    runQueue();
    ASSERT_EQ(created.all.size(), 1U);
    const OrderResponse order = created.all[0].value();
    ASSERT_EQ(updateOf(*order.orderToken, *order.orderId).all.size(), 1U);
    book_->recordPayment(*order.orderId, {"T1", "UPI", PaymentStatus::failed, "Declined"});
    book_->recordPayment(*order.orderId, {"T2", "UPI", PaymentStatus::success, ""});

    Answers<TransactionEnquiryResponse> enquired;
    core_.getTransactionEnquiry(*order.orderToken, *order.orderId, "INV", "T2",
                                enquired.completion());
    runQueue();
    ASSERT_EQ(enquired.all.size(), 1U);
    const TransactionEnquiryResponse& answer = enquired.all[0].value();
    EXPECT_EQ(answer.order->status, "SUCCESS");
    EXPECT_EQ(answer.fields.at("order"), Value(Dictionary{{"status", "SUCCESS"}}));
    EXPECT_EQ(answer.fields.at("transaction_id"), Value("T2"));
    EXPECT_EQ(answer.fields.at("invoice_id"), Value("INV"));
    EXPECT_EQ(answer.fields.at("amount"), Value("1499.00"));
}

TEST_F(DevelopmentCoreTest, AShopOrderTakesItsAmountAsText) {
    Answers<Dictionary> good;
    Answers<Dictionary> bad;
    core_.createShopOrder("INR", "12.50", "P1", true, "EXPRESS", "UPI", "", {}, good.completion());
    core_.createShopOrder("INR", "12,50", "P1", true, "EXPRESS", "UPI", "", {}, bad.completion());
    runQueue();
    EXPECT_EQ(good.all.at(0).value().at("amount"), Value("12.50"));
    EXPECT_EQ(good.all.at(0).value().at("product_id"), Value("P1"));
    EXPECT_THAT(bad.all.at(0).error().localizedDescription, HasSubstr("amount"));
}

TEST_F(DevelopmentCoreTest, AnUnknownTokenOrAnEmptyOrderIdFailsWithAClearMessage) {
    const OrderRecord order = book_->create({100, "INR", {}, {}}).value();
    EXPECT_THAT(updateOf("a.b.c", order.orderId).all.at(0).error().localizedDescription,
                HasSubstr("does not belong"));
    EXPECT_EQ(updateOf(order.token, "").all.at(0).error().localizedDescription,
              "The order id is empty");
}

TEST_F(DevelopmentCoreTest, AFailureOnDemandHoldsForItsOperationUntilItIsTakenBack) {
    const OrderRecord order = book_->create({100, "INR", {}, {}}).value();
    const Error error{"test", 7, "The service is closed"};
    core_.failOn(Operation::updateOrderDetails, error);
    Answers<std::vector<UPIAppsVO>> apps;
    ZorvikUPIAppDetector::getUPIAppsList(order.token, apps.completion());
    EXPECT_EQ(updateOf(order.token, order.orderId).all.at(0).error(), error);
    EXPECT_EQ(apps.all.at(0).value().size(), 2U);
    core_.failOn(Operation::updateOrderDetails, std::nullopt);
    EXPECT_TRUE(updateOf(order.token, order.orderId).all.at(0));
}

TEST_F(DevelopmentCoreTest, ACallKeepsToTheConfigurationUnderWhichItWasMade) {
    Answers<std::vector<UPIAppsVO>> apps;
    ZorvikUPIAppDetector::getUPIAppsList("t", apps.completion());
    Configuration next = configuration();
    next.upiApps.clear();
    core_.configure(next);
    runQueue();
    EXPECT_EQ(apps.all.at(0).value().size(), 2U);
    EXPECT_FALSE(ZorvikUPIAppDetector::isUPIAppReturnURL("nilgiri-return://x"));
}

TEST_F(DevelopmentCoreTest, OnlyAddressesOfTheReturnSchemesAreReturns) {
    const std::vector<std::pair<std::string, bool>> rows{
        {"nilgiri-return://done?status=success", true},
        {"NILGIRI-RETURN:anything", true},
        {"nilgiri-return", false},
        {"nilgiri-returns://done", false},
        {"https://shop.example/?next=nilgiri-return://done", false},
        {"://done", false},
        {"", false},
    };
    for (const auto& [url, isReturn] : rows) {
        EXPECT_EQ(ZorvikUPIAppDetector::isUPIAppReturnURL(url), isReturn) << url;
    }
}

TEST_F(DevelopmentCoreTest, EventsCarryTheCodeOfTheHostInForceWhenTheyAreLogged) {
    EventLoggingUtils::safeLogEvent("BEFORE", {}, {}, {}, {}, "2");
    EventLoggingService::setAppCode("shop");
    EventLoggingUtils::safeLogEvent("AFTER", "O", "T", "S", Dictionary{{"a", true}}, "2");
    const RecordedEvent before{"BEFORE", {}, {}, {}, {}, "2", {}};
    const RecordedEvent after{"AFTER", "O", "T", "S", Dictionary{{"a", true}}, "2", "shop"};
    EXPECT_THAT(sink_->events(), testing::ElementsAre(before, after));
}

TEST_F(DevelopmentCoreTest, ASinkThatThrowsNeverReachesTheCaller) {
    struct ThrowingSink : EventSink {
        void record(const RecordedEvent&) override { throw std::runtime_error("full"); }
    };
    Configuration next = configuration();
    next.eventSink = std::make_shared<ThrowingSink>();
    core_.configure(next);
    EXPECT_NO_FATAL_FAILURE(EventLoggingUtils::safeLogEvent("E", {}, {}, {}, {}, "2"));
}

TEST_F(DevelopmentCoreTest, WithoutAConfigurationEveryCallStillCompletesOnceWithAnError) {
    core_.configure({});
    EXPECT_EQ(APIUtils::webViewViewUrl(), "");
    EventLoggingUtils::safeLogEvent("DROPPED", {}, {}, {}, {}, "2");
    std::promise<Error> update;
    std::promise<Error> apps;
    core_.updateOrderDetails("t", "o", "", "", "", [&](const Result<OrderResponse>& result) {
        update.set_value(result.error());
    });
    ZorvikUPIAppDetector::getUPIAppsList(
        "t", [&](const Result<std::vector<UPIAppsVO>>& result) { apps.set_value(result.error()); });
    EXPECT_THAT(update.get_future().get().localizedDescription, HasSubstr("not been configured"));
    EXPECT_THAT(apps.get_future().get().localizedDescription, HasSubstr("not been configured"));
}

TEST_F(DevelopmentCoreTest, CallsEventsAndNewConfigurationsFromManyThreadsAllComplete) {
    std::atomic<int> completed = 0;
    Configuration threaded = configuration();
    threaded.runInBackground = [](const std::function<void()>& task) { std::thread(task).join(); };
    core_.configure(threaded);
    const OrderRecord order = book_->create({100, "INR", {}, {}}).value();
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < 25; ++i) {
                core_.updateOrderDetails(order.token, order.orderId, "", "", "",
                                         [&](const Result<OrderResponse>&) { ++completed; });
                core_.getTransactionEnquiry(
                    order.token, order.orderId, "", "",
                    [&](const Result<TransactionEnquiryResponse>&) { ++completed; });
                EventLoggingUtils::safeLogEvent("E", {}, {}, {}, {}, "2");
                EventLoggingService::setAppCode(std::to_string(thread));
                APIUtils::setZorvikTechUrl(std::to_string(i));
                if (thread == 0) core_.configure(threaded);
                if (thread == 1) core_.failOn(Operation::getTransactionEnquiry, Error{});
            }
        });
    }
    threads.clear();
    EXPECT_EQ(completed, 200);
    EXPECT_EQ(sink_->count(), 100U);
    EXPECT_EQ(core_.zorvikTechUrl(), "24");
}

}  // namespace
}  // namespace zorvik::development
