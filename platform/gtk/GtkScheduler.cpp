#include "platform/gtk/GtkScheduler.h"

#include <glib.h>

namespace zorvik::platform::gtk {
namespace {

// Below WebKit's messages (100) and on a par with drawing: a busy queue of a higher priority
// starves the page and the screen, one of a lower priority is starved by a flood of page messages.
constexpr int priority = 120;

struct TurnSource {
    GSource base;
    void (*takeTurn)(void* scheduler);
    void* scheduler;
};

GSourceFuncs turnFunctions = {
    nullptr,
    nullptr,
    [](GSource* source, GSourceFunc, gpointer) -> gboolean {
        auto* turn = reinterpret_cast<TurnSource*>(source);
        turn->takeTurn(turn->scheduler);
        return G_SOURCE_CONTINUE;
    },
    nullptr,
    nullptr,
    nullptr,
};

}  // namespace

GtkScheduler::GtkScheduler()
    : DesktopScheduler([] { g_main_context_wakeup(nullptr); }),
      source_(g_source_new(&turnFunctions, sizeof(TurnSource))) {
    auto* turn = reinterpret_cast<TurnSource*>(source_);
    turn->takeTurn = [](void* scheduler) { static_cast<GtkScheduler*>(scheduler)->takeTurn(); };
    turn->scheduler = this;
    g_source_set_priority(source_, priority);
    g_source_set_can_recurse(source_, TRUE);
    g_source_set_static_name(source_, "zorvik main queue");
    g_source_attach(source_, nullptr);
}

GtkScheduler::~GtkScheduler() {
    shutDown();
    g_source_destroy(source_);
    g_source_unref(source_);
}

// GLib's monotonic clock is the steady clock.
void GtkScheduler::wakeAt(std::optional<Moment> moment) {
    if (moment) {
        g_source_set_ready_time(source_, *moment <= now() ? 0 : *moment);
    } else {
        g_source_set_ready_time(source_, -1);
    }
}

}  // namespace zorvik::platform::gtk
