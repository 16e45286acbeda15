#include "engine/similarity/QualityScore.hpp"

#include "tests/fixtures/ImageFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"

#include "engine/platform/ImageDecoder.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>

namespace brevant {
namespace {

const std::string kPhoto =
    BREVANT_SOURCE_DIR "/../shared/testdata/exif-samples/jpg/gps/DSCN0021.jpg";

std::optional<int> scoreOf(const std::string& path) {
    auto decoded = platform::ImageDecoder::decode(path, 512);
    if (!decoded) {
        return std::nullopt;
    }
    return QualityScore::score(decoded->thumbnail).score;
}

TEST(QualityScore, MapsBrisqueOntoPoints) {
    EXPECT_EQ(QualityScore::points(QualityScore::rawFromBrisque(0)), 100);
    EXPECT_EQ(QualityScore::points(QualityScore::rawFromBrisque(50)), 50);
    EXPECT_EQ(QualityScore::points(QualityScore::rawFromBrisque(80)), 20);
    EXPECT_EQ(QualityScore::points(QualityScore::rawFromBrisque(140)), 0);
    EXPECT_EQ(QualityScore::points(QualityScore::rawFromBrisque(-10)), 100);
    EXPECT_EQ(QualityScore::points(-1.0), 0);
    EXPECT_EQ(QualityScore::points(-0.99), 1);
    EXPECT_EQ(QualityScore::points(0.5), 75);
    EXPECT_EQ(QualityScore::points(7.0), 100);
    EXPECT_EQ(QualityScore::points(std::numeric_limits<double>::quiet_NaN()), 0);
}

TEST(QualityScore, RanksASharpPhotoAboveBlurredAndRecompressedCopies) {
    std::error_code ec;
    if (!std::filesystem::exists(kPhoto, ec)) {
        GTEST_SKIP() << "no sample photo at " << kPhoto;
    }
    testing::TempTree tree;
    vips::VImage photo = testing::openImage(kPhoto);
    std::string sharp = tree.path("sharp.png");
    testing::saveImage(photo, sharp);
    std::string blurred = tree.path("blurred.png");
    testing::saveImage(photo.gaussblur(2.0), blurred);
    std::string blocky = tree.path("blocky.jpg");
    testing::saveImage(photo, blocky, {.quality = 4});

    auto sharpScore = scoreOf(sharp);
    auto blurredScore = scoreOf(blurred);
    auto blockyScore = scoreOf(blocky);
    ASSERT_TRUE(sharpScore && blurredScore && blockyScore);
    EXPECT_GT(*sharpScore, *blurredScore + QualityScore::kMargin);
    EXPECT_GT(*sharpScore, *blockyScore + QualityScore::kMargin);
}

TEST(QualityScore, ExplanationSaysWhatRunsHere) {
    EXPECT_NE(QualityScore::explanation().find("BRISQUE"), std::string::npos);
    EXPECT_NE(QualityScore::explanation().find("run on this computer"), std::string::npos);
    EXPECT_EQ(QualityScore::explanation().find("Apple"), std::string::npos);
}

} // namespace
} // namespace brevant
