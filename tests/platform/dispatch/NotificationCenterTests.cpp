#include "platform/uikit/NotificationCenter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/headless/HeadlessPlatform.h"
#include "platform/uikit/UIApplication.h"

namespace zorvik::platform {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Observer {
    Observer(std::string observerName, std::vector<std::string>& observerLog)
        : name(std::move(observerName)), log(observerLog) {}

    void happened() {
        log.push_back(name);
        if (then) then();
    }

    std::string name;
    std::vector<std::string>& log;
    std::function<void()> then;
};

class NotificationCenterTest : public testing::Test {
  protected:
    std::shared_ptr<Observer> observe(const std::string& name, const std::string& event = "event") {
        auto observer = std::make_shared<Observer>(name, log);
        center().addObserver(std::weak_ptr(observer), &Observer::happened, event);
        return observer;
    }
    static NotificationCenter& center() { return NotificationCenter::defaultCenter(); }

    headless::HeadlessPlatform platform;
    std::vector<std::string> log;
};

TEST_F(NotificationCenterTest, DeliversToTheObserversOfTheNameInOrder) {
    const auto a = observe("a");
    const auto other = observe("other", "another event");
    const auto b = observe("b");
    center().addObserver(std::weak_ptr(a), &Observer::happened, "event");
    center().post("event");
    EXPECT_THAT(log, ElementsAre("a", "b", "a"));
}

TEST_F(NotificationCenterTest, HoldsObserversWeakly) {
    auto a = observe("a");
    const std::weak_ptr<Observer> weak = a;
    a.reset();
    EXPECT_TRUE(weak.expired());
    center().post("event");
    EXPECT_THAT(log, IsEmpty());
    center().addObserver(weak, &Observer::happened, "event");
    center().post("event");
    EXPECT_THAT(log, IsEmpty());
}

TEST_F(NotificationCenterTest, AnObserverRemovedInADeliveryIsNotCalledAnyMore) {
    const auto a = observe("a");
    auto b = observe("b");
    auto c = observe("c");
    center().addObserver(std::weak_ptr(a), &Observer::happened, "event");
    a->then = [&] {
        center().removeObserver(a.get());
        center().removeObserver(b.get());
        c.reset();
    };
    center().post("event");
    EXPECT_THAT(log, ElementsAre("a"));
}

TEST_F(NotificationCenterTest, AnObserverAddedInADeliveryHearsTheNextPost) {
    const auto a = observe("a");
    std::vector<std::shared_ptr<Observer>> added;
    a->then = [&] {
        for (int count = 0; count < 20; ++count)
            added.push_back(observe("added"));
        a->then = nullptr;
    };
    center().post("event");
    EXPECT_THAT(log, ElementsAre("a"));
    center().post("event");
    EXPECT_EQ(log.size(), 1U + 1 + 20);
}

TEST_F(NotificationCenterTest, HearsOfEveryReturnOfTheApplicationInAMainTurn) {
    const auto a = observe("active", UIApplication::didBecomeActiveNotification);
    platform.application().becomeActive();
    platform.application().becomeActive();
    EXPECT_THAT(log, IsEmpty());
    EXPECT_TRUE(platform.scheduler().runOneTurn());
    EXPECT_THAT(log, ElementsAre("active"));
    platform.scheduler().runUntilIdle();
    EXPECT_THAT(log, ElementsAre("active", "active"));
}

}  // namespace
}  // namespace zorvik::platform
