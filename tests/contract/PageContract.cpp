#include <optional>

#include "tests/contract/ContractTest.h"

namespace zorvik::contract {

using testing::ElementsAre;
using Type = ScriptValue::Type;

// What a page and native code say to each other.
class PageContract : public ContractTest {
  protected:
    using Results = std::vector<std::optional<Result<ScriptValue>>>;

    void SetUp() override { showView(); }

    Result<ScriptValue> evaluate(const std::string& script) {
        std::optional<Result<ScriptValue>> answer;
        view->evaluateJavaScript(script, [&](const auto& result) { answer = result; });
        EXPECT_FALSE(answer) << "never inside the call";
        EXPECT_TRUE(port->spinUntil([&] { return answer.has_value(); }, patience)) << script;
        return answer.value_or(Result<ScriptValue>(Error{}));
    }
};

TEST_F(PageContract, MessagesArriveWithTheirTypeAndExactText) {
    loadPlainPage();
    const std::string odd("a\0b \xF0\x9F\x92\xB3 \"'\\\n</script>", 22);
    const struct {
        ScriptValue body;
        std::string expected;
    } cases[] = {
        {{Type::string, "hello"}, "message string hello"},
        {{Type::string, ""}, "message string "},
        {{Type::string, odd}, "message string " + odd},
        {{Type::boolean, "false"}, "message boolean false"},
        {{Type::number, "1.5"}, "message number 1.5"},
        {{Type::null, "null"}, "message null null"},
        {{Type::array, R"([1,"x",null])"}, R"(message array [1,"x",null])"},
        {{Type::object, R"({"a":{"b":[]}})"}, R"(message object {"a":{"b":[]}})"},
    };
    Events expected;
    for (const auto& row : cases) {
        port->pagePosts(*view, "message", row.body);
        expected.push_back(row.expected);
    }
    ASSERT_TRUE(waitFor(expected.back()));
    EXPECT_EQ(recorder->events, expected);
}

TEST_F(PageContract, OnlyRegisteredNamesAreHeardAndRemovalIsImmediate) {
    loadPlainPage();
    auto& controller = *view->configuration().userContentController;
    port->pagePosts(*view, "unknown", {Type::string, "1"});
    port->pagePosts(*view, "message", {Type::string, "2"});
    ASSERT_TRUE(waitFor("message string 2"));
    port->pagePosts(*view, "message", {Type::string, "under way"});
    controller.removeScriptMessageHandler("message");
    settle();
    controller.add(std::weak_ptr<WKScriptMessageHandler>(recorder), "message");
    port->pagePosts(*view, "message", {Type::string, "3"});
    ASSERT_TRUE(waitFor("message string 3"));
    EXPECT_THAT(recorder->events, ElementsAre("message string 2", "message string 3"));
}

TEST_F(PageContract, PanelsWaitForTheirAnswer) {
    loadPlainPage();
    using Kind = ScriptPanel::Kind;
    const struct {
        ScriptPanel panel;
        std::optional<ScriptPanelAnswer> answer;
        Events expected;
    } cases[] = {
        {{Kind::alert, "hi", {}}, ScriptPanelAnswer{}, {"alert hi", "answer null null"}},
        {{Kind::confirm, "sure?", {}},
         ScriptPanelAnswer{true, {}},
         {"confirm sure?", "answer boolean true"}},
        {{Kind::confirm, "sure?", {}},
         ScriptPanelAnswer{false, {}},
         {"confirm sure?", "answer boolean false"}},
        {{Kind::prompt, "name?", "Asha"},
         ScriptPanelAnswer{true, "Asha"},
         {"prompt name? Asha", "answer string Asha"}},
        {{Kind::prompt, "name?", "Asha"},
         ScriptPanelAnswer{},
         {"prompt name? Asha", "answer null null"}},
        {{Kind::alert, "dropped", {}}, {}, {"alert dropped", "answer null null"}},
        {{Kind::confirm, "dropped", {}}, {}, {"confirm dropped", "answer boolean false"}},
        {{Kind::prompt, "dropped", "x"}, {}, {"prompt dropped x", "answer null null"}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.expected.front());
        recorder->events.clear();
        recorder->panelAnswer = row.answer;
        port->pageShowsPanel(*view, row.panel);
        ASSERT_TRUE(waitFor(row.expected.back()));
        EXPECT_EQ(recorder->events, row.expected);
    }
}

TEST_F(PageContract, WithoutADelegatePanelsAreDeclined) {
    loadPlainPage();
    view->setUIDelegate({});
    port->pageShowsPanel(*view, {ScriptPanel::Kind::confirm, "sure?", {}});
    EXPECT_TRUE(waitFor("answer boolean false"));
}

TEST_F(PageContract, EvaluationsGiveTheValueOfTheScript) {
    loadPlainPage();
    const struct {
        std::string script;
        ScriptValue expected;
    } cases[] = {
        {"'text \xF0\x9F\x92\xB3'", {Type::string, "text \xF0\x9F\x92\xB3"}},
        {"20 + 2", {Type::number, "22"}},
        {"1 === 2", {Type::boolean, "false"}},
        {"null", {}},
        {"undefined", {}},
        {"[1, 'two']", {Type::array, R"([1,"two"])"}},
        {"({a: 1})", {Type::object, R"({"a":1})"}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.script);
        const auto result = evaluate(row.script);
        ASSERT_TRUE(result.isSuccess()) << result.error().localizedDescription;
        EXPECT_EQ(result.value(), row.expected) << result.value().text;
    }
    for (const std::string script : {"throw new Error('boom')", "(", "(function () {})"}) {
        SCOPED_TRACE(script);
        const auto result = evaluate(script);
        ASSERT_FALSE(result.isSuccess());
        EXPECT_NE(result.error().localizedDescription, "");
    }
}

TEST_F(PageContract, EvaluationsAnswerInOrderBehindTheMessagesTheyPosted) {
    loadPlainPage();
    view->evaluateJavaScript("window.webkit.messageHandlers.message.postMessage('first');0",
                             [&](const auto&) { recorder->events.push_back("evaluated 1"); });
    view->evaluateJavaScript("20 + 2",
                             [&](const auto&) { recorder->events.push_back("evaluated 2"); });
    ASSERT_TRUE(waitFor("evaluated 2"));
    EXPECT_THAT(recorder->events,
                ElementsAre("message string first", "evaluated 1", "evaluated 2"));
}

TEST_F(PageContract, EvaluationsUnderWayCompleteOnceWhenTheViewGoes) {
    loadPlainPage();
    const auto held = std::make_shared<int>();
    std::vector<int> completions(20, 0);
    bool isInsideCall = true;
    for (int& count : completions) {
        view->evaluateJavaScript("20 + 2", [&, held](const auto& result) {
            ++count;
            EXPECT_FALSE(result.isSuccess());
            EXPECT_FALSE(isInsideCall);
        });
    }
    dropView();
    isInsideCall = false;
    EXPECT_TRUE(port->spinUntil([&] { return held.use_count() == 1; }, patience))
        << "each completion ran and was released";
    EXPECT_THAT(completions, testing::Each(1));
}

TEST_F(PageContract, TheViewMayGoInTheCompletionOfAnEvaluation) {
    loadPlainPage();
    int completions = 0;
    for (int index = 0; index < 3; ++index) {
        view->evaluateJavaScript("20 + 2", [&](const auto&) {
            ++completions;
            dropView();
        });
    }
    EXPECT_TRUE(port->spinUntil([&] { return completions == 3; }, patience));
    settle();
    EXPECT_EQ(completions, 3);
}

TEST_F(PageContract, ADeadWebProcessFailsWhatIsUnderWay) {
    loadPlainPage();
    int failures = 0;
    view->evaluateJavaScript("for (;;) {}", [&](const auto& result) {
        if (!result.isSuccess()) ++failures;
    });
    port->killWebProcess(*view);
    EXPECT_TRUE(port->spinUntil([&] { return failures == 1; }, patience));
}

TEST_F(PageContract, TheViewMayGoInTheMiddleOfAMessageOrPanel) {
    const struct {
        std::string event;
        std::function<void()> act;
    } cases[] = {
        {"message string end",
         [&] {
             port->pagePosts(*view, "message", {Type::string, "end"});
         }},
        {"alert end",
         [&] {
             port->pageShowsPanel(*view, {ScriptPanel::Kind::alert, "end", {}});
         }},
        {"prompt end none",
         [&] {
             port->pageShowsPanel(*view, {ScriptPanel::Kind::prompt, "end", {}});
         }},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.event);
        loadPlainPage();
        recorder->panelAnswer = ScriptPanelAnswer{};  // answered although the page is gone
        recorder->onEvent = [&](const std::string& event) {
            if (event == row.event) dropView();
        };
        row.act();
        ASSERT_TRUE(waitFor(row.event));
        settle();
        EXPECT_THAT(recorder->events, ElementsAre(row.event));
        recorder->onEvent = nullptr;
        bool isGone = false;
        screen->dismiss(false, [&] { isGone = true; });
        ASSERT_TRUE(port->spinUntil([&] { return isGone; }, patience));
        showView();
    }
}

}  // namespace zorvik::contract
