#pragma once

#include <optional>

#include "platform/desktop/DesktopScheduler.h"

typedef struct _GSource GSource;

namespace zorvik::platform::gtk {

// The main queue as one source of GLib's default main context.
class GtkScheduler : public desktop::DesktopScheduler {
  public:
    GtkScheduler();
    ~GtkScheduler() override;

  private:
    void wakeAt(std::optional<Moment> moment) override;

    GSource* source_ = nullptr;
};

}  // namespace zorvik::platform::gtk
