#pragma once

#include <QPointer>
#include <QUrl>
#include <QWebEngineUrlRequestJob>
#include <functional>
#include <memory>
#include <string>

#include "platform/qt/QtWebPage.h"

namespace zorvik::platform::qt {

// An address as the engine writes it.
std::string textOf(const QUrl& url);

// The first answer counts; dropped unanswered it is a "no".
std::function<void(NavigationDecision)> answerOnce(std::function<void(NavigationDecision)> receive);

// What the engine asked, until it is answered and the engine has gone on with the answer.
class QtWebPage::Question {
  public:
    Question(QtWebPage& page, QUrl url, bool isMainFrame, PageNavigation::QuestionKind kind);
    Question(const Question&) = delete;
    Question& operator=(const Question&) = delete;
    ~Question() { give(NavigationDecision::cancel); }

    void give(NavigationDecision decision);
    // The navigation is over: nobody is to hear of the answer.
    void close();

    const QUrl url;
    const bool isMainFrame;
    const PageNavigation::QuestionKind kind;
    const int number;  // names it in the address at which its request waits
    const bool canBeOpened;
    std::optional<NavigationDecision> answer;
    bool isLate = false;       // the engine got another answer for now
    bool isRequested = false;  // its request was sent to wait
    QPointer<QWebEngineUrlRequestJob> job;

  private:
    const Self page_;
};

}  // namespace zorvik::platform::qt
