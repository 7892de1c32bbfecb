#include "platform/foundation/Date.h"

#include <chrono>
#include <cmath>
#include <cstdio>

#include "platform/foundation/Value.h"

namespace zorvik::platform {

std::string description(Date date) {
    // The years 0000 to 9999; anything else, not-a-number included, has no calendar form here.
    constexpr double earliest = -62'167'219'200.0;
    constexpr double end = 253'402'300'800.0;
    const double seconds = std::floor(date.secondsSince1970);
    if (!(seconds >= earliest && seconds < end)) {
        return description(date.secondsSince1970) + " seconds since 1970";
    }
    const std::chrono::sys_seconds time{std::chrono::seconds(static_cast<long long>(seconds))};
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day calendar{day};
    const std::chrono::hh_mm_ss clock{time - day};
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02u-%02u %02d:%02d:%02d +0000",
                  static_cast<int>(calendar.year()), static_cast<unsigned>(calendar.month()),
                  static_cast<unsigned>(calendar.day()), static_cast<int>(clock.hours().count()),
                  static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()));
    return text;
}

}  // namespace zorvik::platform
