#include "tests/fixtures/ScopedTimeZone.hpp"

#include "engine/similarity/FeatureExtractor.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <random>

namespace brevant {
namespace {

// The ASSERTs before each access guard these optionals; the check cannot
// see through GoogleTest's macros.

using platform::GreySquare;
using testing::ScopedTimeZone;

GreySquare squareOf(int side, auto value) {
    GreySquare square{side, {}};
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            square.values.push_back(static_cast<float>(value(y, x)));
        }
    }
    return square;
}

GreySquare noise(int side, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> unit(0, 1);
    return squareOf(side, [&](int, int) { return unit(random); });
}

// 2023-07-04 18:30:00 GMT.
constexpr double kJulyFourthUnix = 1688495400;

TEST(FeatureHashes, TurningMovesRowYColumnXToRowXColumnNMinus1MinusY) {
    GreySquare square = squareOf(32, [](int y, int x) { return (y * 32 + x) / 1024.0; });
    GreySquare turned = FeatureExtractor::turnedClockwise(square);
    for (int y = 0; y < 32; ++y) {
        for (int x = 0; x < 32; ++x) {
            ASSERT_EQ(turned.at(x, 31 - y), square.at(y, x)) << y << "," << x;
        }
    }
    // The top-left corner goes to the top-right, the bottom-left to the top-left.
    EXPECT_EQ(turned.at(0, 31), square.at(0, 0));
    EXPECT_EQ(turned.at(0, 0), square.at(31, 0));
    GreySquare full = square;
    for (int turn = 0; turn < 4; ++turn) {
        full = FeatureExtractor::turnedClockwise(full);
    }
    EXPECT_EQ(full, square);
}

TEST(FeatureHashes, AtMostHalfTheBitsAreSetWhenAllValuesDiffer) {
    for (unsigned seed = 1; seed <= 20; ++seed) {
        // Noise makes every DCT value different, so exactly the values above
        // the lower median are set: 32 of 64, 128 of 256.
        EXPECT_EQ(std::popcount(FeatureExtractor::phash(noise(32, seed))), 32) << seed;
        DetailHash detail = FeatureExtractor::detailHash(noise(64, seed));
        int bits = 0;
        for (std::uint64_t word : detail) {
            bits += std::popcount(word);
        }
        EXPECT_EQ(bits, 128) << seed;
    }
}

TEST(FeatureHashes, HashesFollowTheLayoutNotTheExposure) {
    GreySquare picture = noise(32, 7);
    // Halving every value halves every DCT value exactly, so the order and
    // the hash stay.
    GreySquare darker = squareOf(32, [&](int y, int x) { return picture.at(y, x) / 2; });
    EXPECT_EQ(FeatureExtractor::phash(picture), FeatureExtractor::phash(darker));
    GreySquare mirrored = squareOf(32, [&](int y, int x) { return picture.at(y, 31 - x); });
    EXPECT_GT(std::popcount(FeatureExtractor::phash(picture) ^ FeatureExtractor::phash(mirrored)),
              8);
    // A square of the wrong size has no hash rather than a wrong one.
    EXPECT_EQ(FeatureExtractor::phash(noise(31, 1)), 0U);
    EXPECT_EQ(FeatureExtractor::detailHash(noise(32, 1)), DetailHash{});
}

TEST(FeatureHashes, MeasureGivesBrightnessClippingAndLaplacianVariance) {
    auto flat = FeatureExtractor::measure(squareOf(256, [](int, int) { return 0.5; }));
    EXPECT_DOUBLE_EQ(flat.meanLuma, 0.5);
    EXPECT_DOUBLE_EQ(flat.clipped, 0);
    EXPECT_NEAR(flat.sharpness, 0, 1e-12);

    // Black and white squares alternate: every Laplacian is +4 or -4.
    auto checker = FeatureExtractor::measure(
        squareOf(256, [](int y, int x) { return (x + y) % 2 == 0 ? 1.0 : 0.0; }));
    EXPECT_DOUBLE_EQ(checker.meanLuma, 0.5);
    EXPECT_DOUBLE_EQ(checker.clipped, 1);
    EXPECT_NEAR(checker.sharpness, 16, 1e-9);

    // 2/255 and 253/255 count as pure black and white, 3/255 and 252/255 do not.
    auto edges = FeatureExtractor::measure(squareOf(4, [](int y, int) {
        constexpr int kBytes[] = {2, 3, 252, 253};
        return static_cast<float>(kBytes[y]) / 255.0F;
    }));
    EXPECT_DOUBLE_EQ(edges.clipped, 0.5);
}

TEST(FeatureHashes, ExifDateIsReadAsGmtInEveryTimeZone) {
    for (const char* zone : {"America/Los_Angeles", "Asia/Tokyo", "UTC"}) {
        ScopedTimeZone timeZone(zone);
        auto date = FeatureExtractor::captureDateFromExif("2023:07:04 18:30:00");
        ASSERT_TRUE(date) << zone;
        EXPECT_EQ(date->unixSeconds(), kJulyFourthUnix) << zone;
    }
    EXPECT_EQ(FeatureExtractor::captureDateFromExif("2024:02:29 00:00:00")->unixSeconds(),
              1709164800);
}

TEST(FeatureHashes, ExifDateMustMatchThePatternExactly) {
    for (const char* text :
         {"", "0000:00:00 00:00:00", "2023:02:29 10:00:00", "2023:13:01 10:00:00",
          "2023:07:04 24:00:00", "2023-07-04 18:30:00", "2023:07:04 18:30:00Z", "2023:07:04 18:30",
          " 2023:07:04 18:30:0", "    :  :     :  :  ", "2023:07:04T18:30:00"}) {
        EXPECT_FALSE(FeatureExtractor::captureDateFromExif(text)) << "'" << text << "'";
    }
}

} // namespace
} // namespace brevant
