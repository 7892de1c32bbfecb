#include "platform/qt/QtApplicationService.h"

#include <QEvent>
#include <QGuiApplication>
#include <QWindow>
#include <utility>

#include "platform/desktop/SchemeHandlers.h"
#include "platform/runtime/Environment.h"

namespace zorvik::platform::qt {

// Hears of the application's state and sees all input first, letting it go on.
class QtApplicationService::Watch : public QObject {
  public:
    explicit Watch(QtApplicationService& service) : service_(service) {
        connect(qGuiApp, &QGuiApplication::applicationStateChanged, this,
                [this](Qt::ApplicationState) { follow(); });
        qGuiApp->installEventFilter(this);
        follow();
    }

    bool eventFilter(QObject* target, QEvent* event) override {
        const QEvent::Type type = event->type();
        const bool isInput = type == QEvent::KeyPress || type == QEvent::MouseButtonPress ||
                             type == QEvent::TouchBegin;
        if (!isInput || isActive() || !target->isWindowType()) return false;
        // A window manager would have made the window active by now.
        if (service_.inputTakesFocus()) static_cast<QWindow*>(target)->requestActivate();
        return false;
    }

  private:
    static bool isActive() { return QGuiApplication::applicationState() == Qt::ApplicationActive; }
    void follow() { service_.activityChanged(isActive()); }

    QtApplicationService& service_;
};

QtApplicationService::QtApplicationService(Scheduler& scheduler)
    : DesktopApplication(scheduler), watch_(std::make_unique<Watch>(*this)) {}

QtApplicationService::~QtApplicationService() = default;

void QtApplicationService::open(const URL& url, std::function<void(bool opened)> completion) {
    scheduler().runInBackground([url, launch = makeLaunch(std::move(completion))]() mutable {
        const bool isOpened = desktop::startHandler(url);
        Environment::runOnMain([launch = std::move(launch), isOpened] { launch(isOpened); });
    });
}

}  // namespace zorvik::platform::qt
