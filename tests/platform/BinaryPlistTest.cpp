#include "engine/platform/BinaryPlist.hpp"

#include <gtest/gtest.h>

namespace brevant {
namespace {

// The ASSERTs before each access guard these optionals; the check cannot
// see through GoogleTest's macros.
// NOLINTBEGIN(bugprone-unchecked-optional-access)

using platform::BinaryPlist;

TEST(BinaryPlist, EveryKindOfValueRoundTrips) {
    PlistValue value = PlistValue::Dictionary{
        {"true", true},
        {"false", false},
        {"small", 7},
        {"negative", std::int64_t{-42}},
        {"largest", ~std::uint64_t{0}},
        {"real", 0.1},
        {"text", std::string("grüße")},
        {"empty", std::string()},
        {"data", PlistValue::Data{0, 1, 254, 255}},
        {"noData", PlistValue::Data{}},
        {"date", Date{86400.5}},
        {"list", PlistValue::Array{1, PlistValue::Array{}, PlistValue::Dictionary{}}},
    };
    auto bytes = BinaryPlist::encode(value);
    ASSERT_TRUE(bytes.has_value());
    EXPECT_EQ(std::string(bytes->begin(), bytes->begin() + 8), "bplist00");
    auto decoded = BinaryPlist::decode(*bytes);
    ASSERT_TRUE(decoded.has_value());
    EXPECT_EQ(*decoded, value);
    EXPECT_EQ(decoded->find("largest")->unsignedValue(), ~std::uint64_t{0});
    EXPECT_EQ(decoded->find("negative")->intValue(), -42);
}

TEST(BinaryPlist, DamagedBytesDecodeToNothing) {
    auto bytes = *BinaryPlist::encode(PlistValue::Array{1, 2, std::string("three")});
    EXPECT_FALSE(BinaryPlist::decode({}));
    EXPECT_FALSE(BinaryPlist::decode(std::vector<std::uint8_t>(bytes.begin(), bytes.end() - 3)));
    std::vector<std::uint8_t> xml = {'<', '?', 'x', 'm', 'l'};
    EXPECT_FALSE(BinaryPlist::decode(xml));
    // Nesting deeper than any record of ours is damage, not a stack to blow.
    PlistValue deep = PlistValue::Array{};
    for (int i = 0; i < 100; ++i) {
        deep = PlistValue::Array{deep};
    }
    EXPECT_FALSE(BinaryPlist::decode(*BinaryPlist::encode(deep)));
}

// NOLINTEND(bugprone-unchecked-optional-access)

} // namespace
} // namespace brevant
