// Real photos from the shared sample folder; every test skips when it is
// not there.
#include "tests/fixtures/ImageFixtures.hpp"
#include "tests/fixtures/ScopedTimeZone.hpp"
#include "tests/fixtures/TempTree.hpp"

#include "engine/similarity/FeatureExtractor.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <filesystem>
#include <vips/vips8>

namespace brevant {
namespace {

// The ASSERTs before each access guard these optionals; the check cannot
// see through GoogleTest's macros.

using testing::ScopedTimeZone;
using testing::TempTree;
using vips::VImage;

const std::string kSamples = BREVANT_SOURCE_DIR "/../shared/testdata";

std::string sample(const std::string& relative) {
    return kSamples + "/" + relative;
}

bool haveSample(const std::string& relative) {
    std::error_code error;
    return std::filesystem::exists(sample(relative), error);
}

std::vector<std::string> samplesIn(const std::string& folder) {
    std::vector<std::string> paths;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(sample(folder), error)) {
        paths.push_back(entry.path().string());
    }
    std::ranges::sort(paths);
    return paths;
}

int unturnedDistance(const ImageFeatures& a, const ImageFeatures& b) {
    return std::popcount(a.hashes[0] ^ b.hashes[0]);
}

TEST(SamplePhotos, ResavedAndHalvedCopiesStayWithinTwelveBits) {
    std::vector<std::string> photos = samplesIn("exif-samples/jpg/gps");
    for (const char* extra :
         {"exifr/IMG_20180725_163423.jpg", "exifr/canon-dslr.jpg",
          "exif-samples/heic/IMG_5195.HEIC", "exif-samples/heic/samplefilehub.heif"}) {
        if (haveSample(extra)) {
            photos.push_back(sample(extra));
        }
    }
    if (photos.empty()) {
        GTEST_SKIP() << "no sample photos at " << kSamples;
    }
    TempTree tree;
    for (const std::string& photo : photos) {
        auto original = FeatureExtractor::features(photo, false);
        ASSERT_TRUE(original) << photo;
        // Decoded upright once, then written again as a JPEG at quality 60
        // and at half the size.
        VImage upright = testing::openImage(photo).autorot();
        std::string resaved = tree.path("resaved.jpg");
        upright.jpegsave(resaved.c_str(), VImage::option()->set("Q", 60));
        std::string halved = tree.path("halved.jpg");
        upright.resize(0.5).jpegsave(halved.c_str(), VImage::option()->set("Q", 90));
        auto a = FeatureExtractor::features(resaved, false);
        auto b = FeatureExtractor::features(halved, false);
        ASSERT_TRUE(a && b) << photo;
        EXPECT_LE(unturnedDistance(*original, *a), 12) << photo;
        EXPECT_LE(unturnedDistance(*original, *b), 12) << photo;
        EXPECT_EQ(FeatureExtractor::hashMatch(*original, *a).turn, 0) << photo;
    }
}

TEST(SamplePhotos, EveryOrientationOfOnePictureMeasuresAlike) {
    if (!haveSample("orientation/Landscape_1.jpg")) {
        GTEST_SKIP() << "no orientation samples";
    }
    auto reference = FeatureExtractor::features(sample("orientation/Landscape_1.jpg"), false);
    ASSERT_TRUE(reference);
    for (int orientation = 0; orientation <= 8; ++orientation) {
        std::string path = sample("orientation/Landscape_" + std::to_string(orientation) + ".jpg");
        auto features = FeatureExtractor::features(path, false);
        ASSERT_TRUE(features) << path;
        EXPECT_EQ(features->pixelWidth, 1800) << path;
        EXPECT_EQ(features->pixelHeight, 1200) << path;
        EXPECT_LE(unturnedDistance(*reference, *features), 4) << path;
    }
}

TEST(SamplePhotos, PhoneHeicTaggedSidewaysIsReportedUpright) {
    std::string path = "exif-samples/heic/mobile/iphone_13_pro_max.HEIC";
    if (!haveSample(path)) {
        GTEST_SKIP() << "no HEIC sample";
    }
    auto first = FeatureExtractor::features(sample(path), false);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->pixelWidth, 3024);
    EXPECT_EQ(first->pixelHeight, 4032);
    ASSERT_TRUE(first->captureDate);
    // 2022:02:16 12:55:41 read as GMT.
    EXPECT_EQ(first->captureDate->unixSeconds(), 1645016141);
    EXPECT_EQ(FeatureExtractor::features(sample(path), false), first);
}

TEST(SamplePhotos, CameraRawDateIsGmtInEveryTimeZone) {
    std::string path = "photoprism/assets/examples/canon_eos_6d.dng";
    if (!haveSample(path)) {
        GTEST_SKIP() << "no RAW sample";
    }
    for (const char* zone : {"America/Los_Angeles", "Asia/Tokyo"}) {
        ScopedTimeZone timeZone(zone);
        auto features = FeatureExtractor::features(sample(path), false);
        ASSERT_TRUE(features) << zone;
        EXPECT_EQ(features->pixelWidth, 1224);
        EXPECT_EQ(features->pixelHeight, 816);
        ASSERT_TRUE(features->captureDate) << zone;
        // 2019:06:06 07:29:51 read as GMT.
        EXPECT_EQ(features->captureDate->unixSeconds(), 1559806191) << zone;
    }
}

TEST(SamplePhotos, DamagedSamplesGiveNoFeaturesOrAPartialPicture) {
    std::string corrupt = "imagededup/mixed_images/ukbench09268_corrupt.jpg";
    if (!haveSample(corrupt)) {
        GTEST_SKIP() << "no damaged samples";
    }
    EXPECT_FALSE(FeatureExtractor::features(sample(corrupt), false));
    for (const char* stub : {"exif-py/raw/sony_alpha_a7iii_raw_image.ARW",
                             "exif-py/raw/nikon_z_9_high_efficiency_compressed_dx_cropped_max_"
                             "overexposed.dng",
                             "photoprism/internal/photoprism/testdata/broken/animated-earth.jpg",
                             "exif-samples/jpg/corrupted.jpg"}) {
        // Whatever can be made of these, measuring them must not crash.
        if (haveSample(stub)) {
            [[maybe_unused]] auto features = FeatureExtractor::features(sample(stub), false);
        }
    }
}

} // namespace
} // namespace brevant
