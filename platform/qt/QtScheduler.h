#pragma once

#include <memory>
#include <optional>

#include "platform/desktop/DesktopScheduler.h"

namespace zorvik::platform::qt {

// The main queue as one timer of Qt's, whatever its main loop stands on. Made on the thread of the
// application object, while there is one.
class QtScheduler : public desktop::DesktopScheduler {
  public:
    QtScheduler();
    ~QtScheduler() override;

  private:
    class Waker;

    void wakeAt(std::optional<Moment> moment) override;

    const std::unique_ptr<Waker> waker_;
};

}  // namespace zorvik::platform::qt
