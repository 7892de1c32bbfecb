#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "platform/foundation/Export.h"
#include "platform/services/Scheduler.h"

namespace zorvik::platform {

// A one-shot timer on the main run loop. The run loop keeps it until it fires, whoever else lets
// go of it. Main thread only.
class ZORVIK_API Timer {
  public:
    static std::shared_ptr<Timer> scheduledTimer(double seconds, std::function<void()> block);

    // It will not fire, and what its block holds is released. Harmless at any time.
    void invalidate();
    bool isValid() const { return taskId_.has_value(); }

  private:
    struct Pending;

    Timer() = default;

    std::optional<Scheduler::TaskId> taskId_;
};

}  // namespace zorvik::platform
