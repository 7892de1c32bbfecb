#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/desktop/LoadWatch.h"
#include "platform/desktop/ProcessProbe.h"
#include "platform/qt/EnginePage.h"
#include "platform/qt/PageNavigation.h"
#include "platform/services/WebEngine.h"

class QWidget;

namespace zorvik::platform::qt {

// A page of Qt WebEngine. Owned by the toolkit's web view; main thread only. Once the engine has
// ended, the page does and knows nothing any more, and any thread may destroy it.
class QtWebPage : public WebPage, private EnginePage::Owner {
  public:
    // What becomes of the engine's page when this one goes: it may be in the middle of a report.
    using Left = std::function<void(QtWebPage&, std::unique_ptr<EnginePage>)>;

    // What leaves the customer's input unanswered for `hungSeconds` ends as a dead web process
    // does.
    QtWebPage(std::unique_ptr<EnginePage> page, const WebPageConfiguration& configuration,
              std::weak_ptr<WebPageDelegate> delegate, double hungSeconds, Left left);
    ~QtWebPage() override;

    // Its process was kept ahead, and may have died unnoticed meanwhile.
    void takeOverSpare() { mayBeDead_ = true; }
    // For the stage to place. It is the page's, leaves its parent when the page goes and ends with
    // the engine's page. nullptr once the engine has ended.
    QWidget* widget() const;
    // Takes the engine's page, for the engine's end. Nothing is reported, and no evaluation
    // completes.
    std::unique_ptr<EnginePage> giveUpPage();

    void load(const URLRequest& request) override;
    void stopLoading() override;
    void evaluate(const std::string& script, Completion completion) override;
    std::optional<URL> currentUrl() const override;
    void addMessageHandler(const std::string& name) override;
    void removeMessageHandler(const std::string& name) override;
    // The toolkit adds neither, and the page's own means stay.
    void removeAllUserScripts() override {}
    void removeAllContentRules() override {}

  private:
    // Closures that outlive the page hold its address in this cell, which is emptied when it goes.
    using Self = std::shared_ptr<QtWebPage*>;
    struct Evaluation;
    class PanelAnswer;
    class Question;
    using Questions = std::vector<std::shared_ptr<Question>>;

    bool pageAsks(const QUrl& url, QWebEnginePage::NavigationType type, bool isMainFrame) override;
    void pageRequests(QWebEngineUrlRequestInfo& request) override;
    void pageAsksForWindow(const QUrl& url) override;
    void pageWaits(QWebEngineUrlRequestJob& job) override;
    void pageSaid(const QString& text) override;
    void pageEnded(const QWebEngineLoadingInfo& info) override;
    void pageChangedAddress(const QUrl& url) override;
    void pageProgressed() override { watch_.progressSeen(); }
    void pageLostItsProcess() override;
    void customerActed() override;

    void begin(int request);
    void start(int request);
    void startSoon();
    void loadInEngine(const QUrl& url);
    void stopEngine();
    void timedOut();
    void askProcess(double seconds);
    // False when this page went in one of them.
    bool report(const PageNavigation::Reports& reports);
    void reportSoon();

    bool askDelegate(const std::shared_ptr<Question>& question);
    bool letWait(const std::shared_ptr<Question>& question);
    void answered(Question& question);
    void letGoOn(const std::shared_ptr<Question>& question);
    void dropLateQuestions();

    void evaluatePlainly(const std::shared_ptr<Evaluation>& evaluation);
    void complete(const std::shared_ptr<Evaluation>& evaluation, const Result<ScriptValue>& result);
    void failEvaluations(const Error& error, int beforeDocument);
    void panelAsked(QWebEngineUrlRequestJob& job);
    void insertScript(const QString& name, const QString& source, quint32 world, bool inFrames);
    void insertHandlers();

    std::unique_ptr<EnginePage> page_;  // none once it was given up
    const std::weak_ptr<WebPageDelegate> delegate_;
    const double hungSeconds_;
    const quint32 world_;  // where evaluations run
    const Left left_;
    const Self self_;

    PageNavigation navigation_;
    int request_ = 0;  // grows with each load() and stopLoading()
    double requestTimeout_ = 0;
    bool awaitsOwnQuestion_ = false;  // the engine asks about a load() as well
    bool isPost_ = false;             // the main frame's last request
    bool hasProcess_ = true;          // none between its end and the next load
    bool awaitsProcessEnd_ = false;   // a load waits for it
    bool startsAfterEnd_ = false;     // a load waits for what was refused before it
    bool mayBeDead_ = false;          // a spare process that was not heard of since it was taken
    Questions lateQuestions_;         // left open when the engine wanted the answer
    std::vector<QUrl> answeredUrls_;  // the engine asks once more when it goes on

    desktop::LoadWatch watch_;
    std::unique_ptr<desktop::ProcessProbe> probe_;
    std::weak_ptr<void> openPanel_;

    int document_ = 0;
    std::vector<std::shared_ptr<Evaluation>> evaluations_;
    int lastHandler_ = 0;
    std::map<int, std::string> handlers_;
};

}  // namespace zorvik::platform::qt
