#include "platform/uikit/UIApplication.h"

#include <utility>

#include "platform/runtime/Environment.h"
#include "platform/runtime/MainThread.h"

namespace zorvik::platform {

UIApplication& UIApplication::shared() {
    static UIApplication instance;
    return instance;
}

bool UIApplication::canOpenURL(const URL& url) {
    assertMainThread();
    return Environment::application().canOpen(url);
}

void UIApplication::open(const URL& url, std::function<void(bool opened)> completion) {
    assertMainThread();
    Environment::application().open(url, std::move(completion));
}

}  // namespace zorvik::platform
