#include "Date.hpp"

#include <chrono>

namespace brevant {

Date Date::now() {
    using namespace std::chrono;
    auto since = system_clock::now().time_since_epoch();
    return fromUnixSeconds(duration<double>(since).count());
}

Date Date::fromUnix(std::int64_t seconds, std::int64_t nanoseconds) {
    // Subtract the offset before adding the fraction so that whole seconds
    // stay exact.
    double whole = static_cast<double>(seconds) - kReferenceOffset;
    return Date{whole + static_cast<double>(nanoseconds) / 1e9};
}

Date Date::fromUnixSeconds(double seconds) {
    return Date{seconds - kReferenceOffset};
}

} // namespace brevant
