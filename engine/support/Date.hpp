#pragma once

#include <compare>
#include <cstdint>

namespace brevant {

// A wall-clock instant held as seconds since 1 January 2001 00:00:00 GMT, the
// same representation the stored documents use, so a date survives encoding
// and decoding bit for bit.
struct Date {
    double secondsSinceReferenceDate = 0;

    // Seconds between 1970-01-01 and 2001-01-01.
    static constexpr double kReferenceOffset = 978307200.0;

    [[nodiscard]] static Date now();
    [[nodiscard]] static Date fromUnix(std::int64_t seconds, std::int64_t nanoseconds);
    [[nodiscard]] static Date fromUnixSeconds(double seconds);

    [[nodiscard]] double unixSeconds() const {
        return secondsSinceReferenceDate + kReferenceOffset;
    }

    friend bool operator==(const Date&, const Date&) = default;
    friend auto operator<=>(const Date&, const Date&) = default;
};

} // namespace brevant
