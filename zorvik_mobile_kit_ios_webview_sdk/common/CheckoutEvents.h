#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/foundation/Value.h"

namespace zorvik {

// Logs an event of a checkout now, with the order and sub-merchant ids of the token. Any thread.
void logCheckoutEvent(std::string_view eventName, const std::optional<std::string>& orderToken,
                      const platform::Dictionary& additionalData);
// Logs an event that belongs to no checkout, now. Any thread.
void logEventWithoutOrder(std::string_view eventName, const platform::Dictionary& additionalData);

// Runs a task on the background event queue; the caller does not wait.
void inBackground(std::function<void()> task);

}  // namespace zorvik
