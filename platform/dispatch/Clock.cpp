#include "platform/dispatch/Clock.h"

#include "platform/services/Environment.h"

namespace zorvik::platform {

Date currentDate() {
    return Date{Environment::scheduler().wallSeconds()};
}

}  // namespace zorvik::platform
