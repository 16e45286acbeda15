#include "engine/similarity/FeatureExtractor.hpp"

#include <gtest/gtest.h>

namespace brevant {
namespace {

using Match = FeatureExtractor::HashMatch;

ImageFeatures withHashes(std::vector<std::uint64_t> hashes) {
    ImageFeatures features;
    features.hashes = std::move(hashes);
    return features;
}

ImageFeatures withSize(int width, int height) {
    ImageFeatures features;
    features.pixelWidth = width;
    features.pixelHeight = height;
    return features;
}

TEST(FeatureDistances, HashMatchTakesTheFirstTurnThatReachesTheBest) {
    auto a = withHashes({0b1111, 0, 0, 0});
    auto b = withHashes({0b0000, 0b0111, 0b1110, 0b1111});
    EXPECT_EQ(FeatureExtractor::hashMatch(a, b), (Match{0, 3}));
    auto tie = withHashes({0b0000, 0b0111, 0b1110, 0b0011});
    EXPECT_EQ(FeatureExtractor::hashMatch(a, tie), (Match{1, 1}));
    EXPECT_EQ(FeatureExtractor::hashMatch(a, withHashes({})), (Match{64, 0}));
    EXPECT_EQ(FeatureExtractor::hashDistance(a, withHashes({~0ULL})), 60);
}

TEST(FeatureDistances, DetailDistanceIsTheSmallestOverTurns) {
    ImageFeatures a;
    a.detailHashes = {{~0ULL, 0, 0, 0}};
    ImageFeatures b;
    b.detailHashes = {{0, 0, 0, 0}, {~0ULL, 1, 0, 0}, {~0ULL, 0, 0, 0b11}};
    EXPECT_EQ(FeatureExtractor::detailDistance(a, b), 1);
    EXPECT_EQ(FeatureExtractor::detailDistance(a, ImageFeatures{}), 256);
    EXPECT_EQ(FeatureExtractor::detailDistance(ImageFeatures{}, b), 256);
}

TEST(FeatureDistances, ShapesAgreeWithinTheTolerance) {
    EXPECT_TRUE(FeatureExtractor::shapesAgree(withSize(4000, 3000), withSize(1920, 1080), false));
    EXPECT_FALSE(FeatureExtractor::shapesAgree(withSize(1000, 1000), withSize(1920, 1080), false));
    // Matched at a quarter turn, b's sides are exchanged.
    EXPECT_TRUE(FeatureExtractor::shapesAgree(withSize(4000, 3000), withSize(3000, 4000), true));
    EXPECT_FALSE(FeatureExtractor::shapesAgree(withSize(4000, 3000), withSize(3000, 4000), false));
    EXPECT_FALSE(FeatureExtractor::shapesAgree(withSize(4000, 0), withSize(4000, 3000), false));
    EXPECT_FALSE(FeatureExtractor::shapesAgree(withSize(4000, 3000), withSize(0, 3000), false));
}

} // namespace
} // namespace brevant
