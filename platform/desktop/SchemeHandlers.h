#pragma once

#include "platform/foundation/URL.h"

// Which application of this machine opens an address: the only source of the desktop ports that
// knows how the system answers that.
namespace zorvik::platform::desktop {

// Whether an installed application handles the address's scheme. Any thread.
bool hasHandler(const URL& url);
// The same, and whether its program is there and can be executed, and so is its script's
// interpreter: a launch succeeds as soon as a helper process runs, whether or not that can start
// the program. Any thread.
bool hasStartableHandler(const URL& url);
// Starts that application; whether it was started. May take a while: on a background thread.
bool startHandler(const URL& url);

}  // namespace zorvik::platform::desktop
