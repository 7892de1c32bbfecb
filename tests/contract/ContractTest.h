#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/dispatch/DispatchQueue.h"
#include "tests/contract/PortUnderTest.h"

namespace zorvik::contract {

// Writes down what a web view tells its delegates, one line a call: "ask /plain", "start",
// "commit /plain", "finish /plain", "fail early", "fail late", "message string hello",
// "answer boolean true", "alert hello". Addresses on a server are shortened to their path.
class Recorder : public WKNavigationDelegate, public WKUIDelegate, public WKScriptMessageHandler {
  public:
    std::vector<std::string> events;
    std::vector<std::string> addresses;  // what the view called its own address at each event
    // Whether a question is allowed; others are cancelled. holdsQuestions: neither, kept below.
    std::function<bool(const std::string& path)> allows = [](const auto&) { return true; };
    bool holdsQuestions = false;
    std::vector<DecisionHandler> questions;
    // How panels are answered; nothing set: they are dropped unanswered.
    std::optional<ScriptPanelAnswer> panelAnswer;
    // Runs at the end of each call, before the answer to a question is given.
    std::function<void(const std::string& event)> onEvent;

    static std::string shortened(const std::optional<URL>& url) {
        if (!url) return "none";
        const std::string& text = url->absoluteString();
        if (!text.starts_with("http://")) return text;
        return text.substr(std::min(text.find('/', 7), text.size()));
    }

    void webViewDecidePolicyFor(WKWebView& view, const WKNavigationAction& action,
                                const DecisionHandler& decide) override {
        const std::string path = shortened(action.request.url);
        record(view, "ask " + path);
        if (holdsQuestions) return questions.push_back(decide);
        decide(allows(path) ? WKNavigationActionPolicy::allow : WKNavigationActionPolicy::cancel);
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

    void webViewRunJavaScriptAlertPanelWithMessage(WKWebView& view, const std::string& message,
                                                   const std::function<void()>& close) override {
        record(view, "alert " + message);
        if (panelAnswer) close();
    }
    void webViewRunJavaScriptConfirmPanelWithMessage(
        WKWebView& view, const std::string& message,
        const std::function<void(bool)>& answer) override {
        record(view, "confirm " + message);
        if (panelAnswer) answer(panelAnswer->confirmed);
    }
    void webViewRunJavaScriptTextInputPanelWithPrompt(
        WKWebView& view, const std::string& prompt, const std::optional<std::string>& defaultText,
        const std::function<void(const std::optional<std::string>&)>& answer) override {
        record(view, "prompt " + prompt + " " + defaultText.value_or("none"));
        if (panelAnswer) answer(panelAnswer->text);
    }

    void userContentControllerDidReceive(WKUserContentController&,
                                         const WKScriptMessage& message) override {
        static const char* const types[] = {"null",   "boolean", "number",
                                            "string", "array",   "object"};
        record(message.name + " " + types[static_cast<int>(message.body.type)] + " " +
               message.body.text);
    }

    bool has(const std::string& event) const {
        return std::find(events.begin(), events.end(), event) != events.end();
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
    using Events = std::vector<std::string>;

    static constexpr double patience = 10;  // seconds; none of it is spent when a test passes

    ~ContractTest() override { dropView(); }

    void showView() {
        WKWebViewConfiguration configuration;
        configuration.userContentController->add(std::weak_ptr<WKScriptMessageHandler>(recorder),
                                                 "message");
        configuration.userContentController->add(std::weak_ptr<WKScriptMessageHandler>(recorder),
                                                 "answer");
        view = makeOnMainThread<WKWebView>(Rect{0, 0, 300, 300}, configuration);
        view->setNavigationDelegate(recorder);
        view->setUIDelegate(recorder);
        screen->view()->addSubview(view);
        bool isShown = false;
        screen->setModalPresentationStyle(UIModalPresentationStyle::fullScreen);
        port->presenter()->present(screen, false, [&] { isShown = true; });
        ASSERT_TRUE(port->spinUntil([&] { return isShown; }, patience));
    }
    void dropView() {
        if (view) view->removeFromSuperview();
        view.reset();
    }

    URLRequest request(const std::string& path, double timeout = 60) {
        URLRequest result{port->url(path)};
        result.timeoutInterval = timeout;
        return result;
    }
    void load(const std::string& path) { view->load(request(path)); }
    // Loads an ordinary page to its end and forgets the events of it.
    void loadPlainPage() {
        load("/plain");
        ASSERT_TRUE(waitFor("finish /plain"));
        recorder->events.clear();
        recorder->addresses.clear();
    }

    bool waitFor(const std::string& event) {
        return port->spinUntil([&] { return recorder->has(event); }, patience);
    }
    // Long enough for what must not come to have come.
    void settle() {
        port->spinUntil([] { return false; }, 0.4);
    }
    std::string address() const { return Recorder::shortened(view->url()); }

    const std::unique_ptr<PortUnderTest> port = PortUnderTest::make();
    const std::shared_ptr<Recorder> recorder = std::make_shared<Recorder>();
    const std::shared_ptr<UIViewController> screen = makeOnMainThread<UIViewController>();
    std::shared_ptr<WKWebView> view;
};

}  // namespace zorvik::contract
