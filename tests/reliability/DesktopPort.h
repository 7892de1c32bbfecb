#pragma once

#include <cstddef>

// The one place that knows which desktop port the programs of this folder are built with; the two
// platforms have the same members.
#if defined(ZORVIK_RELIABILITY_QT)
#include "platform/qt/QtPlatform.h"
#else
#include "platform/gtk/GtkPlatform.h"
#endif

namespace zorvik::tests {

#if defined(ZORVIK_RELIABILITY_QT)
using DesktopPlatform = platform::qt::QtPlatform;
using DesktopOptions = platform::qt::QtPlatformOptions;
inline constexpr const char* webProcessName = "QtWebEngineProc";
#else
using DesktopPlatform = platform::gtk::GtkPlatform;
using DesktopOptions = platform::gtk::GtkPlatformOptions;
inline constexpr const char* webProcessName = "WebKitWebProces";
#endif

// Sources of the main loop, timers of every library included; 0 where the port's loop cannot tell.
std::size_t eventSources();

}  // namespace zorvik::tests
