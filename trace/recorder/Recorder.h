#pragma once

#include <memory>

#include "trace/recorder/TracedServices.h"

namespace zorvik::trace {

// The services that stand in the place of the installed port's, and the port's own. Made and used
// on the main thread; kept by the environment for whoever still holds on to a service.
class Recorder {
  public:
    Recorder();

    const std::shared_ptr<Log>& log() const { return log_; }
    platform::Services services() {
        return {scheduler_, webEngine_, application_, defaults_, stage_};
    }
    const platform::Services& port() const { return port_; }
    bool isInForce() const;

  private:
    const platform::Services port_;
    const std::shared_ptr<Log> log_;
    TracedScheduler scheduler_;
    TracedWebEngine webEngine_;
    TracedApplication application_;
    TracedDefaults defaults_;
    TracedStage stage_;
};

}  // namespace zorvik::trace
