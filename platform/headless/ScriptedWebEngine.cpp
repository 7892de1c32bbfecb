#include "platform/headless/ScriptedWebEngine.h"

#include <algorithm>
#include <utility>

#include "platform/foundation/ProgrammingError.h"
#include "platform/foundation/Shortened.h"

namespace zorvik::platform::headless {

namespace {

constexpr double defaultTimeout = 60;

enum ErrorCode { notScripted = 2, cancelled, timedOut, processEnded, pageGone };

Error makeError(ErrorCode code, std::string description) {
    return {"headless", code, std::move(description)};
}

// An answer that is waited for: the first one counts, and dropping it unanswered is one too.
template <class Answer>
class Once {
  public:
    Once(std::function<void(Answer)> receive, Answer whenDropped)
        : receive_(std::move(receive)), whenDropped_(std::move(whenDropped)) {}
    Once(const Once&) = delete;
    Once& operator=(const Once&) = delete;
    ~Once() { give(whenDropped_); }

    void give(const Answer& answer) {
        if (const auto receive = std::exchange(receive_, nullptr)) receive(answer);
    }

  private:
    std::function<void(Answer)> receive_;
    Answer whenDropped_;
};

template <class Answer>
std::function<void(Answer)> answerOnce(std::function<void(Answer)> receive, Answer whenDropped) {
    const auto once = std::make_shared<Once<Answer>>(std::move(receive), std::move(whenDropped));
    return [once](const Answer& answer) { once->give(answer); };
}

std::string withoutFragment(const std::string& url) {
    return url.substr(0, url.find('#'));
}

void tellOfUnhandled(const std::string& name, const std::set<std::string>& handlers) {
    std::string names;
    for (const std::string& handler : handlers)
        names.append(names.empty() ? "post to one of: " : ", ").append(handler);
    tellOfMisuse("the page posted to \"" + name + "\", which nobody handles; " +
                 (names.empty() ? "no name is handled yet: load the screen first" : names));
}

ScriptedPage* living(const std::weak_ptr<ScriptedPage*>& life) {
    const auto page = life.lock();
    return page ? *page : nullptr;
}

}  // namespace

struct ScriptedPage::Load {
    enum class Phase { allowed, provisional, committed };

    explicit Load(URLRequest loadRequest, bool startedByHost)
        : request(std::move(loadRequest)),
          url(request.url.absoluteString()),
          isByHost(startedByHost) {}

    const URLRequest request;
    std::string url;      // the target so far
    const bool isByHost;  // the page answers with the target before it is committed
    Phase phase = Phase::allowed;
    ScriptedLoad script;
    std::size_t redirectsDone = 0;
    std::optional<Scheduler::TaskId> timeout;
};

ScriptedWebEngine::~ScriptedWebEngine() {
    for (ScriptedPage* page : pages_)
        page->engine_ = nullptr;
}

ScriptedPage& ScriptedWebEngine::page() const {
    if (pages_.empty()) endOnProgrammingError("the scripted web engine has no page");
    return *pages_.back();
}

std::unique_ptr<WebPage> ScriptedWebEngine::makePage(const WebPageConfiguration& configuration,
                                                     std::weak_ptr<WebPageDelegate> delegate) {
    return std::make_unique<ScriptedPage>(*this, configuration, std::move(delegate));
}

ScriptedLoad ScriptedWebEngine::answerLoad(const std::string& url) const {
    const auto script = loadScript_;  // it may set another one
    const auto answer = script ? script(url) : std::nullopt;
    if (answer) return *answer;
    ScriptedLoad refused;
    refused.ending = ScriptedLoad::Ending::failBeforeCommit;
    refused.error =
        makeError(notScripted, "No answer is scripted for the load of " + shortened(url));
    return refused;
}

bool ScriptedWebEngine::giveAnswer(std::size_t place) {
    if (place >= waiting_.size()) return false;
    const auto found = waiting_.begin() + static_cast<std::ptrdiff_t>(place);
    Task give = std::move(found->give);
    waiting_.erase(found);
    scheduler_.runOnMain(std::move(give));
    return true;
}

void ScriptedWebEngine::giveUpAnswers(const ScriptedPage& page) {
    for (std::size_t place = 0; place < waiting_.size();) {
        if (waiting_[place].page == &page) {
            giveAnswer(place);
        } else {
            ++place;
        }
    }
}

Result<ScriptValue> ScriptedWebEngine::answerEvaluation(const std::string& text) const {
    const auto script = evaluationScript_;  // it may set another one
    if (script) return script(text);
    return makeError(notScripted, "No answer is scripted for the evaluation of " + shortened(text));
}

ScriptedPage::ScriptedPage(ScriptedWebEngine& engine, const WebPageConfiguration& configuration,
                           std::weak_ptr<WebPageDelegate> delegate)
    : engine_(&engine),
      configuration_(configuration),
      delegate_(std::move(delegate)),
      life_(std::make_shared<ScriptedPage*>(this)) {
    engine_->pages_.push_back(this);
}

ScriptedPage::~ScriptedPage() {
    takeLoad();
    if (!engine_) return;
    engine_->giveUpAnswers(*this);
    std::erase(engine_->pages_, this);
}

// In these functions a report is the last thing that happens: it may destroy the page.

void ScriptedPage::inTurn(Action action) {
    if (!engine_) return;
    engine_->scheduler_.runOnMain([life = std::weak_ptr(life_), action = std::move(action)] {
        if (ScriptedPage* const page = living(life)) action(*page);
    });
}

void ScriptedPage::report(const Report& report) const {
    if (const auto delegate = delegate_.lock()) report(*delegate);
}

void ScriptedPage::ask(const std::string& url, Action allowed, Action declined) {
    const auto decide = answerOnce<NavigationDecision>(
        [life = std::weak_ptr(life_), allowed = std::move(allowed),
         declined = std::move(declined)](NavigationDecision decision) {
            ScriptedPage* const page = living(life);
            const Action& answer = decision == NavigationDecision::allow ? allowed : declined;
            if (page && answer) answer(*page);
        },
        NavigationDecision::cancel);
    report([&](WebPageDelegate& delegate) {
        delegate.pageAsksToNavigate(URL::fromEngine(url), decide);
    });
}

// The step for the load that is under way now; nothing once that one is over.
ScriptedPage::Action ScriptedPage::whileLoading(void (ScriptedPage::*step)()) const {
    return [load = load_, step](ScriptedPage& page) {
        if (page.load_ == load) (page.*step)();
    };
}

std::shared_ptr<ScriptedPage::Load> ScriptedPage::takeLoad() {
    auto load = std::exchange(load_, nullptr);
    if (load && load->timeout && engine_) engine_->scheduler_.cancel(*load->timeout);
    return load;
}

void ScriptedPage::load(const URLRequest& request) {
    requests_.push_back(request);
    asked_.reset();
    // A page that is already there goes on loading until the new load is allowed.
    if (load_ && load_->phase != Load::Phase::committed) cancelLoad();
    asked_ = std::make_shared<Load>(request, true);
    inTurn([load = asked_](ScriptedPage& page) {
        if (page.asked_ == load) page.askForLoad();
    });
}

void ScriptedPage::askForLoad() {
    ask(
        asked_->url,
        [load = asked_](ScriptedPage& page) {
            if (page.asked_ != load) return;
            page.asked_.reset();
            page.start(load);
        },
        [load = asked_](ScriptedPage& page) {
            if (page.asked_ == load) page.asked_.reset();
        });
}

void ScriptedPage::start(const std::shared_ptr<Load>& load) {
    cancelLoad();
    load_ = load;
    inTurn([load](ScriptedPage& page) {
        if (page.load_ != load || !page.engine_) return;
        load->phase = Load::Phase::provisional;
        // The script is the test's and may stop the load or drop the page.
        const std::weak_ptr life = page.life_;
        load->script = page.engine_->answerLoad(load->url);
        if (!living(life) || page.load_ != load) return;
        page.watchTime();
        page.proceed();
        page.report([](WebPageDelegate& delegate) { delegate.pageStarted(); });
    });
}

void ScriptedPage::proceed() {
    const ScriptedLoad& script = load_->script;
    if (load_->redirectsDone < script.redirects.size()) {
        inTurn(whileLoading(&ScriptedPage::askForRedirect));
    } else if (script.ending == ScriptedLoad::Ending::failBeforeCommit) {
        fail(load_, script.error);
    } else if (script.ending == ScriptedLoad::Ending::nothingToShow) {
        inTurn(whileLoading(&ScriptedPage::endWithNothing));
    } else if (script.ending != ScriptedLoad::Ending::hang) {
        inTurn(whileLoading(&ScriptedPage::commit));
    }
}

void ScriptedPage::askForRedirect() {
    load_->url = load_->script.redirects[load_->redirectsDone++];
    ask(
        load_->url,
        [load = load_](ScriptedPage& page) {
            if (page.load_ != load) return;
            page.watchTime();
            page.proceed();
        },
        [load = load_](ScriptedPage& page) {
            if (page.load_ == load) page.takeLoad();
        });
}

void ScriptedPage::endWithNothing() {
    const auto load = takeLoad();
    if (load->isByHost || !committedUrl_) reportFailure(*load, load->script.error);
}

void ScriptedPage::commit() {
    const auto load = load_;
    load->phase = Load::Phase::committed;
    committedUrl_ = URL::fromEngine(load->url);
    if (load->script.ending == ScriptedLoad::Ending::finish) {
        inTurn([load](ScriptedPage& page) {
            if (page.load_ != load) return;
            page.takeLoad();
            page.report([](WebPageDelegate& delegate) { delegate.pageFinished(); });
        });
    } else if (load->script.ending == ScriptedLoad::Ending::failAfterCommit) {
        fail(load, load->script.error);
    }
    report([](WebPageDelegate& delegate) { delegate.pageCommitted(); });
}

void ScriptedPage::fail(const std::shared_ptr<Load>& load, const Error& error) {
    inTurn([load, error](ScriptedPage& page) {
        if (page.load_ == load) page.reportFailure(*page.takeLoad(), error);
    });
}

void ScriptedPage::reportFailure(const Load& load, const Error& error) const {
    report([&](WebPageDelegate& delegate) {
        if (load.phase == Load::Phase::committed) {
            delegate.pageFailedAfterCommit(error);
        } else {
            delegate.pageFailedBeforeCommit(error);
        }
    });
}

// Only an answer to a question can take time; the steps between two of them take none.
void ScriptedPage::watchTime() {
    Scheduler& scheduler = engine_->scheduler_;
    if (load_->timeout) scheduler.cancel(*load_->timeout);
    const double asked = load_->request.timeoutInterval;
    const double seconds = asked > 0 ? asked : defaultTimeout;
    load_->timeout = scheduler.runOnMainAfter(seconds, [life = std::weak_ptr(life_), load = load_] {
        ScriptedPage* const page = living(life);
        if (!page || page->load_ != load) return;
        page->reportFailure(*page->takeLoad(), makeError(timedOut, "The request timed out."));
    });
}

bool ScriptedPage::isLoading() const {
    return load_ || asked_;
}

void ScriptedPage::stopLoading() {
    asked_.reset();
    cancelLoad();
}

void ScriptedPage::cancelLoad() {
    const auto load = takeLoad();
    if (!load || load->phase == Load::Phase::allowed) return;
    inTurn([load](ScriptedPage& page) {
        page.reportFailure(*load, makeError(cancelled, "The load was cancelled."));
    });
}

void ScriptedPage::killWebProcess() {
    ++processGeneration_;
    if (engine_) engine_->giveUpAnswers(*this);
    const bool wasInUse = isLoading() || committedUrl_;
    committedUrl_.reset();
    asked_.reset();
    takeLoad();
    if (!wasInUse) return;
    inTurn([](ScriptedPage& page) {
        page.report([](WebPageDelegate& delegate) {
            delegate.pageFailedBeforeCommit(
                makeError(processEnded, "The web process ended unexpectedly."));
        });
    });
}

void ScriptedPage::navigate(const std::string& url) {
    inTurn([url](ScriptedPage& page) {
        const auto target = URL::fromEngine(url);
        if (!target) return;
        const bool isFragment = url.find('#') != std::string::npos && page.committedUrl_ &&
                                withoutFragment(page.committedUrl_->absoluteString()) ==
                                    withoutFragment(target->absoluteString());
        if (isFragment) {
            page.committedUrl_ = target;
            return;
        }
        const auto load = std::make_shared<Load>(URLRequest{*target}, false);
        page.ask(url, [load](ScriptedPage& asked) { asked.start(load); });
    });
}

void ScriptedPage::replaceUrl(const std::string& url) {
    committedUrl_ = URL::fromEngine(url);
}

void ScriptedPage::navigateSubframe(const std::string& url) {
    inTurn([url](ScriptedPage& page) { page.ask(url, {}); });
}

std::optional<URL> ScriptedPage::currentUrl() const {
    if (asked_) return URL::fromEngine(asked_->url);
    const bool showsTarget = load_ && load_->isByHost && load_->phase != Load::Phase::committed;
    return showsTarget ? URL::fromEngine(load_->url) : committedUrl_;
}

bool ScriptedPage::post(const std::string& name, const ScriptValue& body) {
    if (!handlers_.contains(name)) {
        tellOfUnhandled(name, handlers_);
        return false;
    }
    inTurn([name, body, removals = removals_[name]](ScriptedPage& page) {
        if (page.removals_[name] != removals) return;
        page.report([&](WebPageDelegate& delegate) { delegate.pagePosted(name, body); });
    });
    return true;
}

void ScriptedPage::showPanel(const ScriptPanel& panel,
                             std::function<void(ScriptPanelAnswer)> answered) {
    inTurn([panel, answered = std::move(answered)](ScriptedPage& page) {
        const auto answer = answerOnce<ScriptPanelAnswer>(answered, {});
        page.report([&](WebPageDelegate& delegate) { delegate.pageAsksWithPanel(panel, answer); });
    });
}

// The script runs in one turn and answers in a later one, behind what it posted.
void ScriptedPage::evaluate(const std::string& script, Completion completion) {
    evaluatedScripts_.push_back(script);
    if (!engine_) return;
    Scheduler& scheduler = engine_->scheduler_;
    const auto problem = [life = std::weak_ptr(life_),
                          generation = processGeneration_]() -> std::optional<Error> {
        const ScriptedPage* const page = living(life);
        if (!page || !page->engine_) return makeError(pageGone, "The page is gone.");
        if (page->processGeneration_ == generation) return std::nullopt;
        return makeError(processEnded, "The web process ended unexpectedly.");
    };
    scheduler.runOnMain([&scheduler, problem, script, page = this,
                         completion = std::move(completion), &engine = *engine_] {
        if (const auto error = problem()) return completion(*error);
        Task give = [problem, completion, result = engine.answerEvaluation(script)] {
            const auto error = problem();
            completion(error ? Result<ScriptValue>(*error) : result);
        };
        if (engine.answers_ == ScriptedWebEngine::Answers::given || problem()) {
            scheduler.runOnMain(std::move(give));
        } else {
            engine.waiting_.push_back({page, std::move(give)});
        }
    });
}

void ScriptedPage::addMessageHandler(const std::string& name) {
    handlers_.insert(name);
}

void ScriptedPage::removeMessageHandler(const std::string& name) {
    if (handlers_.erase(name) > 0) ++removals_[name];
}

}  // namespace zorvik::platform::headless
