#include "platform/uikit/UIApplication.h"

#include <utility>

#include "platform/runtime/Environment.h"
#include "platform/runtime/MainThread.h"
#include "platform/runtime/NotificationCenter.h"

namespace zorvik::platform {

UIApplication& UIApplication::shared() {
    return Environment::sharedApplication();
}

UIApplication::UIApplication(ApplicationService& service) : service_(service) {
    service_.setDelegate(this);
}

UIApplication::~UIApplication() {
    service_.setDelegate(nullptr);
}

bool UIApplication::canOpenURL(const URL& url) {
    assertMainThread();
    return service_.canOpen(url);
}

void UIApplication::open(const URL& url, std::function<void(bool opened)> completion) {
    assertMainThread();
    service_.open(url, std::move(completion));
}

void UIApplication::applicationDidBecomeActive() {
    NotificationCenter::defaultCenter().post(didBecomeActiveNotification);
}

}  // namespace zorvik::platform
