#include "platform/headless/ScriptedWebEngine.h"

#include <gtest/gtest.h>

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

}  // namespace zorvik::platform::headless
