#include <thread>

#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

// Background tasks run on two threads of their own while the main thread goes on. What these tests
// look for is mostly for a race detector to find.
class ThreadsTest : public CheckoutTest {
  protected:
    ThreadsTest() : CheckoutTest(Background::threads) {}
};

TEST_F(ThreadsTest, TheDelegateMayChangeWhileACheckoutsStartIsLogged) {
    const auto other = std::make_shared<Receiver>();
    for (int round = 0; round < 200; ++round) {
        sdk.checkout(presenter, {});
        sdk.setDelegate(other);
        sdk.setDelegate({});
        sdk.setDelegate(host);
    }
    scheduler.settle();
    EXPECT_THAT(seen("event"), SizeIs(400));
    EXPECT_THAT(seen("event"), Each(testing::AnyOf(HasSubstr("\"proxy_delegate_present\": "),
                                                   HasSubstr("No orderToken provided"))));
}

TEST_F(ThreadsTest, OptionsMayChangeWhileEventsAreLogged) {
    openScreen(optionsOf("token-0"));
    for (int round = 0; round < 200; ++round) {
        screen()->swipeBackDetected();
        for (int change = 0; change < 50; ++change) {
            screen()->setOptions(optionsOf("token-" + std::to_string(change)));
        }
        scheduler.runOneTurn();
    }
    scheduler.settle();
    EXPECT_THAT(seen("event"), SizeIs(400));
    EXPECT_THAT(seen("event"), Each(StartsWith("BACK_BUTTON_PRESSED \"\" \"token-")));
}

TEST_F(ThreadsTest, AScreenDroppedOnAnotherThreadIsDestroyedOnTheMainOne) {
    for (int round = 0; round < 50; ++round) {
        auto alone = loadUnpresentedScreen();
        std::thread([held = alone] { held->handleDeviceBackButtonPress(); }).join();
        alone->swipeBackDetected();  // whose task may be the last to hold it
        if (round % 2 == 0) {
            std::thread([last = std::move(alone)]() mutable { last.reset(); }).join();
            EXPECT_THAT(port.web().pages(), SizeIs(1)) << "not yet destroyed";
        }
        alone.reset();
        scheduler.settle();
        ASSERT_THAT(port.web().pages(), IsEmpty());
    }
    outlivesThePort = loadUnpresentedScreen();  // dropped by the fixture after the port is gone
}

}  // namespace
}  // namespace zorvik
