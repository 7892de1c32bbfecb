#include <QWebEngineUrlRequestInfo>
#include <algorithm>
#include <utility>

#include "platform/desktop/WebPageError.h"
#include "platform/qt/PageQuestion.h"
#include "platform/runtime/Environment.h"

// What the engine asks before it goes anywhere. It wants the answer inside the call; where the host
// answers later, the request is let go on but to an address of the port's own, where it waits.
namespace zorvik::platform::qt {

using desktop::webPageError, desktop::WebPageErrorCode;

namespace {

// Others are handed to the system's own applications, which is not the engine's business.
bool canOpen(const QUrl& url) {
    static const QStringList schemes = {"http",  "https", "data", "blob",
                                        "about", "file",  "qrc",  "filesystem"};
    return schemes.contains(url.scheme());
}

const QString waitingPath = "/wait/";

}  // namespace

std::function<void(NavigationDecision)> answerOnce(
    std::function<void(NavigationDecision)> receive) {
    class Once {
      public:
        explicit Once(std::function<void(NavigationDecision)> receiver)
            : receive_(std::move(receiver)) {}
        Once(const Once&) = delete;
        Once& operator=(const Once&) = delete;
        ~Once() { give(NavigationDecision::cancel); }
        void give(NavigationDecision decision) {
            if (const auto receiver = std::exchange(receive_, nullptr)) receiver(decision);
        }

      private:
        std::function<void(NavigationDecision)> receive_;
    };
    return [once = std::make_shared<Once>(std::move(receive))](NavigationDecision decision) {
        once->give(decision);
    };
}

QtWebPage::Question::Question(QtWebPage& page, QUrl asked, bool isOfMainFrame,
                              PageNavigation::QuestionKind questionKind)
    : url(std::move(asked)),
      isMainFrame(isOfMainFrame),
      kind(questionKind),
      number([] {
          static int last = 0;
          return ++last;
      }()),
      canBeOpened(canOpen(url)),
      page_(page.self_) {}

void QtWebPage::Question::give(NavigationDecision decision) {
    if (answer) return;
    answer = decision;
    if (*page_ != nullptr) (*page_)->answered(*this);
}

void QtWebPage::Question::close() {
    answer = NavigationDecision::cancel;
    if (job) job->fail(QWebEngineUrlRequestJob::RequestAborted);
}

bool QtWebPage::pageAsks(const QUrl& url, QWebEnginePage::NavigationType type, bool isMainFrame) {
    watch_.progressSeen();
    if (PageScheme::has(url)) return true;
    if (const auto place = std::ranges::find(answeredUrls_, url); place != answeredUrls_.end()) {
        answeredUrls_.erase(place);
        return true;
    }
    // What load() gives it was asked for before.
    const bool isTyped = type == QWebEnginePage::NavigationTypeTyped;
    if (isMainFrame && isTyped && std::exchange(awaitsOwnQuestion_, false)) return canOpen(url);
    // A redirect to another application's address is called by the name of what was redirected.
    const bool isRedirect = type == QWebEnginePage::NavigationTypeRedirect || !canOpen(url);
    const auto kind =
        isMainFrame ? navigation_.kindOf(isRedirect) : PageNavigation::QuestionKind::navigation;
    if (isMainFrame) {
        if (!report(navigation_.ask(textOf(url), kind))) return false;
        if (kind == PageNavigation::QuestionKind::navigation) dropLateQuestions();
    }
    return askDelegate(std::make_shared<Question>(*this, url, isMainFrame, kind));
}

bool QtWebPage::askDelegate(const std::shared_ptr<Question>& question) {
    const auto delegate = delegate_.lock();
    if (!delegate) return false;
    const Self self = self_;
    delegate->pageAsksToNavigate(
        URL::fromEngine(textOf(question->url)),
        [question](NavigationDecision decision) { question->give(decision); });
    if (*self == nullptr) return false;
    if (question.use_count() == 1) question->give(NavigationDecision::cancel);
    if (!question->answer) return letWait(question);
    const bool isAllowed = *question->answer == NavigationDecision::allow && question->canBeOpened;
    if (!isAllowed && question->isMainFrame) navigation_.refused(textOf(question->url));
    return isAllowed;
}

// Whether the engine is to go on to where the request waits.
bool QtWebPage::letWait(const std::shared_ptr<Question>& question) {
    const bool isRedirect = question->kind == PageNavigation::QuestionKind::redirect;
    question->isLate = true;
    // A posted form's text would be lost.
    if (isRedirect && isPost_) question->give(NavigationDecision::cancel);
    if (!question->answer) lateQuestions_.push_back(question);
    // The engine sends the request of a redirect out before it lets it wait.
    const bool goesOn = question->canBeOpened && !isRedirect;
    if (!goesOn && question->isMainFrame) navigation_.refused(textOf(question->url));
    return goesOn;
}

void QtWebPage::answered(Question& question) {
    watch_.progressSeen();
    const bool isAllowed = *question.answer == NavigationDecision::allow;
    if (question.isMainFrame) {
        const std::string address = textOf(question.url);
        if (isAllowed && !question.canBeOpened) {
            navigation_.answerUnopenable(address, webPageError(WebPageErrorCode::unknownScheme,
                                                               "The URL is not supported."));
        } else {
            navigation_.answer(
                address, question.kind,
                isAllowed ? PageNavigation::Answer::allow : PageNavigation::Answer::cancel);
            const bool isNew = question.kind == PageNavigation::QuestionKind::navigation;
            if (isAllowed && isNew) watch_.start(desktop::LoadWatch::defaultSeconds);
        }
        reportSoon();
    }
    const auto place =
        std::ranges::find(lateQuestions_, &question, [](const auto& late) { return late.get(); });
    if (place != lateQuestions_.end()) letGoOn(*place);
}

void QtWebPage::letGoOn(const std::shared_ptr<Question>& question) {
    const bool isAllowed = *question->answer == NavigationDecision::allow;
    const bool isRedirect = question->kind == PageNavigation::QuestionKind::redirect;
    if (isRedirect && isAllowed && question->canBeOpened) loadInEngine(question->url);
    if (question->job && isAllowed) {
        answeredUrls_.push_back(question->url);
        question->job->redirect(question->url);
    } else if (question->job) {
        question->job->fail(QWebEngineUrlRequestJob::RequestAborted);
    }
    const bool isToCome = question->canBeOpened && !isRedirect && !question->job;
    if (!isToCome) std::erase(lateQuestions_, question);
}

void QtWebPage::dropLateQuestions() {
    answeredUrls_.clear();
    for (const auto& question : std::exchange(lateQuestions_, {}))
        question->close();
}

void QtWebPage::pageRequests(QWebEngineUrlRequestInfo& request) {
    using Info = QWebEngineUrlRequestInfo;
    const bool isMainFrame = request.resourceType() == Info::ResourceTypeMainFrame;
    if (!isMainFrame && request.resourceType() != Info::ResourceTypeSubFrame) return;
    const bool isPost = request.requestMethod() != "GET";
    if (isMainFrame) isPost_ = isPost;
    const auto place = std::ranges::find_if(lateQuestions_, [&](const auto& late) {
        return !late->isRequested && late->isMainFrame == isMainFrame &&
               late->url == request.requestUrl();
    });
    if (place == lateQuestions_.end()) return;
    const std::shared_ptr<Question> question = *place;
    question->isRequested = true;
    if (isPost) {
        // What was posted would be lost on the way.
        if (isMainFrame) navigation_.refused(textOf(question->url));
        std::erase(lateQuestions_, question);
        question->give(NavigationDecision::cancel);
        request.block(true);
        return;
    }
    QUrl waiting;
    waiting.setScheme(PageScheme::name);
    waiting.setHost(page_->token());
    waiting.setPath(waitingPath + QString::number(question->number));
    request.redirect(waiting);
}

void QtWebPage::pageWaits(QWebEngineUrlRequestJob& job) {
    const QString path = job.requestUrl().path();
    if (!path.startsWith(waitingPath)) return panelAsked(job);
    const int number = path.mid(waitingPath.size()).toInt();
    const auto place =
        std::ranges::find(lateQuestions_, number, [](const auto& late) { return late->number; });
    if (place == lateQuestions_.end()) return job.fail(QWebEngineUrlRequestJob::RequestAborted);
    const std::shared_ptr<Question> question = *place;
    question->job = &job;
    if (question->answer) letGoOn(question);
}

void QtWebPage::pageAsksForWindow(const QUrl& url) {
    // No window opens, whatever the answer: there is nobody who could close it.
    if (const auto delegate = delegate_.lock())
        delegate->pageAsksToNavigate(URL::fromEngine(textOf(url)), [](NavigationDecision) {});
}

}  // namespace zorvik::platform::qt
