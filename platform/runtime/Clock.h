#pragma once

#include "platform/foundation/Date.h"
#include "platform/foundation/Export.h"

namespace zorvik::platform {

// The current date by the installed port's wall clock, by the system's without a port. Any thread.
ZORVIK_API Date currentDate();

}  // namespace zorvik::platform
