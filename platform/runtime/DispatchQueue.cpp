#include "platform/runtime/DispatchQueue.h"

#include <utility>

#include "platform/runtime/Environment.h"

namespace zorvik::platform {

void DispatchQueue::async(Task task) const {
    if (isMain_) {
        Environment::runOnMain(std::move(task));
    } else {
        Environment::runInBackground(std::move(task));
    }
}

}  // namespace zorvik::platform
