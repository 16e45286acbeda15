#include "IsoDate.hpp"

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <fmt/format.h>

namespace brevant::iso_date {

namespace {

using namespace std::chrono;

// 0000-01-01T00:00:00Z and 9999-12-31T23:59:59Z in seconds since 1970.
constexpr double kFirstSecond = -62167219200.0;
constexpr double kLastSecond = 253402300799.0;

constexpr std::size_t kLength = 20;

std::int64_t wholeSeconds(Date date) {
    double seconds = std::floor(date.unixSeconds());
    // Written this way round so that NaN lands on the first second too.
    if (!(seconds >= kFirstSecond)) {
        return static_cast<std::int64_t>(kFirstSecond);
    }
    if (!(seconds <= kLastSecond)) {
        return static_cast<std::int64_t>(kLastSecond);
    }
    return static_cast<std::int64_t>(seconds);
}

// The unsigned number in text[at, at + length), or nothing when it is not
// all digits.
std::optional<unsigned> digits(std::string_view text, std::size_t at, std::size_t length) {
    unsigned value = 0;
    const char* first = text.data() + at;
    const char* last = first + length;
    auto [end, error] = std::from_chars(first, last, value);
    if (error != std::errc() || end != last) {
        return std::nullopt;
    }
    return value;
}

bool separatorsMatch(std::string_view text) {
    constexpr std::array<std::pair<std::size_t, char>, 6> kSeparators{
        {{4, '-'}, {7, '-'}, {10, 'T'}, {13, ':'}, {16, ':'}, {19, 'Z'}}};
    for (auto [at, expected] : kSeparators) {
        if (text[at] != expected) {
            return false;
        }
    }
    return true;
}

} // namespace

std::string text(Date date) {
    sys_seconds instant{seconds{wholeSeconds(date)}};
    auto day = floor<days>(instant);
    year_month_day ymd{day};
    hh_mm_ss time{instant - day};
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", static_cast<int>(ymd.year()),
                       static_cast<unsigned>(ymd.month()), static_cast<unsigned>(ymd.day()),
                       time.hours().count(), time.minutes().count(), time.seconds().count());
}

std::optional<Date> parse(std::string_view text) {
    if (text.size() != kLength || !separatorsMatch(text)) {
        return std::nullopt;
    }
    auto yearValue = digits(text, 0, 4);
    auto monthValue = digits(text, 5, 2);
    auto dayValue = digits(text, 8, 2);
    auto hourValue = digits(text, 11, 2);
    auto minuteValue = digits(text, 14, 2);
    auto secondValue = digits(text, 17, 2);
    if (!yearValue || !monthValue || !dayValue || !hourValue || !minuteValue || !secondValue) {
        return std::nullopt;
    }
    year_month_day ymd{year{static_cast<int>(*yearValue)}, month{*monthValue}, day{*dayValue}};
    if (!ymd.ok() || *hourValue > 23 || *minuteValue > 59 || *secondValue > 59) {
        return std::nullopt;
    }
    sys_seconds instant =
        sys_days{ymd} + hours{*hourValue} + minutes{*minuteValue} + seconds{*secondValue};
    return Date::fromUnix(instant.time_since_epoch().count(), 0);
}

} // namespace brevant::iso_date

namespace brevant::json {

Json isoDate(Date d) {
    return Json(iso_date::text(d));
}

Date getIsoDate(const Json& j, std::string_view key) {
    auto date = iso_date::parse(field(j, key).get<std::string>());
    if (!date) {
        throw DecodeError("\"" + std::string(key) + "\" is not an ISO 8601 date");
    }
    return *date;
}

void putOptionalIsoDate(Json& j, std::string_view key, const std::optional<Date>& d) {
    if (d) {
        j[std::string(key)] = isoDate(*d);
    }
}

std::optional<Date> getOptionalIsoDate(const Json& j, std::string_view key) {
    if (!has(j, key)) {
        return std::nullopt;
    }
    return getIsoDate(j, key);
}

} // namespace brevant::json
