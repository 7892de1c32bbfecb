#include "platform/qt/QtScheduler.h"

#include <QAbstractEventDispatcher>
#include <QBasicTimer>
#include <QCoreApplication>
#include <QObject>
#include <QThread>
#include <QTimerEvent>
#include <algorithm>
#include <atomic>

namespace zorvik::platform::qt {
namespace {

constexpr std::int64_t longestWait = 24L * 3600 * 1000;  // milliseconds; a longer one goes on then

}  // namespace

// A timer for the next turn: an event for each turn would let one pass of the main loop run
// several. Timers belong to the main thread, so other threads ask it by an event to set them.
class QtScheduler::Waker : public QObject {
  public:
    explicit Waker(QtScheduler& scheduler) : scheduler_(scheduler) {}

    void wakeAt(std::optional<Moment> moment) {
        if (thread() != QThread::currentThread()) {
            if (!isAsked_.exchange(true)) {
                QCoreApplication::postEvent(this, new QEvent(QEvent::User));
            }
        } else if (!moment) {
            timer_.stop();
        } else {
            const std::int64_t milliseconds = (*moment - now() + 999) / 1000;
            const auto wait = std::clamp<std::int64_t>(milliseconds, 0, longestWait);
            // A new one each time: a timer whose event is being handled fires in no nested loop.
            timer_.start(static_cast<int>(wait), Qt::PreciseTimer, this);
        }
    }

  protected:
    void timerEvent(QTimerEvent*) override { scheduler_.takeTurn(); }
    void customEvent(QEvent*) override {
        isAsked_ = false;
        scheduler_.wakeAgain();
    }

  private:
    QtScheduler& scheduler_;
    QBasicTimer timer_;
    std::atomic<bool> isAsked_ = false;
};

QtScheduler::QtScheduler()
    : DesktopScheduler([dispatcher = QAbstractEventDispatcher::instance()] {
          if (dispatcher != nullptr) dispatcher->wakeUp();
      }),
      waker_(std::make_unique<Waker>(*this)) {}

QtScheduler::~QtScheduler() {
    shutDown();
}

void QtScheduler::wakeAt(std::optional<Moment> moment) {
    waker_->wakeAt(moment);
}

}  // namespace zorvik::platform::qt
