#pragma once

#include <compare>
#include <string>

#include "platform/foundation/Export.h"

namespace zorvik::platform {

// A point in time, in seconds since 1970-01-01 00:00 UTC. A value; any thread.
struct Date {
    double secondsSince1970 = 0;

    double secondsSince(Date earlier) const { return secondsSince1970 - earlier.secondsSince1970; }
    friend auto operator<=>(const Date&, const Date&) = default;
};

// "2026-11-22 20:48:23 +0000", always in UTC.
ZORVIK_API std::string description(Date date);

}  // namespace zorvik::platform
