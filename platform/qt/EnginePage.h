#pragma once

#include <QPointer>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineUrlRequestInterceptor>
#include <QWebEngineView>
#include <memory>

#include "platform/qt/PageScheme.h"
#include "platform/services/WebEngine.h"

namespace zorvik::platform::qt {

// The pages of one store of cookies, entries and files, and the waiting they do. It outlives its
// pages, which share it.
struct EngineProfile {
    std::unique_ptr<QWebEngineProfile> profile;  // goes first: it has to do with the scheme
    PageScheme scheme;

    EngineProfile() = default;
    EngineProfile(const EngineProfile&) = delete;
    EngineProfile& operator=(const EngineProfile&) = delete;
    ~EngineProfile() { profile.reset(); }
};

// Keeps the profile for longer than the engine's page that stands behind this in EnginePage.
struct EngineProfileUse {
    std::shared_ptr<EngineProfile> profile;
};

// The engine's page with the view around it. It refuses on its own what a page's script may not
// do, and tells its owner the rest; without an owner it does nothing. The engine bears its end in
// none of its questions, so that it goes in a turn of its own. Main thread only.
class EnginePage : private EngineProfileUse, public QWebEnginePage {
  public:
    // What the page is for. Told inside the engine's calls, each of which may end the owner.
    class Owner {
      public:
        virtual ~Owner() = default;
        virtual bool pageAsks(const QUrl& url, NavigationType type, bool isMainFrame) = 0;
        virtual void pageRequests(QWebEngineUrlRequestInfo& request) = 0;
        virtual void pageAsksForWindow(const QUrl& url) = 0;
        virtual void pageWaits(QWebEngineUrlRequestJob& job) = 0;
        virtual void pageSaid(const QString& text) = 0;  // by PageScripts' own means
        virtual void pageEnded(const QWebEngineLoadingInfo& info) = 0;
        virtual void pageChangedAddress(const QUrl& url) = 0;
        virtual void pageProgressed() = 0;
        virtual void pageLostItsProcess() = 0;
        virtual void customerActed() = 0;
    };

    explicit EnginePage(std::shared_ptr<EngineProfile> sharedProfile);
    ~EnginePage() override;

    Owner* owner() const { return owner_; }
    void setOwner(Owner* owner) { owner_ = owner; }
    QWebEngineView* view() const { return view_.get(); }
    // Known to this page's own scripts alone.
    const QString& token() const { return token_; }

    void configure(const WebPageConfiguration& configuration);
    // Ends the process that runs the page; nothing without one. The page is told, in a later turn.
    void endProcess() const;

  protected:
    bool acceptNavigationRequest(const QUrl& url, NavigationType type, bool isMainFrame) override;
    void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel level, const QString& message,
                                  int line, const QString& source) override;
    void javaScriptAlert(const QUrl&, const QString&) override {}
    // Panels of the page's come another way; what is left asks whether to stay. A page cannot hold
    // the customer back from leaving it.
    bool javaScriptConfirm(const QUrl&, const QString&) override { return true; }
    bool javaScriptPrompt(const QUrl&, const QString&, const QString&, QString*) override {
        return false;
    }
    QStringList chooseFiles(FileSelectionMode, const QStringList&, const QStringList&) override {
        return {};
    }

  private:
    class Interceptor;
    class View;

    void refuseWhatIsNoPage();
    void passOnSignals();

    const QString token_;
    Owner* owner_ = nullptr;
    const std::unique_ptr<Interceptor> interceptor_;
    std::unique_ptr<QWebEngineView> view_;
};

}  // namespace zorvik::platform::qt
