#include "platform/qt/EnginePage.h"

#include <QAction>
#include <QAuthenticator>
#include <QChildEvent>
#include <QContextMenuEvent>
#include <QDialog>
#include <QMenu>
#include <QUuid>
#include <QWebEngineCertificateError>
#include <QWebEngineClientCertificateSelection>
#include <QWebEngineContextMenuRequest>
#include <QWebEngineFileSystemAccessRequest>
#include <QWebEngineLoadingInfo>
#include <QWebEngineNewWindowRequest>
#include <QWebEngineProfile>
#include <QWebEngineQuotaRequest>
#include <QWebEngineSettings>

#ifdef Q_OS_WIN
#include <windows.h>
#else
#include <signal.h>
#endif

namespace zorvik::platform::qt {
namespace {

bool isTouchOfTheCustomer(QEvent::Type type) {
    switch (type) {
        case QEvent::MouseButtonPress:
        case QEvent::KeyPress:
        case QEvent::TouchBegin:
        case QEvent::Wheel:
            return true;
        default:
            return false;
    }
}

}  // namespace

class EnginePage::Interceptor : public QWebEngineUrlRequestInterceptor {
  public:
    explicit Interceptor(EnginePage& page) : page_(page) {}
    void interceptRequest(QWebEngineUrlRequestInfo& request) override {
        if (page_.owner_ != nullptr) page_.owner_->pageRequests(request);
    }

  private:
    EnginePage& page_;
};

class EnginePage::View : public QWebEngineView {
  public:
    explicit View(EnginePage& page) : QWebEngineView(&page), page_(page) {
        setAcceptDrops(false);  // what is dropped on a page would be loaded in its place
    }

  protected:
    void contextMenuEvent(QContextMenuEvent* event) override {
        // The engine's other items lead away from the page.
        const QWebEngineContextMenuRequest* request = lastContextMenuRequest();
        if (request == nullptr) return;
        using Flag = QWebEngineContextMenuRequest;
        const auto flags = request->editFlags();
        auto* const menu = new QMenu(this);
        menu->setAttribute(Qt::WA_DeleteOnClose);
        bool hasUse = false;
        for (const auto& [flag, action] : {std::pair{Flag::CanCut, QWebEnginePage::Cut},
                                           {Flag::CanCopy, QWebEnginePage::Copy},
                                           {Flag::CanPaste, QWebEnginePage::Paste},
                                           {Flag::CanSelectAll, QWebEnginePage::SelectAll}}) {
            const bool isForText = request->isContentEditable() || action == QWebEnginePage::Copy;
            const bool canBeUsed = flags.testFlag(flag) && isForText;
            hasUse = hasUse || canBeUsed;
            if (!isForText) continue;
            QAction* const item = page_.action(action);
            item->setEnabled(canBeUsed);
            menu->addAction(item);
        }
        if (hasUse) {
            menu->popup(event->globalPos());
        } else {
            delete menu;
        }
    }

    void hideEvent(QHideEvent* event) override {
        QWebEngineView::hideEvent(event);
        // A page that is hidden for a while goes on at its own pace.
        if (page_.owner_ != nullptr) page_.setVisible(true);
    }

    void childEvent(QChildEvent* event) override {
        QWebEngineView::childEvent(event);
        QObject* const child = event->child();
        if (event->added() && child->isWidgetType()) child->installEventFilter(this);
        // The engine opens its choice of colours unasked.
        if (event->polished() && qobject_cast<QDialog*>(child) != nullptr)
            QMetaObject::invokeMethod(child, "reject", Qt::QueuedConnection);
    }

    bool eventFilter(QObject* child, QEvent* event) override {
        if (isTouchOfTheCustomer(event->type()) && page_.owner_ != nullptr)
            page_.owner_->customerActed();
        return QWebEngineView::eventFilter(child, event);
    }

  private:
    EnginePage& page_;
};

EnginePage::EnginePage(std::shared_ptr<EngineProfile> sharedProfile)
    : EngineProfileUse{std::move(sharedProfile)},
      QWebEnginePage(EngineProfileUse::profile->profile.get()),
      token_("page" + QUuid::createUuid().toString(QUuid::Id128)),
      interceptor_(std::make_unique<Interceptor>(*this)),
      view_(std::make_unique<View>(*this)) {
    EngineProfileUse::profile->scheme.add(token_, this);
    setUrlRequestInterceptor(interceptor_.get());
    QWebEngineSettings* const own = settings();
    own->setUnknownUrlSchemePolicy(QWebEngineSettings::AllowAllUnknownUrlSchemes);
    using Attribute = QWebEngineSettings;
    for (const auto attribute :
         {Attribute::ErrorPageEnabled, Attribute::PluginsEnabled, Attribute::PdfViewerEnabled,
          Attribute::FullScreenSupportEnabled, Attribute::NavigateOnDropEnabled,
          Attribute::AutoLoadIconsForPage, Attribute::ScreenCaptureEnabled}) {
        own->setAttribute(attribute, false);
    }
    refuseWhatIsNoPage();
    passOnSignals();
}

EnginePage::~EnginePage() {
    owner_ = nullptr;
    EngineProfileUse::profile->scheme.remove(token_);
    // Else the view would make a page of its own in this one's place.
    view_->setPage(nullptr);
    setUrlRequestInterceptor(nullptr);
}

void EnginePage::configure(const WebPageConfiguration& configuration) {
    settings()->setAttribute(QWebEngineSettings::JavascriptEnabled,
                             configuration.allowsContentJavaScript);
    settings()->setAttribute(QWebEngineSettings::JavascriptCanOpenWindows,
                             configuration.javaScriptCanOpenWindowsAutomatically);
}

void EnginePage::endProcess() const {
    const qint64 process = renderProcessPid();
    if (process <= 0) return;
#ifdef Q_OS_WIN
    HANDLE handle = OpenProcess(PROCESS_TERMINATE, FALSE, static_cast<DWORD>(process));
    if (handle == nullptr) return;
    TerminateProcess(handle, 1);
    CloseHandle(handle);
#else
    ::kill(static_cast<pid_t>(process), SIGKILL);
#endif
}

void EnginePage::refuseWhatIsNoPage() {
    connect(this, &QWebEnginePage::featurePermissionRequested, this,
            [this](const QUrl& origin, Feature feature) {
                setFeaturePermission(origin, feature, PermissionDeniedByUser);
            });
    // Goes on without credentials; the server's refusal is then the page.
    const auto withoutCredentials = [](QAuthenticator* answer) { *answer = QAuthenticator(); };
    connect(this, &QWebEnginePage::authenticationRequired, this,
            [=](const QUrl&, QAuthenticator* answer) { withoutCredentials(answer); });
    connect(this, &QWebEnginePage::proxyAuthenticationRequired, this,
            [=](const QUrl&, QAuthenticator* answer) { withoutCredentials(answer); });
    connect(this, &QWebEnginePage::selectClientCertificate, this,
            [](QWebEngineClientCertificateSelection selection) { selection.selectNone(); });
    connect(this, &QWebEnginePage::quotaRequested, this,
            [](QWebEngineQuotaRequest request) { request.reject(); });
    connect(this, &QWebEnginePage::fileSystemAccessRequested, this,
            [](QWebEngineFileSystemAccessRequest request) { request.reject(); });
}

void EnginePage::passOnSignals() {
    connect(this, &QWebEnginePage::newWindowRequested, this,
            [this](const QWebEngineNewWindowRequest& request) {
                if (owner_ != nullptr) owner_->pageAsksForWindow(request.requestedUrl());
            });
    connect(this, &QWebEnginePage::loadingChanged, this, [this](const QWebEngineLoadingInfo& info) {
        const bool isEnd = info.status() != QWebEngineLoadingInfo::LoadStartedStatus;
        if (owner_ != nullptr && isEnd) owner_->pageEnded(info);
    });
    connect(this, &QWebEnginePage::urlChanged, this, [this](const QUrl& url) {
        if (owner_ != nullptr) owner_->pageChangedAddress(url);
    });
    connect(this, &QWebEnginePage::loadProgress, this, [this] {
        if (owner_ != nullptr) owner_->pageProgressed();
    });
    connect(this, &QWebEnginePage::renderProcessTerminated, this, [this] {
        if (owner_ != nullptr) owner_->pageLostItsProcess();
    });
}

bool EnginePage::acceptNavigationRequest(const QUrl& url, NavigationType type, bool isMainFrame) {
    return owner_ != nullptr && owner_->pageAsks(url, type, isMainFrame);
}

void EnginePage::javaScriptConsoleMessage(JavaScriptConsoleMessageLevel, const QString& message,
                                          int, const QString&) {
    // The rest is for the page's developer, who has the engine's own tools.
    if (owner_ != nullptr && message.startsWith(token_))
        owner_->pageSaid(message.mid(token_.size()));
}

}  // namespace zorvik::platform::qt
