#include "engine/platform/LocaleDate.hpp"

#include "tests/fixtures/ScopedEnvironment.hpp"
#include "tests/fixtures/ScopedTimeZone.hpp"

#include <gtest/gtest.h>

namespace brevant::platform {
namespace {

using testing::ScopedEnvironment;
using testing::ScopedTimeZone;

// 2026-11-14T21:49:44Z.
constexpr std::int64_t kInstant = 1794692984;

TEST(LocaleDate, WritesTheLocalesDateAndTimeWithoutSeconds) {
    ScopedTimeZone zone("UTC");
    ScopedEnvironment all("LC_ALL", "C");
    EXPECT_EQ(shortDateTime(kInstant), "11/14/26 21:49");
}

TEST(LocaleDate, FollowsTheTimeZone) {
    ScopedTimeZone zone("Asia/Tokyo");
    ScopedEnvironment all("LC_ALL", "C");
    EXPECT_EQ(shortDateTime(kInstant), "11/15/26 06:49");
}

TEST(LocaleDate, ALocaleThatIsNotInstalledFallsBackToC) {
    ScopedTimeZone zone("UTC");
    ScopedEnvironment all("LC_ALL", std::nullopt);
    ScopedEnvironment time("LC_TIME", "xx_NOWHERE.UTF-8");
    EXPECT_EQ(shortDateTime(kInstant), "11/14/26 21:49");
}

TEST(LocaleDate, UsesAnInstalledLocalesOwnFormats) {
    ScopedTimeZone zone("UTC");
    ScopedEnvironment all("LC_ALL", "en_GB.UTF-8");
    if (shortDateTime(kInstant) == "11/14/26 21:49") {
        GTEST_SKIP() << "the en_GB.UTF-8 locale is not installed";
    }
    EXPECT_EQ(shortDateTime(kInstant), "14/11/26 21:49");
}

} // namespace
} // namespace brevant::platform
