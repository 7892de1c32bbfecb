#include "TemplateWebEngine.h"

#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace port_template {

using zorvik::platform::Error;
using zorvik::platform::NavigationDecision;
using zorvik::platform::Result;
using zorvik::platform::Scheduler;
using zorvik::platform::ScriptValue;
using zorvik::platform::URL;
using zorvik::platform::URLRequest;
using zorvik::platform::WebPage;
using zorvik::platform::WebPageDelegate;

namespace {

Error noEngine() {
    return {"port_template", 1, "There is no web engine yet."};
}

// What a load is asked and answered. The first answer counts; dropped unanswered, it is a refusal.
class Question {
  public:
    explicit Question(std::function<void(NavigationDecision)> answered)
        : answered_(std::move(answered)) {}
    Question(const Question&) = delete;
    Question& operator=(const Question&) = delete;
    ~Question() { give(NavigationDecision::cancel); }

    void give(NavigationDecision decision) {
        if (const auto answered = std::exchange(answered_, nullptr)) answered(decision);
    }

  private:
    std::function<void(NavigationDecision)> answered_;
};

// PORTER: a page of the engine. What it reports comes in turns of the main queue, never inside a
// call; a report may destroy the page, so it is the last thing a function does. After its
// destruction nothing is reported, but evaluations under way complete, with an Error.
class TemplatePage : public WebPage {
  public:
    TemplatePage(Scheduler& scheduler, std::weak_ptr<WebPageDelegate> delegate)
        : scheduler_(scheduler), delegate_(std::move(delegate)) {}

    // PORTER: keep request.timeoutInterval too; engines wait longer than a customer.
    void load(const URLRequest& request) override {
        stopLoading();
        load_ = std::make_shared<Load>(Load{request.url});
        inTurn([this] { ask(); });
    }
    void stopLoading() override {
        const auto load = std::exchange(load_, nullptr);
        if (!load || !load->isStarted) return;
        scheduler_.runOnMain([delegate = delegate_, life = std::weak_ptr(life_)] {
            const auto receiver = delegate.lock();
            if (life.lock() && receiver) {
                receiver->pageFailedBeforeCommit(
                    Error{"port_template", 2, "The load was cancelled."});
            }
        });
    }
    void evaluate(const std::string& /*script*/, Completion completion) override {
        scheduler_.runOnMain([completion = std::move(completion)] {
            if (completion) completion(noEngine());
        });
    }
    // PORTER: else the address of the page that was committed.
    std::optional<URL> currentUrl() const override {
        return load_ ? std::optional(load_->url) : std::nullopt;
    }

    // PORTER: window.webkit.messageHandlers.NAME.postMessage(body) in the page comes to
    // delegate->pagePosted(NAME, body), from the first script of the first page on.
    void addMessageHandler(const std::string& /*name*/) override {}
    void removeMessageHandler(const std::string& /*name*/) override {}
    void removeAllUserScripts() override {}
    void removeAllContentRules() override {}

  private:
    struct Load {
        URL url;
        bool isStarted = false;
    };

    // Runs the step unless the load it belongs to is over by then, or the page.
    void inTurn(std::function<void()> step) {
        scheduler_.runOnMain([this, life = std::weak_ptr(life_), load = std::weak_ptr(load_),
                              step = std::move(step)] {
            if (life.lock() && load.lock() && load.lock() == load_) step();
        });
    }
    void ask() {
        const auto question = std::make_shared<Question>(
            [this, life = std::weak_ptr(life_), load = load_](NavigationDecision decision) {
                if (!life.lock() || load_ != load) return;
                if (decision == NavigationDecision::cancel) {
                    load_.reset();
                } else {
                    inTurn([this] { start(); });
                }
            });
        const auto delegate = delegate_.lock();
        if (!delegate) return;
        delegate->pageAsksToNavigate(
            load_->url, [question](NavigationDecision decision) { question->give(decision); });
    }
    void start() {
        load_->isStarted = true;
        inTurn([this] { fail(); });
        if (const auto delegate = delegate_.lock()) delegate->pageStarted();
    }
    // PORTER: in its place: each redirect asked for, pageCommitted, pageFinished.
    void fail() {
        load_.reset();
        if (const auto delegate = delegate_.lock()) delegate->pageFailedBeforeCommit(noEngine());
    }

    Scheduler& scheduler_;
    const std::weak_ptr<WebPageDelegate> delegate_;
    std::shared_ptr<Load> load_;
    const std::shared_ptr<char> life_ = std::make_shared<char>();  // expires with the page
};

}  // namespace

std::unique_ptr<WebPage> TemplateWebEngine::makePage(
    const zorvik::platform::WebPageConfiguration& /*configuration*/,
    std::weak_ptr<WebPageDelegate> delegate) {
    return std::make_unique<TemplatePage>(scheduler_, std::move(delegate));
}

}  // namespace port_template
