#include "trace/recorder/Recorder.h"

namespace zorvik::trace {

using platform::Environment;

Recorder::Recorder()
    : port_{Environment::scheduler(), Environment::webEngine(), Environment::application(),
            Environment::defaults(), Environment::stage()},
      log_(std::make_shared<Log>(port_.scheduler)),
      scheduler_(port_.scheduler, log_),
      webEngine_(port_.webEngine, log_),
      application_(port_.application, log_),
      defaults_(port_.defaults, log_),
      stage_(port_.stage, log_) {}

bool Recorder::isInForce() const {
    return Environment::isInstalled() && &Environment::scheduler() == &scheduler_;
}

}  // namespace zorvik::trace
