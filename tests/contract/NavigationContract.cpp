#include "tests/contract/ContractTest.h"

namespace zorvik::contract {

using testing::AnyOf, testing::ElementsAre;

class NavigationContract : public ContractTest {
  protected:
    void SetUp() override { showView(); }
};

TEST_F(NavigationContract, EveryLoadReportsItsStepsInOrderAndEndsOnce) {
    const struct {
        std::string path;
        std::string expected;
        std::string addressAfterwards;
        double timeout = 60;
    } cases[] = {
        {"/refused", "ask /refused, start, fail early", "none"},
        {"/closes-before-headers", "ask /closes-before-headers, start, fail early", "none"},
        {"/no-content", "ask /no-content, start, fail early", "none"},
        {"/attachment", "ask /attachment, start, fail early", "none"},
        {"/slow-forever", "ask /slow-forever, start, fail early", "none", 0.3},
        {"/plain", "ask /plain, start, commit /plain, finish /plain", "/plain", 0.3},
        {"/error-500", "ask /error-500, start, commit /error-500, finish /error-500", "/error-500"},
        {"/redirect-twice",
         "ask /redirect-twice, start, ask /redirect-once, ask /plain, commit /plain, finish /plain",
         "/plain"},
        {"/slow-body", "ask /slow-body, start, commit /slow-body, fail late", "/slow-body", 0.3},
        {"/closes-half-way", "ask /closes-half-way, start, commit /closes-half-way, fail late",
         "/closes-half-way"},
        {"/refused", "ask /refused, start, fail early", "/closes-half-way"},
    };
    for (const auto& row : cases) {
        recorder->events.clear();
        load(row.path, row.timeout);
        EXPECT_EQ(address(), row.path) << "the new address holds right after load";
        EXPECT_TRUE(recorder->events.empty()) << "nothing is reported inside load";
        expectEvents(row.expected);
        EXPECT_EQ(address(), row.addressAfterwards) << row.expected;
    }
}

TEST_F(NavigationContract, TheAddressFollowsRedirectsAndRevertsBeforeAFailureIsReported) {
    load("/redirect-twice");
    ASSERT_TRUE(waitFor("finish /plain"));
    EXPECT_THAT(recorder->addresses, ElementsAre("/redirect-twice", "/redirect-twice",
                                                 "/redirect-once", "/plain", "/plain", "/plain"));
    load("/refused");
    ASSERT_TRUE(waitFor("fail early"));
    EXPECT_EQ(recorder->addresses.back(), "/plain");
}

TEST_F(NavigationContract, ACancelledNavigationReportsNothingMoreAndThePageLivesOn) {
    loadPlainPage();
    const struct {
        std::string cancelled;
        std::string expected;
        std::function<void()> act;
    } cases[] = {
        {"/second", "ask /second", [&] { load("/second"); }},
        {"/redirect-once", "ask /redirect-twice, start, ask /redirect-once",
         [&] { load("/redirect-twice"); }},
        {"upi://pay?tr=1", "ask /redirect-upi, start, ask upi://pay?tr=1",
         [&] { load("/redirect-upi"); }},
        {"upi://pay?am=1", "ask upi://pay?am=1",
         [&] { port->pageNavigates(*view, "upi://pay?am=1"); }},
        // Refused by the engine: there is nothing to show.
        {"", "ask /attachment, start",
         [&] { port->pageNavigates(*view, port->url("/attachment").absoluteString()); }},
        {"", "ask /no-content, start",
         [&] { port->pageNavigates(*view, port->url("/no-content").absoluteString()); }},
    };
    for (const auto& row : cases) {
        recorder->events.clear();
        recorder->cancelled = row.cancelled;
        row.act();
        expectEvents(row.expected);
        EXPECT_EQ(address(), "/plain") << row.expected;
        post("alive");
        expectEvents(row.expected + ", message string alive");
    }
}

TEST_F(NavigationContract, WhatThePageStartsIsAskedForAndKeepsTheOldAddressUntilItsCommit) {
    loadPlainPage();
    const std::string second = port->url("/second").absoluteString();
    port->pageAddsFrame(*view, second);
    expectEvents("ask /second");
    EXPECT_EQ(address(), "/plain");
    recorder->events.clear();
    // Within the document some engines ask, and some mend a broken escape.
    port->pageNavigates(*view, port->url("/plain").absoluteString() + "#a%zz");
    waitUntil([&] { return address() != "/plain"; });
    settle();
    const std::string within = address();
    EXPECT_THAT(within, AnyOf("/plain#a%zz", "/plain#a%25zz"));
    EXPECT_THAT(joined(recorder->events), AnyOf("", "ask " + within));
    recorder->events.clear();
    recorder->addresses.clear();
    port->pageNavigates(*view, second);
    expectEvents("ask /second, start, commit /second, finish /second");
    EXPECT_EQ(joined(recorder->addresses), within + ", " + within + ", /second, /second");
}

TEST_F(NavigationContract, AnAnswerMayComeLateAndCountsOnce) {
    recorder->holdsQuestions = true;
    const auto allow = [&] { recorder->questions.at(0)(WKNavigationActionPolicy::allow); };
    const struct {
        std::string expected;
        std::function<void()> act;
    } cases[] = {
        {"ask /plain", [&] { recorder->questions.clear(); }},
        {"ask /plain",
         [&] {
             view->stopLoading();
             allow();
         }},
        {"ask /plain, start, commit /plain, finish /plain",
         [&] {
             allow();
             recorder->questions.at(0)(WKNavigationActionPolicy::cancel);
         }},
        {"ask /plain",
         [&] {
             dropView();
             allow();
         }},
    };
    for (const auto& row : cases) {
        recorder->events.clear();
        recorder->questions.clear();
        load("/plain");
        expectEvents("ask /plain");
        row.act();
        expectEvents(row.expected);
    }
}

TEST_F(NavigationContract, ALoadFromInsideTheQuestionTakesItsPlace) {
    recorder->onEvent = [&](const std::string& event) {
        if (event == "ask /second") load("/plain");
    };
    recorder->cancelled = "/second";
    load("/second");
    expectEvents("ask /second, ask /plain, start, commit /plain, finish /plain");
}

TEST_F(NavigationContract, ASupersededLoadFailsBeforeTheNewOneIsAskedFor) {
    load("/slow-forever");
    ASSERT_TRUE(waitFor("start"));
    load("/plain");
    EXPECT_EQ(address(), "/plain");
    expectEvents(
        "ask /slow-forever, start, fail early, ask /plain, start, commit /plain, finish /plain");
    EXPECT_EQ(recorder->addresses[2], "/plain") << "the new address already holds then";
}

TEST_F(NavigationContract, AnUnfinishedPageLoadsOnUntilTheNextNavigationIsAllowed) {
    load("/slow-body");
    ASSERT_TRUE(waitFor("commit /slow-body"));
    recorder->events.clear();
    recorder->cancelled = "/second";
    load("/second");
    expectEvents("ask /second");
    EXPECT_EQ(address(), "/slow-body");
    recorder->events.clear();
    recorder->cancelled.clear();
    port->pageNavigates(*view, port->url("/second").absoluteString());
    expectEvents("ask /second, fail late, start, commit /second, finish /second");
}

TEST_F(NavigationContract, StoppingFailsALoadByItsPhaseAndADeadWebProcessBeforeACommit) {
    const std::function<void()> stop = [&] { view->stopLoading(); };
    const std::function<void()> kill = [&] { port->killWebProcess(*view); };
    const struct {
        std::string path;
        std::string endedAt;
        const std::function<void()>& end;
        std::string failure;
    } cases[] = {
        {"/slow-forever", "start", stop, "fail early"},
        {"/slow-body", "commit /slow-body", stop, "fail late"},
        {"/slow-forever", "start", kill, "fail early"},
        {"/slow-body", "commit /slow-body", kill, "fail early"},
        {"/plain", "finish /plain", kill, "fail early"},
    };
    for (const auto& row : cases) {
        loadPlainPage();
        load(row.path);
        ASSERT_TRUE(waitFor(row.endedAt));
        const std::string before = joined(recorder->events);
        row.end();
        EXPECT_EQ(joined(recorder->events), before) << "nothing is reported inside the call";
        expectEvents(before + ", " + row.failure);
    }
    EXPECT_EQ(view->url(), std::nullopt);
    recorder->events.clear();
    loadPlainPage();
    post("again");
    EXPECT_TRUE(waitFor("message string again"));
}

TEST_F(NavigationContract, TheViewMayGoInTheMiddleOfAnyReport) {
    for (const auto& [path, event] : {std::pair<std::string, std::string>{"/plain", "ask /plain"},
                                      {"/redirect-twice", "ask /redirect-once"},
                                      {"/plain", "start"},
                                      {"/plain", "commit /plain"},
                                      {"/plain", "finish /plain"},
                                      {"/refused", "fail early"},
                                      {"/closes-half-way", "fail late"}}) {
        expectViewMayGoAt(event, [&, &path = path] { load(path); });
    }
}

}  // namespace zorvik::contract
