#pragma once

#include "platform/foundation/Date.h"
#include "platform/foundation/Export.h"

namespace zorvik::platform {

// The current date by the installed scheduler's wall clock. Any thread.
ZORVIK_API Date currentDate();

}  // namespace zorvik::platform
