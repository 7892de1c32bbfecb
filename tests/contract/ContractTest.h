#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/runtime/DispatchQueue.h"
#include "tests/contract/PortUnderTest.h"

namespace zorvik::contract {

using Events = std::vector<std::string>;
using Type = ScriptValue::Type;

inline std::string joined(const Events& events) {
    std::string text;
    for (const std::string& event : events)
        text += (text.empty() ? "" : ", ") + event;
    return text;
}

// Writes down what a web view tells its delegates, one line a call: "ask /plain", "start",
// "commit /plain", "finish /plain", "fail early", "fail late", "message string hello",
//. Addresses on a server are shortened to their path.
class Recorder : public WKNavigationDelegate, public WKScriptMessageHandler {
  public:
    Events events;
    Events addresses;       // what the view called its own address at each event
    std::string cancelled;  // the question that is cancelled; the others are allowed
    bool holdsQuestions = false;
    std::vector<DecisionHandler> questions;
    // Runs at the end of each call, before the answer to a question is given.
    std::function<void(const std::string& event)> onEvent;

    static std::string shortened(const std::optional<URL>& url) {
        if (!url) return "none";
        const std::string& text = url->absoluteString();
        return text.starts_with("http://") ? text.substr(text.find('/', 7)) : text;
    }

    void webViewDecidePolicyFor(WKWebView& view, const WKNavigationAction& action,
                                const DecisionHandler& decide) override {
        const std::string path = shortened(action.request.url);
        record(view, "ask " + path);
        if (holdsQuestions) return questions.push_back(decide);
        decide(path == cancelled ? WKNavigationActionPolicy::cancel
                                 : WKNavigationActionPolicy::allow);
    }
    void webViewDidStartProvisionalNavigation(WKWebView& view) override { record(view, "start"); }
    void webViewDidCommit(WKWebView& view) override {
        record(view, "commit " + shortened(view.url()));
    }
    void webViewDidFinish(WKWebView& view) override {
        record(view, "finish " + shortened(view.url()));
    }
    void webViewDidFail(WKWebView& view, const Error& error) override {
        EXPECT_NE(error.localizedDescription, "");
        record(view, "fail late");
    }
    void webViewDidFailProvisionalNavigation(WKWebView& view, const Error& error) override {
        EXPECT_NE(error.localizedDescription, "");
        record(view, "fail early");
    }

    void userContentControllerDidReceive(WKUserContentController&,
                                         const WKScriptMessage& message) override {
        static const char* const types[] = {"null",   "boolean", "number",
                                            "string", "array",   "object"};
        record(message.name + " " + types[static_cast<int>(message.body.type)] + " " +
               message.body.text);
    }

  private:
    void record(const WKWebView& view, const std::string& event) {
        addresses.push_back(shortened(view.url()));
        record(event);
    }
    void record(const std::string& event) {
        events.push_back(event);
        if (onEvent) onEvent(event);
    }
};

// A web view in a shown screen, with its recorder.
class ContractTest : public testing::Test {
  protected:
    static constexpr double patience = 10;  // seconds; none of it is spent when a test passes

    ~ContractTest() override { dropView(); }

    void showView() {
        WKWebViewConfiguration configuration;
        configuration.userContentController->add(std::weak_ptr<WKScriptMessageHandler>(recorder),
                                                 "message");
        view = makeOnMainThread<WKWebView>(Rect{0, 0, 300, 300}, configuration);
        view->setNavigationDelegate(recorder);
        screen->view()->addSubview(view);
        bool isShown = false;
        screen->setModalPresentationStyle(UIModalPresentationStyle::fullScreen);
        port->presenter()->present(screen, false, [&] { isShown = true; });
        ASSERT_TRUE(waitUntil([&] { return isShown; }));
    }
    void dropView() {
        if (view) view->removeFromSuperview();
        view.reset();
    }

    void load(const std::string& path, double timeout = 60) {
        URLRequest request{port->url(path)};
        request.timeoutInterval = timeout;
        view->load(request);
    }
    // Loads an ordinary page to its end and forgets the events of it.
    void loadPlainPage() {
        load("/plain");
        ASSERT_TRUE(waitFor("finish /plain"));
        recorder->events.clear();
        recorder->addresses.clear();
    }
    void post(const std::string& text) { port->pagePosts(*view, "message", {Type::string, text}); }

    bool waitUntil(const std::function<bool()>& condition) {
        return port->spinUntil(condition, patience);
    }
    bool waitFor(const std::string& event) {
        return waitUntil([&] { return std::ranges::count(recorder->events, event) > 0; });
    }
    // Long enough for what must not come to have come.
    void settle() {
        port->spinUntil([] { return false; }, 0.4);
    }
    void expectEvents(const std::string& expected) {
        waitUntil([&] { return joined(recorder->events) == expected; });
        settle();
        EXPECT_EQ(joined(recorder->events), expected);
    }
    std::string address() const { return Recorder::shortened(view->url()); }

    // The view goes inside the report of this event, which is then the last one.
    void expectViewMayGoAt(const std::string& event, const std::function<void()>& act) {
        SCOPED_TRACE(event);
        recorder->events.clear();
        const std::weak_ptr<WKWebView> ended = view;
        recorder->onEvent = [&](const std::string& reported) {
            if (reported == event) dropView();
        };
        act();
        ASSERT_TRUE(waitFor(event));
        settle();
        EXPECT_EQ(recorder->events.back(), event);
        EXPECT_TRUE(ended.expired());
        recorder->onEvent = nullptr;
        bool isGone = false;
        screen->dismiss(false, [&] { isGone = true; });
        ASSERT_TRUE(waitUntil([&] { return isGone; }));
        showView();
    }

    const std::unique_ptr<PortUnderTest> port = PortUnderTest::make();
    const std::shared_ptr<Recorder> recorder = std::make_shared<Recorder>();
    const std::shared_ptr<UIViewController> screen = makeOnMainThread<UIViewController>();
    std::shared_ptr<WKWebView> view;
};

}  // namespace zorvik::contract
