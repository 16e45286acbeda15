#pragma once

#include <cstdint>
#include <string>

namespace brevant::platform {

// An instant as the user's locale writes it briefly, in the system time
// zone: the locale's date representation (strftime's %x) and its time
// representation without the seconds ("11/14/26 21:49" in the C locale,
// "14/11/26 21:49" in en_GB, "11/14/2026 09:49 PM" in en_US). The locale is
// the one the environment names for LC_TIME (LC_ALL, LC_TIME, LANG), read
// each time and whatever the process's own setlocale; the C locale when it
// names none that is installed.
[[nodiscard]] std::string shortDateTime(std::int64_t unixSeconds);

} // namespace brevant::platform
