#include "platform/headless/ScriptedWebEngine.h"

#include <gtest/gtest.h>

#include "platform/headless/HeadlessApplication.h"
#include "platform/headless/HeadlessScheduler.h"

namespace zorvik::platform::headless {

struct Events : WebPageDelegate {
    std::string seen;

    void pageAsksToNavigate(const std::optional<URL>&,
                            std::function<void(NavigationDecision)> decide) override {
        seen += "ask ";
        decide(NavigationDecision::allow);
    }
    void pageStarted() override { seen += "start "; }
    void pageCommitted() override { seen += "commit "; }
    void pageFinished() override { seen += "finish "; }
    void pageFailedBeforeCommit(const Error& error) override { seen += error.localizedDescription; }
    void pageFailedAfterCommit(const Error& error) override { seen += error.localizedDescription; }
    void pagePosted(const std::string&, const ScriptValue&) override { seen += "message "; }
    void pageAsksWithPanel(const ScriptPanel&, std::function<void(ScriptPanelAnswer)>) override {}
};

TEST(ScriptedWebEngineTest, WhatIsNotScriptedFailsAndSaysWhatItWas) {
    HeadlessScheduler scheduler;
    ScriptedWebEngine engine{scheduler};
    const auto events = std::make_shared<Events>();
    const auto page = engine.makePage({}, events);
    std::string failure;
    page->load({URL::parse("https://shop.example/pay").value()});
    page->evaluate("pay()",
                   [&](const auto& result) { failure = result.error().localizedDescription; });
    scheduler.runUntilIdle();
    EXPECT_NE(events->seen.find("https://shop.example/pay"), std::string::npos) << events->seen;
    EXPECT_NE(failure.find("pay()"), std::string::npos) << failure;
}

TEST(ScriptedWebEngineTest, AnAnswerWaitsUntilItIsGivenOrThePageCannotGiveItAnyMore) {
    HeadlessScheduler scheduler;
    ScriptedWebEngine engine{scheduler};
    engine.onEvaluate([](const std::string&) { return ScriptValue(); });
    engine.setAnswers(ScriptedWebEngine::Answers::waiting);
    const auto events = std::make_shared<Events>();
    auto page = engine.makePage({}, events);
    std::string outcomes;
    const auto evaluate = [&](const std::string& name) {
        page->evaluate(name, [&outcomes, name](const auto& result) {
            outcomes += name + (result ? " " : " failed ");
        });
        scheduler.runUntilIdle();
    };
    for (const char* name : {"one", "two", "three"})
        evaluate(name);
    EXPECT_EQ(engine.waitingAnswers(), 3U);
    EXPECT_TRUE(engine.giveAnswer(1));
    scheduler.runUntilIdle();
    EXPECT_EQ(outcomes, "two ");
    engine.page().killWebProcess();
    scheduler.runUntilIdle();
    EXPECT_EQ(outcomes, "two one failed three failed ");
    outcomes.clear();
    evaluate("four");
    page.reset();
    scheduler.runUntilIdle();
    EXPECT_EQ(outcomes, "four failed ");
    EXPECT_FALSE(engine.giveAnswer());
}

TEST(HeadlessApplicationTest, ALaunchWaitsUntilItIsConfirmed) {
    HeadlessScheduler scheduler;
    HeadlessApplication application{scheduler};
    application.install("pay");
    application.setAnswers(HeadlessApplication::Answers::waiting);
    std::string outcomes;
    for (const char* address : {"pay://one", "other://two"})
        application.open(*URL::parse(address),
                         [&](bool opened) { outcomes += opened ? "y" : "n"; });
    scheduler.runUntilIdle();
    EXPECT_EQ(outcomes, "");
    EXPECT_TRUE(application.giveAnswer());
    EXPECT_TRUE(application.giveAnswer());
    EXPECT_FALSE(application.giveAnswer());
    scheduler.runUntilIdle();
    EXPECT_EQ(outcomes, "yn");
}

}  // namespace zorvik::platform::headless
