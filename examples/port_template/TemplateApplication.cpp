#include "TemplateApplication.h"

#include <utility>

namespace port_template {

// PORTER: whether an application is installed for the address's scheme. Schemes compare without
// regard to case.
bool TemplateApplication::canOpen(const zorvik::platform::URL& /*url*/) {
    return false;
}

// PORTER: hand the address over. True means that the application starts, not that it was asked to:
// a launch that fails later is told to nobody.
void TemplateApplication::open(const zorvik::platform::URL& /*url*/,
                               std::function<void(bool opened)> completion) {
    scheduler_.runOnMain([completion = std::move(completion)] {
        if (completion) completion(false);
    });
}

void TemplateApplication::cameToTheFront() {
    if (delegate_ != nullptr) delegate_->applicationDidBecomeActive();
}

}  // namespace port_template
