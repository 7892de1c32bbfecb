#include "core/development/DevelopmentCore.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <cstdlib>
#include <deque>
#include <future>
#include <stdexcept>

#include "core/EventConstants.h"
#include "core/EventLogging.h"
#include "core/ZorvikUPIAppDetector.h"

namespace zorvik::development {

using platform::Dictionary;
using platform::Error;
using platform::Result;
using testing::HasSubstr;

// Runs once every object of static storage is gone, as a background thread may: it is registered
// before any of them is made.
bool logsAtTheEnd = false;
[[gnu::constructor(101)]] void registerTheEnd() {
    std::atexit([] {
        if (logsAtTheEnd)
            EventLoggingUtils::safeLogEvent(EventConstants::UPDATE_ORDER_PAYLOAD, "o", {}, {}, {},
                                            "1");
    });
}

struct StandardErrorSink : EventSink {
    void record(const RecordedEvent& event) override {
        std::fprintf(stderr, "recorded %s\n", event.eventName.c_str());
    }
};

// One core with a queue that runs when told to.
class DevelopmentCoreTest : public testing::Test {
  protected:
    DevelopmentCoreTest() {
        configuration_.upiApps = {
            {{"NILGIRI", "Nilgiri Pay", "app.nilgiri", std::nullopt}, "Nilgiri-Return"},
            {{"QUIET", "Quiet", "app.quiet", std::nullopt}, ""}};
        configuration_.runInBackground = [this](std::function<void()> task) {
            queue_.push_back(std::move(task));
        };
        configuration_.orderBook = book_;
        core_.configure(configuration_);
    }

    void runQueue() {
        for (; !queue_.empty(); queue_.pop_front())
            queue_.front()();
    }

    Result<OrderResponse> update(const std::string& token, const std::string& orderId) {
        std::vector<Result<OrderResponse>> answers;
        core_.updateOrderDetails(token, orderId, "callback_mobile", "ios", "2",
                                 [&](const auto& result) { answers.push_back(result); });
        EXPECT_TRUE(answers.empty()) << "completed inside the call";
        runQueue();
        return answers.at(0);
    }

    DevelopmentCore& core_ = DevelopmentCore::shared();
    std::shared_ptr<MemoryOrderBook> book_ = std::make_shared<MemoryOrderBook>();
    std::deque<std::function<void()>> queue_;
    Configuration configuration_;
};

TEST_F(DevelopmentCoreTest, AnEnquiryTellsOfTheNamedPaymentElseOfTheOneThatDecided) {
    const OrderRecord order = book_->create({149900, "INR", {}, {}}).value();
    book_->recordPayment(order.orderId, {"T1", "UPI", PaymentStatus::failed, "Declined"});
    book_->recordPayment(order.orderId, {"T2", "UPI", PaymentStatus::success, ""});
    std::string answers;
    for (const char* transactionId : {"T1", "unknown"}) {
        core_.getTransactionEnquiry(
            order.token, order.orderId, "", transactionId, [&](const auto& result) {
                const Dictionary& fields = result.value().fields;
                EXPECT_EQ(result.value().order->status, "SUCCESS");
                for (const char* key : {"transaction_id", "payment_status", "payment_message"})
                    answers += *fields.at(key).string() + " ";
            });
    }
    runQueue();
    EXPECT_EQ(answers, "T1 FAILED Declined T2 SUCCESS  ");
}

TEST_F(DevelopmentCoreTest, AFailureOnDemandHoldsForItsOperationUntilItIsTakenBack) {
    const OrderRecord order = book_->create({100, "INR", {}, {}}).value();
    const Error error{"test", 7, "The service is closed"};
    core_.failOn(Operation::updateOrderDetails, error);
    std::size_t apps = 0;
    ZorvikUPIAppDetector::getUPIAppsList("t",
                                         [&](const auto& result) { apps = result.value().size(); });
    EXPECT_EQ(update(order.token, order.orderId).error(), error);
    EXPECT_EQ(apps, 2U);
    core_.failOn(Operation::updateOrderDetails, std::nullopt);
    EXPECT_TRUE(update(order.token, order.orderId));
    EXPECT_THAT(update("a.b.c", order.orderId).error().localizedDescription,
                HasSubstr("does not belong"));
}

TEST_F(DevelopmentCoreTest, OnlyAddressesOfTheReturnSchemesAreReturns) {
    for (const char* url : {"nilgiri-return://done?status=success", "NILGIRI-RETURN:anything"})
        EXPECT_TRUE(ZorvikUPIAppDetector::isUPIAppReturnURL(url)) << url;
    for (const char* url : {"nilgiri-return", "nilgiri-returns://done", "://done", "",
                            "https://shop.example/?next=nilgiri-return://done"})
        EXPECT_FALSE(ZorvikUPIAppDetector::isUPIAppReturnURL(url)) << url;
}

TEST_F(DevelopmentCoreTest, AnEventLoggedAsTheProcessEndsIsRecorded) {
    configuration_.eventSink = std::make_shared<StandardErrorSink>();
    core_.configure(configuration_);
    logsAtTheEnd = true;
    EXPECT_EXIT(std::exit(0), testing::ExitedWithCode(0), "recorded UPDATE_ORDER_PAYLOAD");
    logsAtTheEnd = false;
}

TEST_F(DevelopmentCoreTest, ASinkThatThrowsLosesItsEventAndNothingElse) {
    struct ThrowingSink : EventSink {
        int events = 0;
        void record(const RecordedEvent&) override {
            ++events;
            throw std::runtime_error("no room");
        }
    };
    const auto sink = std::make_shared<ThrowingSink>();
    configuration_.eventSink = sink;
    DevelopmentCore::shared().configure(configuration_);
    EventLoggingUtils::safeLogEvent(EventConstants::PAYMENT_STATUS, "o", {}, {}, {}, "1");
    EXPECT_EQ(sink->events, 1);
}

TEST_F(DevelopmentCoreTest, WithoutAConfigurationEveryCallStillCompletesOnceWithAnError) {
    core_.configure({});
    std::promise<Error> answers[2];
    core_.updateOrderDetails("t", "o", "", "", "",
                             [&](const auto& result) { answers[0].set_value(result.error()); });
    ZorvikUPIAppDetector::getUPIAppsList(
        "t", [&](const auto& result) { answers[1].set_value(result.error()); });
    for (auto& answer : answers)
        EXPECT_THAT(answer.get_future().get().localizedDescription,
                    HasSubstr("not been configured"));
}

}  // namespace zorvik::development
