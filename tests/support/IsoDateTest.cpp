#include "engine/support/IsoDate.hpp"

#include <gtest/gtest.h>

namespace brevant {
namespace {

TEST(IsoDate, WritesWholeSecondsInUtc) {
    EXPECT_EQ(iso_date::text(Date::fromUnix(1794692984, 0)), "2026-11-14T21:49:44Z");
    // The fraction is dropped, towards the past, also before 1970.
    EXPECT_EQ(iso_date::text(Date::fromUnix(1794692984, 999'000'000)), "2026-11-14T21:49:44Z");
    EXPECT_EQ(iso_date::text(Date::fromUnixSeconds(-0.5)), "1969-12-31T23:59:59Z");
    EXPECT_EQ(iso_date::text(Date{}), "2001-01-01T00:00:00Z");
    EXPECT_EQ(iso_date::text(Date::fromUnix(1709164800, 0)), "2024-02-29T00:00:00Z");
    // Outside years 0000-9999 the nearest end is written.
    EXPECT_EQ(iso_date::text(Date{1e300}), "9999-12-31T23:59:59Z");
    EXPECT_EQ(iso_date::text(Date{-1e300}), "0000-01-01T00:00:00Z");
}

TEST(IsoDate, ReadsBackExactlyWhatItWrites) {
    for (std::int64_t seconds :
         {std::int64_t{0}, std::int64_t{-1}, std::int64_t{1709164800}, std::int64_t{1794692984},
          std::int64_t{253402300799}, std::int64_t{-62167219200}}) {
        Date date = Date::fromUnix(seconds, 0);
        EXPECT_EQ(iso_date::parse(iso_date::text(date)), date) << seconds;
    }
}

TEST(IsoDate, RefusesEveryOtherForm) {
    for (std::string_view bad :
         {"", "2026-11-14T21:49:44", "2026-11-14T21:49:44z", "2026-11-14 21:49:44Z",
          "2026-11-14T21:49:44.5Z", "2026-11-14T21:49:44+00:00", "2026-02-29T00:00:00Z",
          "2026-13-01T00:00:00Z", "2026-00-10T00:00:00Z", "2026-11-00T00:00:00Z",
          "2026-11-14T24:00:00Z", "2026-11-14T21:60:00Z", "2026-11-14T21:49:60Z",
          "+026-11-14T21:49:44Z", "2026-1A-14T21:49:44Z", "2026-11-14T21:49:4 Z",
          "20261114T214944Z   "}) {
        EXPECT_FALSE(iso_date::parse(bad)) << bad;
    }
}

TEST(IsoDate, JsonHelpersLeaveAbsentDatesOut) {
    json::Json j = json::Json::object();
    json::putOptionalIsoDate(j, "none", std::nullopt);
    json::putOptionalIsoDate(j, "when", Date::fromUnix(1794692984, 0));
    EXPECT_EQ(j.dump(), R"({"when":"2026-11-14T21:49:44Z"})");
    EXPECT_EQ(json::getOptionalIsoDate(j, "none"), std::nullopt);
    EXPECT_EQ(json::getIsoDate(j, "when"), Date::fromUnix(1794692984, 0));
    j["bad"] = 12.5;
    EXPECT_THROW((void)json::getIsoDate(j, "bad"), std::exception);
    j["bad"] = "yesterday";
    EXPECT_THROW((void)json::getIsoDate(j, "bad"), json::DecodeError);
}

} // namespace
} // namespace brevant
