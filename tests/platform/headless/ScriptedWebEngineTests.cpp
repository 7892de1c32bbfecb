#include "platform/headless/ScriptedWebEngine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/headless/HeadlessScheduler.h"

namespace zorvik::platform::headless {

using testing::ElementsAre;
using testing::HasSubstr;

class Events : public WebPageDelegate {
  public:
    std::vector<std::string> seen;
    std::string failure;
    bool holdsQuestions = false;
    std::function<void(NavigationDecision)> question;

    void pageAsksToNavigate(const std::optional<URL>& url,
                            std::function<void(NavigationDecision)> decide) override {
        seen.push_back("ask " + url.value().absoluteString());
        if (holdsQuestions) {
            question = std::move(decide);
        } else {
            decide(NavigationDecision::allow);
        }
    }
    void pageStarted() override { seen.push_back("start"); }
    void pageCommitted() override { seen.push_back("commit"); }
    void pageFinished() override { seen.push_back("finish"); }
    void pageFailedBeforeCommit(const Error& error) override {
        seen.push_back("fail early");
        failure = error.localizedDescription;
    }
    void pageFailedAfterCommit(const Error& error) override {
        seen.push_back("fail late");
        failure = error.localizedDescription;
    }
    void pagePosted(const std::string&, const ScriptValue&) override { seen.push_back("message"); }
    void pageAsksWithPanel(const ScriptPanel&, std::function<void(ScriptPanelAnswer)>) override {}
};

class ScriptedWebEngineTest : public testing::Test {
  protected:
    void load(double timeout = 60) {
        URLRequest request{URL::parse("https://shop.example/pay").value()};
        request.timeoutInterval = timeout;
        page->load(request);
    }

    HeadlessScheduler scheduler;
    ScriptedWebEngine engine{scheduler};
    const std::shared_ptr<Events> events = std::make_shared<Events>();
    const std::unique_ptr<WebPage> page = engine.makePage({}, events);
};

TEST_F(ScriptedWebEngineTest, WhatIsNotScriptedFailsAndSaysWhatItWas) {
    load();
    std::string failure;
    page->evaluate("pay()",
                   [&](const auto& result) { failure = result.error().localizedDescription; });
    scheduler.runUntilIdle();
    EXPECT_THAT(events->seen, ElementsAre("ask https://shop.example/pay", "start", "fail early"));
    EXPECT_THAT(events->failure, HasSubstr("https://shop.example/pay"));
    EXPECT_THAT(failure, HasSubstr("pay()"));
}

TEST_F(ScriptedWebEngineTest, EachStepIsATurnOfItsOwn) {
    engine.onLoad([](const auto&) { return ScriptedLoad{}; });
    load();
    for (const std::size_t steps : {1u, 2u, 3u, 4u}) {
        ASSERT_TRUE(scheduler.runOneTurn());
        EXPECT_EQ(events->seen.size(), steps);
    }
    EXPECT_FALSE(scheduler.runOneTurn());
    EXPECT_EQ(scheduler.pendingCount(), 0u) << "no time-out lingers";
}

TEST_F(ScriptedWebEngineTest, TheTimeOutCountsFromTheLastStep) {
    engine.onLoad([](const auto&) {
        ScriptedLoad slow;
        slow.redirects = {"https://shop.example/bank"};
        slow.ending = ScriptedLoad::Ending::hangAfterCommit;
        return slow;
    });
    load(60);
    scheduler.runOneTurn();
    events->holdsQuestions = true;
    scheduler.advanceBy(59);
    events->question(NavigationDecision::allow);
    scheduler.advanceBy(59);
    EXPECT_EQ(events->seen.back(), "commit");
    scheduler.advanceBy(1);
    EXPECT_EQ(events->seen.back(), "fail late");
    EXPECT_EQ(events->failure, "The request timed out.");
}

TEST_F(ScriptedWebEngineTest, AMessageUnderWayIsDroppedThoughItsNameIsAddedAgain) {
    engine.page().addMessageHandler("name");
    EXPECT_TRUE(engine.page().post("name", {}));
    engine.page().removeMessageHandler("name");
    EXPECT_FALSE(engine.page().post("name", {}));
    engine.page().addMessageHandler("name");
    scheduler.runUntilIdle();
    EXPECT_TRUE(events->seen.empty());
}

TEST_F(ScriptedWebEngineTest, TheScriptItselfMayStopTheLoad) {
    engine.onLoad([&](const auto&) {
        page->stopLoading();
        return ScriptedLoad{};
    });
    load();
    scheduler.runUntilIdle();
    EXPECT_EQ(events->seen.back(), "fail early");
    EXPECT_EQ(scheduler.pendingCount(), 0u);
}

TEST_F(ScriptedWebEngineTest, APageMayOutliveItsEngine) {
    auto shortLived = std::make_unique<ScriptedWebEngine>(scheduler);
    const auto orphan = shortLived->makePage({}, events);
    orphan->load({URL::parse("https://shop.example/pay").value()});
    shortLived.reset();
    orphan->stopLoading();
    scheduler.runUntilIdle();
    EXPECT_TRUE(events->seen.empty());
}

}  // namespace zorvik::platform::headless
