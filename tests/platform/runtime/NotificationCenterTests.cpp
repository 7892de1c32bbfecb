#include "platform/runtime/NotificationCenter.h"

#include <gtest/gtest.h>

#include "platform/headless/HeadlessPlatform.h"

namespace zorvik::platform {

struct Observer {
    int heard = 0;
    std::function<void()> then;
    void happened() {
        ++heard;
        if (then) then();
    }
};

TEST(NotificationCenterTest, ObserversMayComeGoAndExpireInADelivery) {
    const headless::HeadlessPlatform platform;
    NotificationCenter& center = NotificationCenter::defaultCenter();
    const auto first = std::make_shared<Observer>();
    const auto removed = std::make_shared<Observer>();
    const auto added = std::make_shared<Observer>();
    auto expiring = std::make_shared<Observer>();
    const auto observe = [&](const std::shared_ptr<Observer>& observer) {
        center.addObserver(std::weak_ptr(observer), &Observer::happened, "event");
    };
    for (const auto& observer : {first, removed, expiring, first})
        observe(observer);
    first->then = [&] {
        center.removeObserver(first.get());
        center.removeObserver(removed.get());
        expiring.reset();
        for (int count = 0; count < 20; ++count)
            observe(added);
    };
    center.post("event");
    EXPECT_EQ(added->heard, 0);
    center.post("event");
    EXPECT_EQ(first->heard, 1);
    EXPECT_EQ(removed->heard, 0);
    EXPECT_EQ(added->heard, 20);
}

}  // namespace zorvik::platform
