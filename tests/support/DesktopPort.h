#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

// The desktop port that the build chose, and what tests ask of the engine's processes. Everything
// that differs from one desktop port to another in a test of whole checkouts stands here.
#if defined(ZORVIK_TESTS_ON_QT)
#include "platform/qt/QtPlatform.h"
namespace zorvik::tests {
using DesktopPlatform = platform::qt::QtPlatform;
using DesktopPlatformOptions = platform::qt::QtPlatformOptions;
}  // namespace zorvik::tests
#else
#include "platform/gtk/GtkPlatform.h"
namespace zorvik::tests {
using DesktopPlatform = platform::gtk::GtkPlatform;
using DesktopPlatformOptions = platform::gtk::GtkPlatformOptions;
}  // namespace zorvik::tests
#endif

namespace zorvik::tests {

enum class EngineProcess { web, network };

// The processes of this kind below this one, in the order of their start; none where the engine
// does that work in the program itself. Linux only.
std::vector<pid_t> engineProcesses(EngineProcess kind);

// Makes a program the one that opens addresses of this scheme, in the folders that
// scripts/with-display made for this run. The desktop notices in its own time.
void installApplication(const std::string& scheme, const std::string& shellScript);

}  // namespace zorvik::tests
