#pragma once

#include "platform/foundation/Date.h"

namespace zorvik::platform {

// The current date by the installed scheduler's wall clock. Any thread.
Date currentDate();

}  // namespace zorvik::platform
