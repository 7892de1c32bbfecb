#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/foundation/Export.h"
#include "platform/services/Scheduler.h"
#include "platform/services/WebEngine.h"

namespace zorvik::platform::headless {

class ScriptedPage;

// What the scripted web answers to one load.
struct ScriptedLoad {
    enum class Ending {
        finish,
        failBeforeCommit,
        failAfterCommit,
        nothingToShow,    // as a document to save: fails, or leaves the page that started it alone
        hang,             // nothing more until stopped, superseded or timed out
        hangAfterCommit,  // commits and then nothing more
    };

    Ending ending = Ending::finish;
    std::vector<std::string> redirects = {};  // asked for one by one before the commit
    Error error{"headless", 1, "Could not connect to the server."};
};

// A web engine whose pages do what a test says. Fails closed: a load for which nothing is scripted
// fails before its commit, a script for which nothing is scripted answers with an error. Each step
// of a page (question, start, commit, finish, failure, message, answer) is a main-queue turn of
// its own, in the order the desktop's engine has. Main thread only.
class ZORVIK_API ScriptedWebEngine : public WebEngine {
  public:
    using LoadScript = std::function<std::optional<ScriptedLoad>(const std::string& url)>;
    using EvaluationScript = std::function<Result<ScriptValue>(const std::string& script)>;

    explicit ScriptedWebEngine(Scheduler& scheduler) : scheduler_(scheduler) {}
    ScriptedWebEngine(const ScriptedWebEngine&) = delete;
    ScriptedWebEngine& operator=(const ScriptedWebEngine&) = delete;
    ~ScriptedWebEngine() override;

    // What every load from now on is answered with; nullopt: nothing scripted.
    void onLoad(LoadScript script) { loadScript_ = std::move(script); }
    // What every evaluation from now on is answered with. It may make the page post or navigate.
    void onEvaluate(EvaluationScript script) { evaluationScript_ = std::move(script); }

    // Whether evaluations are answered by themselves, or wait like those of a page that is busy
    // until one is told to go on or the page goes. For those from now on.
    enum class Answers { given, waiting };
    void setAnswers(Answers answers) { answers_ = answers; }
    // Evaluations whose script ran and whose answer waits, oldest first. One by its place in line
    // is answered in a turn of its own; false when there is none.
    std::size_t waitingAnswers() const { return waiting_.size(); }
    bool giveAnswer(std::size_t place = 0);

    // The pages alive, oldest first.
    const std::vector<ScriptedPage*>& pages() const { return pages_; }
    // The youngest page. None is a programming error.
    ScriptedPage& page() const;

    std::unique_ptr<WebPage> makePage(const WebPageConfiguration& configuration,
                                      std::weak_ptr<WebPageDelegate> delegate) override;

  private:
    friend class ScriptedPage;

    ScriptedLoad answerLoad(const std::string& url) const;
    Result<ScriptValue> answerEvaluation(const std::string& script) const;
    // The page's answers that wait come at once, for they can only be errors now.
    void giveUpAnswers(const ScriptedPage& page);

    struct WaitingAnswer {
        const ScriptedPage* page;
        Task give;
    };

    Scheduler& scheduler_;
    Answers answers_ = Answers::given;
    std::deque<WaitingAnswer> waiting_;
    LoadScript loadScript_;
    EvaluationScript evaluationScript_;
    std::vector<ScriptedPage*> pages_;
};

// A page of the scripted engine, with what a page's own script could do.
class ZORVIK_API ScriptedPage : public WebPage {
  public:
    ScriptedPage(ScriptedWebEngine& engine, const WebPageConfiguration& configuration,
                 std::weak_ptr<WebPageDelegate> delegate);
    ~ScriptedPage() override;

    // The page goes to another address, as a link or script in it would. One that differs in its
    // fragment only just changes the address.
    void navigate(const std::string& url);
    // The page pushes a state: its address changes, nothing is reported.
    void replaceUrl(const std::string& url);
    // The page asks for a navigation in a sub-frame: only the question is reported.
    void navigateSubframe(const std::string& url);
    // The page posts; false, and a line on standard error, when nobody handles the name.
    bool post(const std::string& name, const ScriptValue& body);
    // The page shows a panel; the answer goes to `answered` in the turn that gave it.
    void showPanel(const ScriptPanel& panel, std::function<void(ScriptPanelAnswer)> answered = {});
    // The web process dies: evaluations under way fail, the address is gone, and what was loading
    // or shown fails as before a commit. A later load works.
    void killWebProcess();

    // What was asked of the page so far.
    const std::vector<URLRequest>& requests() const { return requests_; }
    const std::vector<std::string>& evaluatedScripts() const { return evaluatedScripts_; }
    const std::set<std::string>& messageHandlers() const { return handlers_; }
    const WebPageConfiguration& configuration() const { return configuration_; }
    bool isLoading() const;

    void load(const URLRequest& request) override;
    void stopLoading() override;
    void evaluate(const std::string& script, Completion completion) override;
    std::optional<URL> currentUrl() const override;
    void addMessageHandler(const std::string& name) override;
    void removeMessageHandler(const std::string& name) override;
    void removeAllUserScripts() override {}   // nothing can add one to a scripted page
    void removeAllContentRules() override {}  // nor a rule

  private:
    friend class ScriptedWebEngine;

    struct Load;
    using Action = std::function<void(ScriptedPage&)>;
    using Report = std::function<void(WebPageDelegate&)>;

    void inTurn(Action action);
    void report(const Report& report) const;
    void ask(const std::string& url, Action allowed, Action cancelled = {});
    void askForLoad();
    void start(const std::shared_ptr<Load>& load);
    void proceed();
    void askForRedirect();
    void endWithNothing();
    void commit();
    void fail(const std::shared_ptr<Load>& load, const Error& error);
    void reportFailure(const Load& load, const Error& error) const;
    void watchTime();
    std::shared_ptr<Load> takeLoad();
    void cancelLoad();
    Action whileLoading(void (ScriptedPage::*step)()) const;

    ScriptedWebEngine* engine_;  // nullptr once it is gone
    const WebPageConfiguration configuration_;
    const std::weak_ptr<WebPageDelegate> delegate_;
    std::vector<URLRequest> requests_;
    std::vector<std::string> evaluatedScripts_;
    std::set<std::string> handlers_;
    std::map<std::string, int> removals_;  // how often each name was removed
    std::optional<URL> committedUrl_;
    std::shared_ptr<Load> asked_;  // the host's, until its question is answered
    std::shared_ptr<Load> load_;   // allowed and under way
    int processGeneration_ = 0;
    std::shared_ptr<ScriptedPage*> life_;  // expires with the page
};

}  // namespace zorvik::platform::headless
