#include "engine/platform/GreyRendering.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <vector>

namespace brevant::platform {
namespace {

// Samples of a width x height picture whose left half is `left` and right
// half `right`, three bands each.
std::vector<std::uint8_t> halves(int width, int height, std::array<std::uint8_t, 3> left,
                                 std::array<std::uint8_t, 3> right) {
    std::vector<std::uint8_t> samples;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const auto& colour = x < width / 2 ? left : right;
            samples.insert(samples.end(), colour.begin(), colour.end());
        }
    }
    return samples;
}

TEST(GreyRendering, DrawsTheWholePictureIntoEachSquareInRec601Grey) {
    // Pure red beside pure blue: 0.299 * 255 and 0.114 * 255, rounded.
    auto samples = halves(300, 100, {255, 0, 0}, {0, 0, 255});
    auto image = DecodedImage::fromPixels(samples, 300, 100, 3);
    ASSERT_TRUE(image);
    constexpr std::array kSides = {4, 32};
    auto squares = GreyRendering::squares(*image, kSides);
    ASSERT_TRUE(squares);
    ASSERT_EQ(squares->size(), 2U);
    for (std::size_t index = 0; index < kSides.size(); ++index) {
        const GreySquare& square = (*squares)[index];
        int side = kSides[index];
        ASSERT_EQ(square.side, side);
        ASSERT_EQ(square.values.size(), static_cast<std::size_t>(side * side));
        // The aspect ratio is not kept: every row spans the whole width.
        for (int y = 0; y < side; ++y) {
            EXPECT_FLOAT_EQ(square.at(y, 0), 76.0F / 255.0F) << side << " row " << y;
            EXPECT_FLOAT_EQ(square.at(y, side - 1), 29.0F / 255.0F) << side << " row " << y;
        }
    }
}

TEST(GreyRendering, AveragesWhatFallsIntoOnePixelAndRefusesEmptySides) {
    // Black and white columns one pixel wide average to mid-grey.
    std::vector<std::uint8_t> stripes;
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x) {
            stripes.push_back(x % 2 == 0 ? 0 : 255);
        }
    }
    auto image = DecodedImage::fromPixels(stripes, 64, 64, 1);
    ASSERT_TRUE(image);
    constexpr std::array kSide = {8};
    auto squares = GreyRendering::squares(*image, kSide);
    ASSERT_TRUE(squares);
    for (float value : squares->front().values) {
        EXPECT_NEAR(value, 0.5F, 1.0F / 255.0F);
    }
    constexpr std::array kNoSide = {8, 0};
    EXPECT_FALSE(GreyRendering::squares(*image, kNoSide));
    EXPECT_FALSE(GreyRendering::squares(*image, std::span<const int>{}));
}

} // namespace
} // namespace brevant::platform
