#pragma once

#include "platform/foundation/Export.h"
#include "platform/services/Scheduler.h"

namespace zorvik::platform {

// The main queue and the global queue, over the installed scheduler. A handle; any thread.
class ZORVIK_API DispatchQueue {
  public:
    enum class QualityOfService { background };

    static DispatchQueue main() { return DispatchQueue(true); }
    static DispatchQueue global(QualityOfService) { return DispatchQueue(false); }

    // Never runs the task inside the call. On the main queue each task has a turn of its own. After
    // the port's end it is dropped in silence; before the first port it is a programming error.
    void async(Task task) const;

  private:
    explicit DispatchQueue(bool isMain) : isMain_(isMain) {}

    bool isMain_;
};

}  // namespace zorvik::platform
