#include <QBuffer>
#include <QPointer>
#include <QWebEngineScript>
#include <QWebEngineScriptCollection>
#include <QWebEngineUrlRequestJob>
#include <algorithm>
#include <utility>

#include "platform/desktop/WebPageError.h"
#include "platform/foundation/Data.h"
#include "platform/qt/PageQuestion.h"
#include "platform/qt/PageScripts.h"
#include "platform/runtime/Environment.h"

namespace zorvik::platform::qt {

using desktop::webPageError, desktop::WebPageErrorCode;

struct QtWebPage::Evaluation {
    std::string script;
    Completion completion;
    int document;  // in which it was asked for
};

// A panel the page waits for. Gone unanswered, it is closed as cancelled.
class QtWebPage::PanelAnswer {
  public:
    PanelAnswer(QWebEngineUrlRequestJob& job, ScriptPanel::Kind kind) : job_(&job), kind_(kind) {}
    PanelAnswer(const PanelAnswer&) = delete;
    PanelAnswer& operator=(const PanelAnswer&) = delete;
    ~PanelAnswer() { give({}); }

    void give(const ScriptPanelAnswer& answer) {
        QWebEngineUrlRequestJob* const open = std::exchange(job_, nullptr).data();
        if (open == nullptr) return;
        auto* const reply = new QBuffer(open);
        reply->setData(pageScripts::panelReply(kind_, answer));
        open->reply("application/json", reply);
    }

  private:
    QPointer<QWebEngineUrlRequestJob> job_;  // goes with the page
    const ScriptPanel::Kind kind_;
};

void QtWebPage::evaluate(const std::string& script, Completion completion) {
    if (!page_) return;
    if (!completion) completion = [](const Result<ScriptValue>&) {};
    const auto failSoon = [&](WebPageErrorCode code, const char* text) {
        Environment::scheduler().runOnMain(
            [completion, error = webPageError(code, text)] { completion(error); });
    };
    // The engine would quietly mend it.
    if (!isValidUtf8(script))
        return failSoon(WebPageErrorCode::invalidScript, "The script is not UTF-8.");
    if (!hasProcess_)
        return failSoon(WebPageErrorCode::webProcessEnded, "There is no web process.");
    const auto evaluation =
        std::make_shared<Evaluation>(Evaluation{script, std::move(completion), document_});
    evaluations_.push_back(evaluation);
    page_->runJavaScript(pageScripts::evaluation(script), world_,
                         [self = self_, evaluation](const QVariant& answer) {
                             if (*self == nullptr) return;
                             if (const auto result = pageScripts::valueOf(answer)) {
                                 (*self)->complete(evaluation, *result);
                             } else {
                                 (*self)->evaluatePlainly(evaluation);
                             }
                         });
}

void QtWebPage::evaluatePlainly(const std::shared_ptr<Evaluation>& evaluation) {
    const auto value = std::make_shared<QVariant>();
    page_->runJavaScript(pageScripts::plainEvaluation(evaluation->script), world_,
                         [value](const QVariant& answer) { *value = answer; });
    page_->runJavaScript(pageScripts::hasRunQuestion(), world_,
                         [self = self_, evaluation, value](const QVariant& hasRun) {
                             if (*self == nullptr) return;
                             (*self)->complete(evaluation,
                                               pageScripts::valueOfPlain(*value, hasRun.toBool()));
                         });
}

void QtWebPage::complete(const std::shared_ptr<Evaluation>& evaluation,
                         const Result<ScriptValue>& result) {
    if (std::erase(evaluations_, evaluation) == 0) return;  // told already
    const Completion completion = std::move(evaluation->completion);
    completion(result);
}

// Those that were asked for in a document before this one.
void QtWebPage::failEvaluations(const Error& error, int beforeDocument) {
    if (!Environment::isInstalled()) return;
    std::erase_if(evaluations_, [&](const auto& evaluation) {
        if (evaluation->document >= beforeDocument) return false;
        Environment::scheduler().runOnMain(
            [completion = std::move(evaluation->completion), error] { completion(error); });
        return true;
    });
}

void QtWebPage::insertScript(const QString& name, const QString& source, quint32 world,
                             bool inFrames) {
    QWebEngineScriptCollection& scripts = page_->scripts();
    for (const QWebEngineScript& old : scripts.find(name))
        scripts.remove(old);
    QWebEngineScript script;
    script.setName(name);
    script.setSourceCode(source);
    script.setInjectionPoint(QWebEngineScript::DocumentCreation);
    script.setWorldId(world);
    script.setRunsOnSubFrames(inFrames);
    scripts.insert(script);
}

void QtWebPage::insertHandlers() {
    insertScript("handlers", pageScripts::handlerScript(page_->token(), handlers_), world_, true);
}

void QtWebPage::addMessageHandler(const std::string& name) {
    const auto isNamed = [&](const auto& handler) { return handler.second == name; };
    if (!page_ || !isValidUtf8(name) || std::ranges::any_of(handlers_, isNamed)) return;
    handlers_.emplace(++lastHandler_, name);
    insertHandlers();
    // Scripts reach the next document; the page that runs already may post at once.
    if (navigation_.showsPage())
        page_->runJavaScript(pageScripts::handlerScript(page_->token(), {{lastHandler_, name}}),
                             world_);
}

void QtWebPage::removeMessageHandler(const std::string& name) {
    const auto isNamed = [&](const auto& handler) { return handler.second == name; };
    if (!page_ || std::erase_if(handlers_, isNamed) == 0) return;
    insertHandlers();
    if (navigation_.showsPage()) page_->runJavaScript(pageScripts::removalScript(name), world_);
}

void QtWebPage::pageSaid(const QString& text) {
    const auto said = pageScripts::parse(text);
    if (!said) return;
    using Kind = pageScripts::Said::Kind;
    if (said->kind == Kind::documentCreated) {
        ++document_;
        watch_.progressSeen();
        report(navigation_.documentCreated(said->address));
    } else if (said->kind == Kind::documentLoaded) {
        report(navigation_.documentLoaded());
    } else if (said->kind == Kind::windowWanted) {
        pageAsksForWindow(QUrl::fromEncoded(QByteArray::fromStdString(said->address)));
    } else if (const auto handler = handlers_.find(said->handler); handler != handlers_.end()) {
        const std::string name = handler->second;  // the report may remove the handler
        if (const auto delegate = delegate_.lock()) delegate->pagePosted(name, said->body);
    }
}

void QtWebPage::panelAsked(QWebEngineUrlRequestJob& job) {
    const auto panel = pageScripts::parsePanel(job.requestUrl().query(QUrl::FullyEncoded));
    const auto delegate = delegate_.lock();
    if (!panel || !delegate) return job.fail(QWebEngineUrlRequestJob::RequestDenied);
    const auto answer = std::make_shared<PanelAnswer>(job, panel->kind);
    openPanel_ = answer;
    delegate->pageAsksWithPanel(*panel,
                                [answer](const ScriptPanelAnswer& given) { answer->give(given); });
}

}  // namespace zorvik::platform::qt
