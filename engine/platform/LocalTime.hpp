#pragma once

#include <cstdint>

namespace brevant::platform {

// A calendar date and wall-clock time in the system time zone.
struct LocalTime {
    int year = 1970;
    int month = 1; // 1-12
    int day = 1;   // 1-31
    int hour = 0;
    int minute = 0;
    int second = 0;

    friend bool operator==(const LocalTime&, const LocalTime&) = default;
};

// The Gregorian date and time of an instant in the system time zone (TZ is
// read again each time, so a changed zone is honoured).
[[nodiscard]] LocalTime localTime(std::int64_t unixSeconds);

} // namespace brevant::platform
