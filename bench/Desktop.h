#pragma once

// The desktop port that a program of this folder is built with.
#ifdef ZORVIK_BENCH_QT
#include "platform/qt/QtPlatform.h"
namespace zorvik::bench {
using Platform = platform::qt::QtPlatform;
}
#else
#include "platform/gtk/GtkPlatform.h"
namespace zorvik::bench {
using Platform = platform::gtk::GtkPlatform;
}
#endif
