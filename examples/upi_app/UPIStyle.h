#pragma once

#include <string>

namespace zorvik::demo {

// The UPI apps' look, after the checkout page's: light or dark as the desktop is, now and when that
// changes, with sizes that follow its text scale. For the whole process, with this accent colour
// (#rrggbb). Main thread.
void followDesktopStyle(const std::string& accent);

}  // namespace zorvik::demo
