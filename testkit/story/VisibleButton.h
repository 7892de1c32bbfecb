#pragma once

#include <memory>

#include "platform/uikit/UIButton.h"

namespace zorvik::testkit {

// The first button beneath the view that nothing hides, which on the component's screen is Retry;
// nullptr without one. Main thread.
std::shared_ptr<platform::UIButton> visibleButton(const platform::UIView& root);

}  // namespace zorvik::testkit
