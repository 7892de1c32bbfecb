#include "tests/contract/ContractTest.h"

namespace zorvik::contract {

using testing::ElementsAre;

class NavigationContract : public ContractTest {
  protected:
    void SetUp() override { showView(); }
};

TEST_F(NavigationContract, EveryLoadReportsItsStepsInOrderAndEndsOnce) {
    const struct {
        std::string path;
        Events expected;
        std::string addressAfterwards;
    } cases[] = {
        {"/refused", {"ask /refused", "start", "fail early"}, "none"},
        {"/closes-before-headers", {"ask /closes-before-headers", "start", "fail early"}, "none"},
        {"/no-content", {"ask /no-content", "start", "fail early"}, "none"},
        {"/plain", {"ask /plain", "start", "commit /plain", "finish /plain"}, "/plain"},
        {"/error-500",
         {"ask /error-500", "start", "commit /error-500", "finish /error-500"},
         "/error-500"},
        {"/redirect-twice",
         {"ask /redirect-twice", "start", "ask /redirect-once", "ask /plain", "commit /plain",
          "finish /plain"},
         "/plain"},
        {"/closes-half-way",
         {"ask /closes-half-way", "start", "commit /closes-half-way", "fail late"},
         "/closes-half-way"},
        {"/refused", {"ask /refused", "start", "fail early"}, "/closes-half-way"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.path + " -> " + row.expected.back());
        recorder->events.clear();
        load(row.path);
        EXPECT_EQ(address(), row.path) << "the new address holds right after load";
        EXPECT_TRUE(recorder->events.empty()) << "nothing is reported inside load";
        ASSERT_TRUE(waitFor(row.expected.back()));
        settle();
        EXPECT_EQ(recorder->events, row.expected);
        EXPECT_EQ(address(), row.addressAfterwards);
    }
}

TEST_F(NavigationContract, ADifferentAddressIsSeenWhileARedirectIsAskedFor) {
    load("/redirect-twice");
    ASSERT_TRUE(waitFor("finish /plain"));
    EXPECT_THAT(recorder->addresses, ElementsAre("/redirect-twice", "/redirect-twice",
                                                 "/redirect-once", "/plain", "/plain", "/plain"));
}

TEST_F(NavigationContract, AFailureBeforeTheCommitRevertsTheAddressFirst) {
    loadPlainPage();
    load("/refused");
    ASSERT_TRUE(waitFor("fail early"));
    EXPECT_EQ(recorder->addresses.back(), "/plain");
}

TEST_F(NavigationContract, ACancelledLoadReportsNothingMoreAndThePageLivesOn) {
    loadPlainPage();
    const struct {
        std::string name;
        std::string path;
        std::string cancelled;
        Events expected;
    } cases[] = {
        {"first question", "/second", "/second", {"ask /second"}},
        {"redirect",
         "/redirect-twice",
         "/redirect-once",
         {"ask /redirect-twice", "start", "ask /redirect-once"}},
        {"redirect to another scheme",
         "/redirect-upi",
         "upi://pay?tr=1",
         {"ask /redirect-upi", "start", "ask upi://pay?tr=1"}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        recorder->events.clear();
        recorder->allows = [&](const std::string& path) { return path != row.cancelled; };
        load(row.path);
        ASSERT_TRUE(waitFor("ask " + row.cancelled));
        settle();
        EXPECT_EQ(recorder->events, row.expected);
        EXPECT_EQ(address(), "/plain");
        port->pagePosts(*view, "message", {ScriptValue::Type::string, "alive"});
        EXPECT_TRUE(waitFor("message string alive"));
    }
}

TEST_F(NavigationContract, APageStartedNavigationKeepsTheOldAddressUntilItsCommit) {
    loadPlainPage();
    port->pageNavigates(*view, port->url("/second").absoluteString());
    ASSERT_TRUE(waitFor("finish /second"));
    EXPECT_THAT(recorder->events,
                ElementsAre("ask /second", "start", "commit /second", "finish /second"));
    EXPECT_THAT(recorder->addresses, ElementsAre("/plain", "/plain", "/second", "/second"));
}

TEST_F(NavigationContract, ACancelledPageStartedNavigationLeavesThePage) {
    loadPlainPage();
    recorder->allows = [](const auto&) { return false; };
    port->pageNavigates(*view, "upi://pay?pa=shop@bank&am=1");
    ASSERT_TRUE(waitFor("ask upi://pay?pa=shop@bank&am=1"));
    settle();
    EXPECT_EQ(recorder->events.size(), 1u);
    EXPECT_EQ(address(), "/plain");
}

TEST_F(NavigationContract, AFragmentIsAskedForAndLoadsNothing) {
    loadPlainPage();
    port->pageChangesFragment(*view, "part");
    ASSERT_TRUE(waitFor("ask /plain#part"));
    ASSERT_TRUE(port->spinUntil([&] { return address() == "/plain#part"; }, patience));
    settle();
    EXPECT_THAT(recorder->events, ElementsAre("ask /plain#part"));
}

TEST_F(NavigationContract, ASubFrameIsAskedForAndReportsNothingElse) {
    loadPlainPage();
    port->pageAddsFrame(*view, port->url("/second").absoluteString());
    ASSERT_TRUE(waitFor("ask /second"));
    settle();
    EXPECT_THAT(recorder->events, ElementsAre("ask /second"));
    EXPECT_EQ(address(), "/plain");
}

TEST_F(NavigationContract, AnAnswerMayComeLaterAndCountsOnce) {
    recorder->holdsQuestions = true;
    load("/plain");
    ASSERT_TRUE(waitFor("ask /plain"));
    settle();
    EXPECT_THAT(recorder->events, ElementsAre("ask /plain"));
    recorder->questions[0](WKNavigationActionPolicy::allow);
    recorder->questions[0](WKNavigationActionPolicy::cancel);
    EXPECT_TRUE(waitFor("finish /plain"));
}

TEST_F(NavigationContract, ADroppedAnswerCancels) {
    recorder->holdsQuestions = true;
    load("/plain");
    ASSERT_TRUE(waitFor("ask /plain"));
    recorder->questions.clear();
    settle();
    EXPECT_THAT(recorder->events, ElementsAre("ask /plain"));
    EXPECT_EQ(address(), "none");
    recorder->holdsQuestions = false;
    load("/second");
    EXPECT_TRUE(waitFor("finish /second"));
}

TEST_F(NavigationContract, AnAnswerAfterTheViewIsGoneDoesNothing) {
    recorder->holdsQuestions = true;
    load("/plain");
    ASSERT_TRUE(waitFor("ask /plain"));
    dropView();
    recorder->questions[0](WKNavigationActionPolicy::allow);
    settle();
    EXPECT_THAT(recorder->events, ElementsAre("ask /plain"));
}

TEST_F(NavigationContract, ALoadFromInsideTheQuestionTakesItsPlace) {
    recorder->onEvent = [&](const std::string& event) {
        if (event == "ask /second") load("/plain");
    };
    recorder->allows = [](const std::string& path) { return path == "/plain"; };
    load("/second");
    ASSERT_TRUE(waitFor("finish /plain"));
    EXPECT_THAT(recorder->events, ElementsAre("ask /second", "ask /plain", "start", "commit /plain",
                                              "finish /plain"));
}

TEST_F(NavigationContract, WithoutADelegateEverythingIsAllowed) {
    view->setNavigationDelegate({});
    load("/redirect-twice");
    ASSERT_TRUE(port->spinUntil([&] { return address() == "/plain"; }, patience));
    settle();
    EXPECT_EQ(address(), "/plain") << "it would have reverted";
}

TEST_F(NavigationContract, ASupersededLoadFailsBeforeTheNewOneIsAskedFor) {
    load("/slow-forever");
    ASSERT_TRUE(waitFor("start"));
    load("/plain");
    EXPECT_EQ(address(), "/plain");
    ASSERT_TRUE(waitFor("finish /plain"));
    settle();
    EXPECT_THAT(recorder->events,
                ElementsAre("ask /slow-forever", "start", "fail early", "ask /plain", "start",
                            "commit /plain", "finish /plain"));
    EXPECT_EQ(recorder->addresses[2], "/plain") << "the new address already holds then";
}

TEST_F(NavigationContract, AnUnfinishedPageLoadsOnUntilTheNextNavigationIsAllowed) {
    const std::function<void()> waysToGoOn[] = {
        [&] { load("/second"); },
        [&] { port->pageNavigates(*view, port->url("/second").absoluteString()); },
    };
    for (const auto& goOn : waysToGoOn) {
        recorder->events.clear();
        recorder->allows = [](const auto&) { return true; };
        load("/slow-body");
        ASSERT_TRUE(waitFor("commit /slow-body"));
        recorder->events.clear();
        recorder->allows = [](const auto&) { return false; };
        goOn();
        ASSERT_TRUE(waitFor("ask /second"));
        settle();
        EXPECT_THAT(recorder->events, ElementsAre("ask /second"));
        EXPECT_EQ(address(), "/slow-body");
        recorder->events.clear();
        recorder->allows = [](const auto&) { return true; };
        goOn();
        ASSERT_TRUE(waitFor("finish /second"));
        EXPECT_THAT(recorder->events, ElementsAre("ask /second", "fail late", "start",
                                                  "commit /second", "finish /second"));
    }
}

TEST_F(NavigationContract, StoppingEndsALoadByThePhaseItIsIn) {
    const struct {
        std::string path;
        std::string stoppedAt;
        Events expected;
    } cases[] = {
        {"/slow-forever", "start", {"ask /slow-forever", "start", "fail early"}},
        {"/slow-body",
         "commit /slow-body",
         {"ask /slow-body", "start", "commit /slow-body", "fail late"}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.path);
        recorder->events.clear();
        load(row.path);
        ASSERT_TRUE(waitFor(row.stoppedAt));
        view->stopLoading();
        EXPECT_EQ(recorder->events.back(), row.stoppedAt) << "nothing is reported inside the call";
        ASSERT_TRUE(waitFor(row.expected.back()));
        settle();
        EXPECT_EQ(recorder->events, row.expected);
    }
}

TEST_F(NavigationContract, StoppingWhileTheQuestionIsOpenReportsNothing) {
    recorder->holdsQuestions = true;
    load("/plain");
    ASSERT_TRUE(waitFor("ask /plain"));
    view->stopLoading();
    recorder->questions[0](WKNavigationActionPolicy::allow);
    settle();
    EXPECT_THAT(recorder->events, ElementsAre("ask /plain"));
    EXPECT_EQ(address(), "none");
}

TEST_F(NavigationContract, ALoadInWhichNothingMovesFailsAfterItsTime) {
    view->load(request("/slow-forever", 0.3));
    ASSERT_TRUE(waitFor("fail early"));
    recorder->events.clear();
    view->load(request("/slow-body", 0.3));
    ASSERT_TRUE(waitFor("fail late"));
    settle();
    EXPECT_THAT(recorder->events,
                ElementsAre("ask /slow-body", "start", "commit /slow-body", "fail late"));
}

TEST_F(NavigationContract, TheTimeOfAFinishedLoadIsOver) {
    view->load(request("/plain", 0.3));
    ASSERT_TRUE(waitFor("finish /plain"));
    settle();
    EXPECT_EQ(recorder->events.back(), "finish /plain");
}

TEST_F(NavigationContract, ADeadWebProcessFailsTheLoadUnderWayOnce) {
    load("/slow-forever");
    ASSERT_TRUE(waitFor("start"));
    port->killWebProcess(*view);
    ASSERT_TRUE(waitFor("fail early"));
    settle();
    EXPECT_EQ(recorder->events.size(), 3u);
    loadPlainPage();
    load("/slow-body");
    ASSERT_TRUE(waitFor("commit /slow-body"));
    port->killWebProcess(*view);
    EXPECT_TRUE(waitFor("fail late"));
}

TEST_F(NavigationContract, ADeadWebProcessOfALoadedPageIsSilentAndALaterLoadWorks) {
    loadPlainPage();
    port->killWebProcess(*view);
    ASSERT_TRUE(port->spinUntil([&] { return !view->url(); }, patience));
    settle();
    EXPECT_TRUE(recorder->events.empty());
    loadPlainPage();
    port->pagePosts(*view, "message", {ScriptValue::Type::string, "again"});
    EXPECT_TRUE(waitFor("message string again"));
}

TEST_F(NavigationContract, TheViewMayGoInTheMiddleOfAnyReport) {
    const struct {
        std::string path;
        std::string event;
    } cases[] = {
        {"/plain", "ask /plain"},
        {"/redirect-twice", "ask /redirect-once"},
        {"/plain", "start"},
        {"/plain", "commit /plain"},
        {"/plain", "finish /plain"},
        {"/refused", "fail early"},
        {"/closes-half-way", "fail late"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.event);
        recorder->events.clear();
        const std::weak_ptr<WKWebView> ended = view;
        recorder->onEvent = [&](const std::string& event) {
            if (event == row.event) dropView();
        };
        load(row.path);
        ASSERT_TRUE(waitFor(row.event));
        settle();
        EXPECT_EQ(recorder->events.back(), row.event);
        EXPECT_TRUE(ended.expired());
        recorder->onEvent = nullptr;
        bool isGone = false;
        screen->dismiss(false, [&] { isGone = true; });
        ASSERT_TRUE(port->spinUntil([&] { return isGone; }, patience));
        showView();
    }
}

}  // namespace zorvik::contract
