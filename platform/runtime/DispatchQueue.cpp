#include "platform/runtime/DispatchQueue.h"

#include <utility>

#include "platform/runtime/Environment.h"

namespace zorvik::platform {

void DispatchQueue::async(Task task) const {
    Scheduler& scheduler = Environment::scheduler();
    if (isMain_) {
        scheduler.runOnMain(std::move(task));
    } else {
        scheduler.runInBackground(std::move(task));
    }
}

}  // namespace zorvik::platform
