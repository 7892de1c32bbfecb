#include <string_view>
#include <utility>

#include "trace/recorder/TracedServices.h"

namespace zorvik::trace {

using platform::Dictionary;
using platform::Error;
using platform::NavigationDecision;
using platform::Result;
using platform::ScriptPanel;
using platform::ScriptPanelAnswer;
using platform::ScriptValue;
using platform::URL;
using platform::Value;
using platform::WebPageDelegate;

namespace {

const char* nameOf(ScriptValue::Type type) {
    constexpr const char* names[] = {"null", "boolean", "number", "string", "array", "object"};
    return names[static_cast<std::size_t>(type)];
}

const char* nameOf(ScriptPanel::Kind kind) {
    constexpr const char* names[] = {"alert", "confirm", "prompt"};
    return names[static_cast<std::size_t>(kind)];
}

const char* nameOf(NavigationDecision decision) {
    return decision == NavigationDecision::allow ? "allowed" : "cancelled";
}

std::string textOf(const std::optional<URL>& url) {
    return url ? url->absoluteString() : "an address the engine did not name";
}

// What the script posts to the page, when that is what it does: the text between the quotes of
// window.postMessage('…', '*');
std::optional<std::string> postedText(std::string_view script) {
    constexpr std::string_view before = "window.postMessage('";
    constexpr std::string_view after = "', '*');";
    if (script.size() < before.size() + after.size() || !script.starts_with(before) ||
        !script.ends_with(after)) {
        return std::nullopt;
    }
    script = script.substr(before.size(), script.size() - before.size() - after.size());
    std::string text;
    for (std::size_t at = 0; at < script.size(); ++at) {
        if (script[at] != '\\' || at + 1 == script.size()) {
            text += script[at];
            continue;
        }
        const char escaped = script[++at];
        text += escaped == 'n' ? '\n' : escaped == 'r' ? '\r' : escaped == 't' ? '\t' : escaped;
    }
    return text;
}

// A question of the page's until it is answered. Every copy of its answer's callback shares one.
template <class Answer>
class Question {
  public:
    Question(std::shared_ptr<Log> log, EntryId entry, std::function<void(Answer)> answer,
             std::function<void()> dropped = {})
        : log_(std::move(log)),
          entry_(entry),
          answer_(std::move(answer)),
          dropped_(std::move(dropped)) {}
    Question(const Question&) = delete;
    Question& operator=(const Question&) = delete;
    ~Question() {
        if (isAnswered_) return;
        log_->amend(entry_, "decision", "never answered");
        if (dropped_) dropped_();
    }

    // Returned from the report that asked.
    void becomeLate() { isLate_ = true; }
    void answer(const Answer& answer, const Value& described, const std::string& title) {
        if (!std::exchange(isAnswered_, true)) {
            log_->amend(entry_, "decision", described);
            if (isLate_) log_->add({Lane::screen, EntryKind::decision, title, {}}, 0);
        }
        answer_(answer);
    }

  private:
    const std::shared_ptr<Log> log_;
    const EntryId entry_;
    const std::function<void(Answer)> answer_;
    const std::function<void()> dropped_;
    bool isAnswered_ = false;
    bool isLate_ = false;
};

// Hears the engine's page in the place of the toolkit's view.
class TracedEvents : public WebPageDelegate, public std::enable_shared_from_this<TracedEvents> {
  public:
    TracedEvents(std::shared_ptr<Log> log, std::weak_ptr<WebPageDelegate> view)
        : log_(std::move(log)), view_(std::move(view)) {}

    void loadAsked(EntryId load) {
        navigation_ = load;
        load_ = Load::asked;
    }

    void pageAsksToNavigate(const std::optional<URL>& url,
                            std::function<void(NavigationDecision)> decide) override {
        const bool isOfLoad = load_ != Load::none;
        const EntryId asked = log_->add({Lane::page,
                                         EntryKind::question,
                                         "may it go to " + textOf(url),
                                         {{"url", url ? Value(url->absoluteString()) : Value()}}},
                                        isOfLoad ? navigation_ : 0);
        const auto decided = [life = weak_from_this(), asked,
                              isOfLoad](NavigationDecision decision) {
            if (const auto self = life.lock()) self->decided(asked, isOfLoad, decision);
        };
        const auto question = std::make_shared<Question<NavigationDecision>>(
            log_, asked,
            [decided, decide = std::move(decide)](NavigationDecision decision) {
                decided(decision);
                decide(decision);
            },
            [decided] { decided(NavigationDecision::cancel); });
        const auto view = view_.lock();
        const Cause inside(*log_, asked);
        if (view) {
            view->pageAsksToNavigate(url, [question](NavigationDecision decision) {
                question->answer(decision, nameOf(decision),
                                 std::string("answers the page's question: ") + nameOf(decision));
            });
        }
        question->becomeLate();
    }

    void pageStarted() override {
        load_ = Load::started;
        report(EntryKind::started, "begins to load", &WebPageDelegate::pageStarted);
    }
    void pageCommitted() override {
        report(EntryKind::committed, "is there, still loading", &WebPageDelegate::pageCommitted);
    }
    void pageFinished() override {
        load_ = Load::none;
        report(EntryKind::finished, "has loaded", &WebPageDelegate::pageFinished);
    }
    void pageFailedBeforeCommit(const Error& error) override {
        reportFailure("could not be loaded: ", error, &WebPageDelegate::pageFailedBeforeCommit);
    }
    void pageFailedAfterCommit(const Error& error) override {
        reportFailure("broke off while loading: ", error, &WebPageDelegate::pageFailedAfterCommit);
    }

    void pagePosted(const std::string& name, const ScriptValue& body) override {
        const EntryId message =
            log_->add({Lane::page,
                       EntryKind::message,
                       "says " + name + ": " + body.text,
                       {{"name", name}, {"type", nameOf(body.type)}, {"body", body.text}}});
        const Cause inside(*log_, message);
        if (const auto view = view_.lock()) view->pagePosted(name, body);
    }

    void pageAsksWithPanel(const ScriptPanel& panel,
                           std::function<void(ScriptPanelAnswer)> answer) override {
        Dictionary data{{"message", panel.message}};
        if (panel.defaultText) data["defaultText"] = *panel.defaultText;
        const EntryId asked = log_->add(
            {Lane::page, EntryKind::panel,
             std::string("shows ") + nameOf(panel.kind) + ": " + panel.message, std::move(data)});
        const auto question =
            std::make_shared<Question<ScriptPanelAnswer>>(log_, asked, std::move(answer));
        const auto view = view_.lock();
        const Cause inside(*log_, asked);
        if (view) {
            view->pageAsksWithPanel(panel, [question](const ScriptPanelAnswer& given) {
                const std::string described = given.text        ? "text: " + *given.text
                                              : given.confirmed ? "confirmed"
                                                                : "left";
                question->answer(given, described, "answers the page's panel: " + described);
            });
        }
        question->becomeLate();
    }

  private:
    enum class Load { none, asked, started };

    void decided(EntryId asked, bool isOfLoad, NavigationDecision decision) {
        if (decision == NavigationDecision::cancel) {
            if (load_ == Load::asked) load_ = Load::none;
        } else if (!isOfLoad) {
            navigation_ = asked;
        }
    }

    void report(EntryKind kind, const char* title, void (WebPageDelegate::*call)()) {
        const Cause inside(*log_, log_->add({Lane::page, kind, title}, navigation_));
        if (const auto view = view_.lock()) ((*view).*call)();
    }
    void reportFailure(const char* title, const Error& error,
                       void (WebPageDelegate::*call)(const Error&)) {
        load_ = Load::none;
        const EntryId failed = log_->add({Lane::page,
                                          EntryKind::failed,
                                          title + error.localizedDescription,
                                          {{"domain", error.domain}, {"code", error.code}}},
                                         navigation_);
        const Cause inside(*log_, failed);
        if (const auto view = view_.lock()) ((*view).*call)(error);
    }

    const std::shared_ptr<Log> log_;
    const std::weak_ptr<WebPageDelegate> view_;
    EntryId navigation_ = 0;  // what the reports of loading are caused by
    Load load_ = Load::none;
};

// Owned by the toolkit's view; owns the engine's page.
class TracedPage : public platform::WebPage {
  public:
    TracedPage(std::shared_ptr<Log> log, std::shared_ptr<TracedEvents> events,
               std::unique_ptr<WebPage> page)
        : log_(std::move(log)), events_(std::move(events)), page_(std::move(page)) {}

    void load(const platform::URLRequest& request) override {
        const EntryId load = log_->add({Lane::page,
                                        EntryKind::load,
                                        "is to load " + textOf(request.url),
                                        {{"url", textOf(request.url)}}});
        events_->loadAsked(load);
        const Cause inside(*log_, load);
        page_->load(request);
    }
    void stopLoading() override {
        const Cause inside(*log_, log_->add({Lane::page, EntryKind::stop, "is to stop loading"}));
        page_->stopLoading();
    }
    void evaluate(const std::string& script, Completion completion) override {
        const auto posted = postedText(script);
        const EntryId asked =
            log_->add({Lane::page, posted ? EntryKind::post : EntryKind::script,
                       posted ? "is told " + *posted : "runs a script: " + script,
                       posted ? Dictionary{{"message", *posted}} : Dictionary{{"script", script}}});
        const Cause inside(*log_, asked);
        page_->evaluate(script, [log = log_, asked, completion = std::move(completion)](
                                    const Result<ScriptValue>& result) {
            const EntryId answer =
                result
                    ? log->add(
                          {Lane::page,
                           EntryKind::scriptAnswer,
                           "script answers " + result.value().text,
                           {{"type", nameOf(result.value().type)}, {"value", result.value().text}}},
                          asked)
                    : log->add({Lane::page,
                                EntryKind::scriptAnswer,
                                "script failed: " + result.error().localizedDescription,
                                {{"domain", result.error().domain},
                                 {"code", result.error().code},
                                 {"error", result.error().localizedDescription}}},
                               asked);
            const Cause answered(*log, answer);
            completion(result);
        });
    }
    std::optional<URL> currentUrl() const override { return page_->currentUrl(); }
    void addMessageHandler(const std::string& name) override { page_->addMessageHandler(name); }
    void removeMessageHandler(const std::string& name) override {
        page_->removeMessageHandler(name);
    }
    void removeAllUserScripts() override { page_->removeAllUserScripts(); }
    void removeAllContentRules() override { page_->removeAllContentRules(); }
    WebPage& enginePage() override { return page_->enginePage(); }

  private:
    const std::shared_ptr<Log> log_;
    const std::shared_ptr<TracedEvents> events_;
    const std::unique_ptr<WebPage> page_;
};

}  // namespace

TracedWebEngine::TracedWebEngine(platform::WebEngine& port, std::shared_ptr<Log> log)
    : port_(port), log_(std::move(log)) {}

std::unique_ptr<platform::WebPage> TracedWebEngine::makePage(
    const platform::WebPageConfiguration& configuration, std::weak_ptr<WebPageDelegate> delegate) {
    const auto events = std::make_shared<TracedEvents>(log_, std::move(delegate));
    return std::make_unique<TracedPage>(log_, events, port_.makePage(configuration, events));
}

}  // namespace zorvik::trace
