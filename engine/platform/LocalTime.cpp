#include "LocalTime.hpp"

#include <ctime>

namespace brevant::platform {

LocalTime localTime(std::int64_t unixSeconds) {
    auto seconds = static_cast<std::time_t>(unixSeconds);
    std::tm fields{};
    ::tzset();
    if (::localtime_r(&seconds, &fields) == nullptr) {
        return {};
    }
    return {fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday,
            fields.tm_hour,        fields.tm_min,     fields.tm_sec};
}

} // namespace brevant::platform
