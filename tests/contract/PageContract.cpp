#include "tests/contract/ContractTest.h"

namespace zorvik::contract {

// What a page and native code say to each other.
class PageContract : public ContractTest {
  protected:
    void SetUp() override {
        showView();
        loadPlainPage();
    }

    Result<ScriptValue> evaluate(const std::string& script) {
        std::optional<Result<ScriptValue>> answer;
        view->evaluateJavaScript(script, [&](const auto& result) { answer = result; });
        EXPECT_FALSE(answer) << "never inside the call";
        EXPECT_TRUE(waitUntil([&] { return answer.has_value(); })) << script;
        return answer.value_or(Result<ScriptValue>(Error{}));
    }
};

TEST_F(PageContract, MessagesArriveWithTheirTypeAndExactText) {
    const std::string odd("a\0b \xF0\x9F\x92\xB3 \"'\\\n</script>", 22);
    const std::string big(2'000'000, 'x');
    const struct {
        ScriptValue body;
        std::string expected;
    } cases[] = {
        {{Type::string, ""}, "message string "},
        {{Type::string, odd}, "message string " + odd},
        {{Type::string, big}, "message string " + big},
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
    EXPECT_TRUE(recorder->events == expected);
}

TEST_F(PageContract, EvaluationsGiveTheValueOfTheScriptOrItsError) {
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
        const auto result = evaluate(row.script);
        ASSERT_TRUE(result.isSuccess()) << row.script;
        EXPECT_EQ(result.value(), row.expected) << row.script << ": " << result.value().text;
    }
    for (const std::string script : {"throw new Error('boom')", "(", "(function () {})",
                                     "const o = {}; o.o = o; o", "'\xFF'"}) {
        const auto result = evaluate(script);
        ASSERT_FALSE(result.isSuccess()) << script;
        EXPECT_NE(result.error().localizedDescription, "");
    }
}

TEST_F(PageContract, EvaluationsAnswerInOrderBehindTheMessagesTheyPosted) {
    view->evaluateJavaScript("window.webkit.messageHandlers.message.postMessage('first');0",
                             [&](const auto&) { recorder->events.push_back("evaluated 1"); });
    view->evaluateJavaScript("20 + 2",
                             [&](const auto&) { recorder->events.push_back("evaluated 2"); });
    expectEvents("message string first, evaluated 1, evaluated 2");
}

TEST_F(PageContract, EvaluationsUnderWayFailOnceWhenTheViewOrItsProcessGoes) {
    for (const bool isViewGone : {false, true}) {
        loadPlainPage();
        const auto held = std::make_shared<int>();
        std::vector<int> completions(20, 0);
        bool isInsideCall = true;
        for (int& count : completions) {
            view->evaluateJavaScript(isViewGone ? "20 + 2" : "for (;;) {}",
                                     [&, held](const auto& result) {
                                         ++count;
                                         EXPECT_FALSE(result.isSuccess());
                                         EXPECT_FALSE(isInsideCall);
                                     });
        }
        if (isViewGone) {
            dropView();
        } else {
            port->killWebProcess(*view);
        }
        isInsideCall = false;
        EXPECT_TRUE(waitUntil([&] { return held.use_count() == 1; })) << "each was released";
        EXPECT_THAT(completions, testing::Each(1));
    }
}

TEST_F(PageContract, TheViewMayGoInAMessageOrACompletion) {
    expectViewMayGoAt("message string end", [&] { post("end"); });
    loadPlainPage();
    for (int index = 0; index < 3; ++index) {
        view->evaluateJavaScript("20 + 2", [&](const auto&) {
            recorder->events.push_back("evaluated");
            dropView();
        });
    }
    expectEvents("evaluated, evaluated, evaluated");
}

}  // namespace zorvik::contract
