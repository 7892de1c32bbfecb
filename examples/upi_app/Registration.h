#pragma once

#include <string>

namespace zorvik::demo {

// Makes the demonstration's UPI apps the handlers of their schemes for this user: a desktop file
// each in $XDG_DATA_HOME/applications, and an entry in the user's list of default applications.
// One app of the demonstration gets none, and one gets a file whose launch always fails. False,
// with a line on standard error, when something could not be written.
bool registerApps(const std::string& program, const std::string& iconFolder,
                  const std::string& backendUrl);

// Takes away what registerApps wrote.
void unregisterApps();

}  // namespace zorvik::demo
