#pragma once

#include <functional>
#include <memory>
#include <string>

#include "core/development/EventSink.h"

namespace zorvik::demo {

// Makes the development core services work for the demonstration's back end. With core services of
// its maker's an application has none of this. Main thread only.
void configureServices(const std::string& backendUrl,
                       std::shared_ptr<development::EventSink> eventSink);

// Switches a fault of the back end. `done` is called in a turn of the main queue once the back end
// has it; never when it cannot be reached.
void setFault(const std::string& backendUrl, const std::string& fault, bool isOn,
              std::function<void()> done);

}  // namespace zorvik::demo
