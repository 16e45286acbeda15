#include "engine/platform/BinaryPlist.hpp"

#include <gtest/gtest.h>

namespace brevant {
namespace {

// The ASSERTs before each access guard these optionals; the check cannot
// see through GoogleTest's macros.

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

TEST(BinaryPlist, LargeAndWideValuesRoundTrip) {
    // Past 255 and 65,535 objects references widen; past 14 items lengths
    // take an integer of their own.
    PlistValue::Array many;
    for (std::int64_t i = 0; i < 70000; ++i) {
        if (i % 3 == 0) {
            many.emplace_back(i * 1000003);
        } else {
            many.emplace_back(static_cast<double>(i) / 2);
        }
    }
    PlistValue value = PlistValue::Dictionary{
        {"many", many},
        {"long text", std::string(300, 'x')},
        {"astral \xF0\x9F\x93\xB7 camera", std::string("\xE5\x86\x99\xE7\x9C\x9F")},
        {"long data", PlistValue::Data(70000, 7)},
        {"repeated", PlistValue::Array{PlistValue::Dictionary{{"a", 1}, {"b", 2}},
                                       PlistValue::Dictionary{{"b", 3}, {"a", 4}}}},
    };
    auto bytes = BinaryPlist::encode(value);
    ASSERT_TRUE(bytes.has_value());
    EXPECT_EQ(BinaryPlist::decode(*bytes), value);
    EXPECT_FALSE(BinaryPlist::encode(PlistValue(std::string("bad \xC3"))));
    EXPECT_FALSE(BinaryPlist::encode(PlistValue::Dictionary{{"\xFF", 1}}));
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

} // namespace
} // namespace brevant
