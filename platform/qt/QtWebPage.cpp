#include "platform/qt/QtWebPage.h"

#include <QWebEngineLoadingInfo>
#include <QWebEngineScript>
#include <algorithm>
#include <utility>

#include "platform/desktop/WebPageError.h"
#include "platform/qt/PageQuestion.h"
#include "platform/qt/PageScripts.h"
#include "platform/runtime/Environment.h"

namespace zorvik::platform::qt {

using desktop::ProcessProbe, desktop::webPageError, desktop::WebPageErrorCode;

namespace {

// How long a web process may owe an answer to a question of its own, and when a new load is to
// start.
constexpr double patience = 5;
constexpr double patienceOfALoad = 1;

Error processError() {
    return webPageError(WebPageErrorCode::webProcessEnded, "The web process ended unexpectedly.");
}

Error errorFrom(const QWebEngineLoadingInfo& info) {
    const std::string text = info.errorString().toStdString();
    return {"QtWebEngine", info.errorCode(), text.empty() ? "The page could not be loaded." : text};
}

PageNavigation::Outcome outcomeOf(const QWebEngineLoadingInfo& info) {
    using Outcome = PageNavigation::Outcome;
    // The engine takes a page that a server sends with an error's status for a failure.
    if (info.errorDomain() == QWebEngineLoadingInfo::HttpStatusCodeDomain)
        return Outcome::succeeded;
    switch (info.status()) {
        case QWebEngineLoadingInfo::LoadSucceededStatus:
            return Outcome::succeeded;
        case QWebEngineLoadingInfo::LoadStoppedStatus:
            return Outcome::stopped;
        default:
            return info.errorCode() == 0 ? Outcome::unexplained : Outcome::failed;
    }
}

}  // namespace

std::string textOf(const QUrl& url) {
    return url.toEncoded().toStdString();
}

QtWebPage::QtWebPage(std::unique_ptr<EnginePage> page, const WebPageConfiguration& configuration,
                     std::weak_ptr<WebPageDelegate> delegate, double hungSeconds, Left left)
    : page_(std::move(page)),
      delegate_(std::move(delegate)),
      hungSeconds_(hungSeconds),
      // Without the page's scripts its own world runs none of ours either, and has nothing to see.
      world_(configuration.allowsContentJavaScript ? QWebEngineScript::MainWorld
                                                   : QWebEngineScript::ApplicationWorld),
      left_(std::move(left)),
      self_(std::make_shared<QtWebPage*>(this)),
      watch_([this] { timedOut(); }) {
    page_->configure(configuration);
    page_->setOwner(this);
    page_->setVisible(true);  // nothing is throttled before the stage shows it
    insertScript("document", pageScripts::documentScript(page_->token()),
                 QWebEngineScript::ApplicationWorld, false);
    insertScript("evaluator", pageScripts::evaluatorScript(), world_, false);
    insertScript("refusals",
                 pageScripts::refusalScript(page_->token(),
                                            configuration.javaScriptCanOpenWindowsAutomatically),
                 world_, true);
}

QtWebPage::~QtWebPage() {
    if (!page_) return;
    failEvaluations(webPageError(WebPageErrorCode::pageGone, "The page was destroyed."),
                    document_ + 1);
    left_(*this, giveUpPage());
}

std::unique_ptr<EnginePage> QtWebPage::giveUpPage() {
    *self_ = nullptr;
    watch_.stop();
    probe_.reset();
    page_->setOwner(nullptr);
    dropLateQuestions();
    page_->triggerAction(QWebEnginePage::Stop);
    page_->view()->hide();
    page_->view()->setParent(nullptr);
    page_->setVisible(false);
    auto page = std::move(page_);
    const auto dropped = std::exchange(evaluations_, {});  // this page may end here
    return page;
}

QWidget* QtWebPage::widget() const {
    return page_ ? page_->view() : nullptr;
}

void QtWebPage::load(const URLRequest& request) {
    if (!page_) return;
    dropLateQuestions();
    // A hung process would not load this either, and what it shows is to go anyway.
    if (probe_ && probe_->seconds() >= patienceOfALoad && !navigation_.isLoading()) {
        probe_.reset();
        navigation_.processEnded(processError());
        awaitsProcessEnd_ = true;
        page_->endProcess();
    }
    navigation_.want(request.url.absoluteString());
    requestTimeout_ =
        request.timeoutInterval > 0 ? request.timeoutInterval : desktop::LoadWatch::defaultSeconds;
    Environment::scheduler().runOnMain([self = self_, number = ++request_] {
        if (*self != nullptr) (*self)->begin(number);
    });
}

// The host's loads are asked for before the engine hears of them: it would end the load before, and
// could not wait for the answer.
void QtWebPage::begin(int request) {
    if (request != request_ || awaitsProcessEnd_) return;
    if (navigation_.isProvisional()) stopEngine();
    if (!report(navigation_.begin()) || request != request_) return;
    const auto url = currentUrl();
    const auto delegate = delegate_.lock();
    if (!delegate) return;
    const auto answer = [self = self_, request](NavigationDecision decision) {
        if (*self == nullptr || (*self)->request_ != request) return;
        if (decision == NavigationDecision::cancel) return (*self)->navigation_.cancelRequest();
        (*self)->startSoon();
    };
    delegate->pageAsksToNavigate(url, answerOnce(answer));
}

void QtWebPage::start(int request) {
    if (request != request_ || !navigation_.isRequested()) return;
    // The process answers or its end is told; then the load has one in either case.
    if (mayBeDead_) return askProcess(patience);
    // Else the end of what was refused just before would be told as that of this load.
    startsAfterEnd_ = navigation_.awaitsRefused() && page_->isLoading() && !navigation_.isLoading();
    if (startsAfterEnd_) return;
    const QUrl url = QUrl::fromEncoded(QByteArray::fromStdString(*navigation_.address()));
    watch_.start(requestTimeout_);
    hasProcess_ = true;
    const auto reports = navigation_.allowRequest();
    loadInEngine(url);
    report(reports);
}

void QtWebPage::startSoon() {
    Environment::scheduler().runOnMain([self = self_, request = request_] {
        if (*self != nullptr) (*self)->start(request);
    });
}

void QtWebPage::loadInEngine(const QUrl& url) {
    awaitsOwnQuestion_ = true;
    page_->load(url);
}

void QtWebPage::stopLoading() {
    if (!page_) return;
    ++request_;
    dropLateQuestions();
    stopEngine();
    navigation_.stop(webPageError(WebPageErrorCode::cancelled, "The load was stopped."));
    reportSoon();
}

void QtWebPage::stopEngine() {
    if (page_->isLoading()) navigation_.endWillCome();
    page_->triggerAction(QWebEnginePage::Stop);
}

std::optional<URL> QtWebPage::currentUrl() const {
    const auto address = page_ ? navigation_.address() : std::nullopt;
    return address ? URL::fromEngine(*address) : std::nullopt;
}

bool QtWebPage::report(const PageNavigation::Reports& reports) {
    if (!navigation_.isLoading()) watch_.stop();
    const Self self = self_;
    const auto delegate = delegate_.lock();
    if (!delegate) return true;
    using Kind = PageNavigation::Kind;
    for (const auto& [kind, error] : reports) {
        if (kind == Kind::started) delegate->pageStarted();
        if (kind == Kind::committed) delegate->pageCommitted();
        if (kind == Kind::finished) delegate->pageFinished();
        if (kind == Kind::failedBeforeCommit) delegate->pageFailedBeforeCommit(error);
        if (kind == Kind::failedAfterCommit) delegate->pageFailedAfterCommit(error);
        if (*self == nullptr) return false;
    }
    return true;
}

void QtWebPage::reportSoon() {
    Environment::scheduler().runOnMain([self = self_] {
        if (*self != nullptr) (*self)->report((*self)->navigation_.takeDue());
    });
}

void QtWebPage::pageEnded(const QWebEngineLoadingInfo& info) {
    // A question that was answered with "no" later than the engine asked it.
    if (PageScheme::has(info.url())) return;
    const auto outcome = outcomeOf(info);
    if (outcome == PageNavigation::Outcome::succeeded)
        failEvaluations(webPageError(WebPageErrorCode::pageGone, "The page was left."), document_);
    if (std::exchange(startsAfterEnd_, false)) startSoon();
    report(navigation_.ended(outcome, textOf(info.url()), errorFrom(info)));
}

void QtWebPage::pageChangedAddress(const QUrl& url) {
    navigation_.addressChanged(textOf(url));
}

void QtWebPage::timedOut() {
    if (!navigation_.isLoading()) return;
    ++request_;
    stopEngine();
    navigation_.stop(webPageError(WebPageErrorCode::timedOut, "The request timed out."));
    askProcess(patience);
    report(navigation_.takeDue());
}

void QtWebPage::customerActed() {
    if (navigation_.showsPage()) askProcess(hungSeconds_);
}

void QtWebPage::askProcess(double seconds) {
    if (probe_) return;
    const auto ask = [this](std::function<void()> ran) {
        page_->runJavaScript("1", QWebEngineScript::ApplicationWorld,
                             [ran = std::move(ran)](const QVariant& answer) {
                                 if (answer.isValid()) ran();  // else there was no process
                             });
    };
    probe_ = std::make_unique<ProcessProbe>(
        Environment::scheduler(), ask, seconds, [this](ProcessProbe::Answer answer) {
            probe_.reset();
            // A script waits for the answer to its panel as long as it takes.
            if (answer == ProcessProbe::Answer::silent && openPanel_.expired()) page_->endProcess();
            if (std::exchange(mayBeDead_, false)) startSoon();
        });
}

void QtWebPage::pageLostItsProcess() {
    probe_.reset();
    hasProcess_ = false;
    if (mayBeDead_ || startsAfterEnd_) startSoon();
    mayBeDead_ = startsAfterEnd_ = false;
    dropLateQuestions();
    failEvaluations(processError(), document_ + 1);
    const auto reports = navigation_.processEnded(processError());
    // What had not committed would go on without it.
    if (page_->isLoading()) stopEngine();
    if (std::exchange(awaitsProcessEnd_, false)) {
        Environment::scheduler().runOnMain([self = self_, number = request_] {
            if (*self != nullptr && (*self)->navigation_.isRequested()) (*self)->begin(number);
        });
    }
    report(reports);
}

}  // namespace zorvik::platform::qt
