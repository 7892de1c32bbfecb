#pragma once

#include <string>
#include <string_view>

#include "core/development/OrderBook.h"
#include "platform/foundation/Error.h"
#include "platform/foundation/Value.h"

namespace zorvik::demo {

// An order as the demonstration's back end and its clients exchange it.
platform::Dictionary orderToDictionary(const development::OrderRecord& order);
// An Error when a member is missing or of another type.
platform::Result<development::OrderRecord> orderFromDictionary(const platform::Dictionary& fields);

// The string under this key; "" when there is none.
std::string textOf(const platform::Dictionary& fields, std::string_view key);

}  // namespace zorvik::demo
