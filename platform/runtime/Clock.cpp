#include "platform/runtime/Clock.h"

#include "platform/runtime/Environment.h"

namespace zorvik::platform {

Date currentDate() {
    return Date{Environment::wallSeconds()};
}

}  // namespace zorvik::platform
