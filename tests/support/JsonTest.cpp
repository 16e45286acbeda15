#include "engine/support/Json.hpp"

#include <gtest/gtest.h>

#include <cstdint>

namespace brevant {
namespace {

TEST(Json, IntegersAreReadOnlyWhenWholeAndInRange) {
    auto document = json::parse(
        R"({"small":-5,"big":18446744073709551615,"huge":1e300,"half":1.5,"word":"7"})");
    EXPECT_EQ(json::get<std::int64_t>(document, "small"), -5);
    EXPECT_EQ(json::get<std::uint64_t>(document, "big"), UINT64_MAX);
    // Converting these would cut a fraction or be undefined.
    EXPECT_THROW((void)json::get<std::int64_t>(document, "huge"), json::DecodeError);
    EXPECT_THROW((void)json::get<int>(document, "half"), json::DecodeError);
    EXPECT_THROW((void)json::get<std::uint32_t>(document, "small"), json::DecodeError);
    EXPECT_THROW((void)json::get<std::int64_t>(document, "big"), json::DecodeError);
    EXPECT_THROW((void)json::get<int>(document, "word"), json::DecodeError);
    EXPECT_EQ(json::getOptional<int>(document, "absent"), std::nullopt);
    EXPECT_THROW((void)json::getOptional<int>(document, "huge"), json::DecodeError);
}

} // namespace
} // namespace brevant
