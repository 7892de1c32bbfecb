#include <glib.h>

#include "tests/reliability/EventSources.h"

namespace zorvik::tests {

// GLib numbers the sources of its main context one by one and has no list of them.
std::size_t eventSources() {
    const guint last = g_idle_add([](gpointer) -> gboolean { return G_SOURCE_REMOVE; }, nullptr);
    std::size_t count = 0;
    for (guint id = 1; id < last; ++id)
        count += g_main_context_find_source_by_id(nullptr, id) != nullptr ? 1 : 0;
    g_source_remove(last);
    return count;
}

}  // namespace zorvik::tests
