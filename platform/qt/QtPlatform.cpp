#include "platform/qt/QtPlatform.h"

#include <QApplication>
#include <QCloseEvent>
#include <QEventLoop>
#include <QPixmap>
#include <QPointer>
#include <QStandardPaths>
#include <QThread>
#include <QTimer>
#include <QWidget>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <utility>
#include <vector>

#include "platform/desktop/FileDefaults.h"
#include "platform/qt/QtApplicationService.h"
#include "platform/qt/QtScheduler.h"
#include "platform/qt/QtStage.h"
#include "platform/qt/QtWebEngine.h"
#include "platform/runtime/Environment.h"

namespace zorvik::platform::qt {
namespace {

std::filesystem::path folder(QStandardPaths::StandardLocation location) {
    return QStandardPaths::writableLocation(location).toStdString();
}

QtWebEngineOptions engineOptions(const QtPlatformOptions& options) {
    QtWebEngineOptions engine;
    engine.keepsSparePage = options.keepsSparePage;
    engine.hungSeconds = options.hungPageSeconds;
    engine.pageData = options.pageData;
    engine.dataFolder =
        folder(QStandardPaths::GenericDataLocation) / options.applicationId / "pages";
    engine.cacheFolder =
        folder(QStandardPaths::GenericCacheLocation) / options.applicationId / "pages";
    return engine;
}

std::filesystem::path defaultsFile(const QtPlatformOptions& options) {
    return folder(QStandardPaths::GenericConfigLocation) / options.applicationId / "defaults.json";
}

// Asked before the application object is made, which ends the process where it finds none.
bool hasDisplay() {
#if defined(Q_OS_UNIX) && !defined(Q_OS_DARWIN)
    return qEnvironmentVariableIsSet("QT_QPA_PLATFORM") ||
           !qEnvironmentVariableIsEmpty("DISPLAY") ||
           !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
#else
    return true;
#endif
}

// The toolkit bears one application object in a process, and the engine none at its end.
bool hasApplication() {
    if (QCoreApplication::instance() != nullptr) {
        return qobject_cast<QApplication*>(QCoreApplication::instance()) != nullptr;
    }
    static int argumentCount = 1;
    static char name[] = "zorvik";
    static char* arguments[] = {name, nullptr};
    new QApplication(argumentCount, arguments);
    QApplication::setQuitOnLastWindowClosed(false);
    return true;
}

// Hides when the customer closes it.
class Window : public QWidget {
  public:
    explicit Window(std::function<void()> closed) : closed_(std::move(closed)) {}

  protected:
    void closeEvent(QCloseEvent* event) override {
        event->accept();
        // Not inside the event: it may close the window for good.
        if (closed_) Environment::runOnMain(closed_);
    }

  private:
    const std::function<void()> closed_;
};

}  // namespace

// In the order of their making; the scheduler goes last.
struct QtPlatform::Parts {
    explicit Parts(const QtPlatformOptions& options)
        : engine(scheduler, engineOptions(options)),
          application(scheduler),
          defaults(defaultsFile(options)),
          stage(scheduler, options.safeAreaInsets) {}

    QtScheduler scheduler;
    QtWebEngine engine;
    QtApplicationService application;
    desktop::FileDefaults defaults;
    QtStage stage;
    std::vector<QPointer<QWidget>> windows;
    QEventLoop* loop = nullptr;
};

std::unique_ptr<QtPlatform> QtPlatform::make(const QtPlatformOptions& options) {
    if (!desktop::canNameFolder(options.applicationId)) {
        std::fprintf(stderr, "zorvik: \"%s\" cannot name the application's folder\n",
                     options.applicationId.c_str());
        return nullptr;
    }
    if (QCoreApplication::instance() == nullptr && !hasDisplay()) {
        std::fprintf(stderr, "zorvik: there is no display to open\n");
        return nullptr;
    }
    if (!hasApplication() || QThread::currentThread() != qApp->thread()) {
        std::fprintf(stderr, "zorvik: this is not the thread of a QApplication\n");
        return nullptr;
    }
    return std::unique_ptr<QtPlatform>(new QtPlatform(std::make_unique<Parts>(options)));
}

QtPlatform::QtPlatform(std::unique_ptr<Parts> parts) : parts_(std::move(parts)) {
    Environment::install(
        {parts_->scheduler, parts_->engine, parts_->application, parts_->defaults, parts_->stage});
}

QtPlatform::~QtPlatform() {
    // What is dropped may use the toolkit a last time, so the port stays installed until no task
    // or screen of its own is left.
    parts_->scheduler.shutDown();
    parts_->stage.dropScreens();
    while (!parts_->windows.empty()) {
        const QPointer<QWidget> window = std::move(parts_->windows.back());
        parts_->windows.pop_back();
        delete window.data();
    }
    parts_->engine.end();  // whoever still holds a page may destroy it on any thread from now on
    Environment::uninstall();
}

QWidget* QtPlatform::openWindow(const std::string& title, const Size& size,
                                std::function<void()> closed) {
    auto* window = new Window(std::move(closed));
    parts_->windows.emplace_back(window);
    window->setWindowTitle(QString::fromStdString(title));
    window->resize(static_cast<int>(size.width), static_cast<int>(size.height));
    window->show();
    window->activateWindow();  // where no window manager does
    return window;
}

void QtPlatform::closeWindow(QWidget* window) {
    const auto place = std::ranges::find(parts_->windows, window, &QPointer<QWidget>::data);
    if (window == nullptr || place == parts_->windows.end()) return;
    parts_->windows.erase(place);
    delete window;
}

std::shared_ptr<UIViewController> QtPlatform::presenterFor(QWidget* window) {
    return parts_->stage.presenterFor(window);
}

void QtPlatform::setSafeAreaInsets(const UIEdgeInsets& insets) {
    parts_->stage.setSafeAreaInsets(insets);
}

void QtPlatform::run() {
    QEventLoop loop;
    QEventLoop* const outer = std::exchange(parts_->loop, &loop);
    loop.exec();
    parts_->loop = outer;
}

void QtPlatform::quit() {
    if (parts_->loop != nullptr) parts_->loop->quit();
}

bool QtPlatform::runUntil(const std::function<bool()>& condition, double seconds) {
    QTimer expiry;
    expiry.setSingleShot(true);
    expiry.setTimerType(Qt::PreciseTimer);
    const double milliseconds = seconds > 0 ? std::ceil(std::fmin(seconds, 1e6) * 1000) : 0;
    expiry.start(static_cast<int>(milliseconds));
    QEventLoop loop;
    while (!condition()) {
        if (!expiry.isActive()) return false;
        loop.processEvents(QEventLoop::WaitForMoreEvents);
        // Which a loop that only looks for events leaves to the one it returns to.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}

bool QtPlatform::savePng(QWidget* window, const std::string& path) {
    if (window == nullptr || !window->isVisible()) return false;
    return window->grab().save(QString::fromStdString(path), "PNG");
}

unsigned long QtPlatform::wakeUps() const {
    return parts_->scheduler.turns();
}

}  // namespace zorvik::platform::qt
