#include "platform/headless/ScriptedWebEngine.h"

#include <gtest/gtest.h>

#include "platform/headless/HeadlessApplication.h"
#include "platform/headless/HeadlessScheduler.h"

namespace zorvik::platform::headless {

TEST(ScriptedWebEngineTest, WhatIsNotScriptedFailsAndSaysWhatItWas) {
    HeadlessScheduler scheduler;
    ScriptedWebEngine engine{scheduler};
    std::string failure;
    const auto page = engine.makePage({}, {});
    page->evaluate("pay()",
                   [&](const auto& result) { failure = result.error().localizedDescription; });
    scheduler.runUntilIdle();
    EXPECT_NE(failure.find("pay()"), std::string::npos) << failure;
}

TEST(ScriptedWebEngineTest, AnAnswerWaitsUntilItIsGivenOrThePageCannotGiveItAnyMore) {
    HeadlessScheduler scheduler;
    ScriptedWebEngine engine{scheduler};
    engine.onEvaluate([](const std::string&) { return ScriptValue(); });
    engine.setAnswers(ScriptedWebEngine::Answers::waiting);
    auto page = engine.makePage({}, {});
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
