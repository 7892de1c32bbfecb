#include "platform/services/Environment.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "platform/dispatch/Clock.h"
#include "platform/dispatch/DispatchQueue.h"
#include "platform/dispatch/MainThread.h"
#include "platform/headless/HeadlessPlatform.h"
#include "platform/uikit/UIApplication.h"
#include "platform/uikit/UIViewController.h"
#include "platform/uikit/UserDefaults.h"

namespace zorvik::platform {
namespace {

using headless::HeadlessPlatform;
using headless::HeadlessScheduler;
using testing::ElementsAre;

// Notes on which thread it was destroyed.
struct Recorder {
    explicit Recorder(std::vector<std::thread::id>& destructionLog) : log(destructionLog) {}
    ~Recorder() {
        log.push_back(std::this_thread::get_id());
        if (atEnd) atEnd();
    }

    std::vector<std::thread::id>& log;
    std::function<void()> atEnd;
};

TEST(EnvironmentTest, APortIsInForceFromConstructionToDestruction) {
    EXPECT_FALSE(Environment::isInstalled());
    for (int round = 0; round < 2; ++round) {
        HeadlessPlatform platform;
        EXPECT_TRUE(Environment::isInstalled());
        EXPECT_EQ(&Environment::scheduler(), &platform.scheduler());
        platform.scheduler().setNow(12.5);
        EXPECT_EQ(currentDate(), Date{12.5});
    }
    EXPECT_FALSE(Environment::isInstalled());
}

TEST(EnvironmentDeathTest, MisuseEndsTheProcessWithAMessage) {
    EXPECT_DEATH(Environment::scheduler(), "no port is installed");
    const HeadlessPlatform platform;
    EXPECT_DEATH(const HeadlessPlatform second, "installed already");
    const auto global = DispatchQueue::global(DispatchQueue::QualityOfService::background);
    EXPECT_DEATH(global.asyncAfter(1, [] {}), "main queue only");
#ifndef NDEBUG
    EXPECT_DEATH(std::thread(assertMainThread).join(), "off the main thread");
#endif
}

TEST(DispatchQueueTest, EachQueueRunsItsOwnTasks) {
    HeadlessPlatform platform;
    std::vector<std::string> log;
    const auto global = DispatchQueue::global(DispatchQueue::QualityOfService::background);
    global.async([&] { log.push_back("background"); });
    DispatchQueue::main().asyncAfter(1, [&] { log.push_back("later"); });
    DispatchQueue::main().async([&] { log.push_back("main"); });
    platform.scheduler().advanceBy(1);
    EXPECT_THAT(log, ElementsAre("main", "later"));
    platform.scheduler().settle();
    EXPECT_THAT(log, ElementsAre("main", "later", "background"));
}

TEST(MainThreadTest, AnObjectIsDestroyedOnTheMainThreadWhereverItsLastReferenceDrops) {
    std::vector<std::thread::id> log;
    {
        HeadlessPlatform platform;
        makeOnMainThread<Recorder>(log).reset();
        EXPECT_EQ(log.size(), 1U);

        auto object = makeOnMainThread<Recorder>(log);
        std::thread([&object] { object.reset(); }).join();
        EXPECT_EQ(log.size(), 1U);
        platform.scheduler().runOneTurn();
        EXPECT_EQ(log.size(), 2U);

        // The port may end before that turn.
        object = makeOnMainThread<Recorder>(log);
        std::thread([&object] { object.reset(); }).join();
        EXPECT_EQ(log.size(), 2U);
    }
    makeOnMainThread<Recorder>(log).reset();
    EXPECT_EQ(log, std::vector(4, std::this_thread::get_id()));
}

TEST(HeadlessPlatformTest, WhatIsDroppedAtTheEndMayStillUseThePort) {
    std::vector<std::thread::id> log;
    {
        const HeadlessPlatform platform(HeadlessScheduler::Background::threads);
        const auto makeObject = [&log] {
            auto object = makeOnMainThread<Recorder>(log);
            object->atEnd = [&log] {
                UserDefaults::standard().removeObject("key");
                DispatchQueue::main().async([last = makeOnMainThread<Recorder>(log)] { FAIL(); });
            };
            return object;
        };
        DispatchQueue::main().async([object = makeObject()] { FAIL(); });
        DispatchQueue::main().asyncAfter(1, [object = makeObject()] { FAIL(); });
        DispatchQueue::global(DispatchQueue::QualityOfService::background)
            .async([object = makeObject()] {});
    }
    EXPECT_EQ(log, std::vector(6, std::this_thread::get_id()));
}

TEST(HeadlessPlatformTest, AControllerStillShownGoesWhileThePortIsInstalled) {
    struct Screen : UIViewController {
        ~Screen() override { UserDefaults::standard().removeObject("key"); }
    };
    std::weak_ptr<Screen> screen;
    {
        HeadlessPlatform platform;
        UIViewController presenter;
        auto shown = makeOnMainThread<Screen>();
        screen = shown;
        platform.stage().show(std::move(shown), presenter, false, {});
        platform.scheduler().runUntilIdle();
        EXPECT_FALSE(screen.expired());
    }
    EXPECT_TRUE(screen.expired());
}

TEST(HeadlessApplicationTest, OnlyInstalledSchemesOpenAndAnswersComeInALaterTurn) {
    HeadlessPlatform platform;
    platform.application().install("UPI");
    platform.application().install("refused", false);
    platform.application().install("gone");
    platform.application().uninstall("Gone");
    std::string answers;
    for (const char* text : {"upi://pay", "Refused:x", "gone:x", "relative"}) {
        const URL url = *URL::parse(text);
        answers += UIApplication::shared().canOpenURL(url) ? "can " : "cannot ";
        UIApplication::shared().open(url, [&](bool opened) { answers += opened ? "+" : "-"; });
    }
    EXPECT_EQ(answers, "can can cannot cannot ");
    platform.scheduler().runUntilIdle();
    EXPECT_EQ(answers, "can can cannot cannot +---");
    EXPECT_THAT(platform.application().openedUrls(),
                ElementsAre("upi://pay", "Refused:x", "gone:x", "relative"));
}

TEST(UserDefaultsTest, KeepsTypedEntries) {
    HeadlessPlatform platform;
    UserDefaults& defaults = UserDefaults::standard();
    defaults.set(std::string("text"), "a");
    defaults.set(Date{0}, "b");
    EXPECT_EQ(defaults.string("a"), "text");
    EXPECT_EQ(defaults.string("b"), std::nullopt);
    EXPECT_EQ(description(*defaults.object("b")), "1970-01-01 00:00:00 +0000");
    defaults.set(true, "a");
    EXPECT_EQ(defaults.object("a"), DefaultsValue(true));
    defaults.removeObject("a");
    defaults.removeObject("absent");
    EXPECT_EQ(defaults.object("a"), std::nullopt);
    EXPECT_THAT(platform.defaults().removals(), ElementsAre("a", "absent"));
}

}  // namespace
}  // namespace zorvik::platform
