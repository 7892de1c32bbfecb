#include "platform/dispatch/DispatchQueue.h"

#include <utility>

#include "platform/foundation/ProgrammingError.h"
#include "platform/services/Environment.h"

namespace zorvik::platform {

void DispatchQueue::async(Task task) const {
    Scheduler& scheduler = Environment::scheduler();
    if (isMain_) {
        scheduler.runOnMain(std::move(task));
    } else {
        scheduler.runInBackground(std::move(task));
    }
}

void DispatchQueue::asyncAfter(double seconds, Task task) const {
    if (!isMain_) endOnProgrammingError("asyncAfter is for the main queue only");
    Environment::scheduler().runOnMainAfter(seconds, std::move(task));
}

}  // namespace zorvik::platform
