#include "engine/platform/RawDecoder.hpp"

#include <gtest/gtest.h>

namespace brevant {
namespace {

using platform::RawDecoder;

TEST(RawDecoder, LibRawTurnCodesMeanTheSameAsExifOrientations) {
    // 0 none, 3 half turn, 5 a quarter anticlockwise, 6 a quarter clockwise;
    // the mirrored codes follow from the exchange and flip bits.
    EXPECT_EQ(RawDecoder::orientationOfFlip(0), 1);
    EXPECT_EQ(RawDecoder::orientationOfFlip(1), 2);
    EXPECT_EQ(RawDecoder::orientationOfFlip(2), 4);
    EXPECT_EQ(RawDecoder::orientationOfFlip(3), 3);
    EXPECT_EQ(RawDecoder::orientationOfFlip(4), 5);
    EXPECT_EQ(RawDecoder::orientationOfFlip(5), 8);
    EXPECT_EQ(RawDecoder::orientationOfFlip(6), 6);
    EXPECT_EQ(RawDecoder::orientationOfFlip(7), 7);
    EXPECT_EQ(RawDecoder::orientationOfFlip(-1), 1);
    EXPECT_EQ(RawDecoder::orientationOfFlip(8), 1);
}

} // namespace
} // namespace brevant
