#include "engine/similarity/FeatureExtractor.hpp"

#include "tests/fixtures/ImageFixtures.hpp"
#include "tests/fixtures/RawFixtures.hpp"
#include "tests/fixtures/ScopedTimeZone.hpp"
#include "tests/fixtures/TempTree.hpp"

#include "engine/platform/ImageDecoder.hpp"
#include "engine/similarity/FaceCheck.hpp"
#include "engine/similarity/QualityScore.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace brevant {
namespace {

// The ASSERTs before each access guard these optionals; the check cannot
// see through GoogleTest's macros.

using testing::makeScene;
using testing::saveImage;
using testing::SaveOptions;
using testing::ScopedTimeZone;
using testing::TempTree;
using testing::writeScene;

int unturnedDistance(const ImageFeatures& a, const ImageFeatures& b) {
    return std::popcount(a.hashes[0] ^ b.hashes[0]);
}

TEST(FeatureExtractor, MeasuresEveryFieldOfAPicture) {
    TempTree tree;
    std::string path = writeScene(tree.path("a.jpg"), 800, 600, 3);
    auto features = FeatureExtractor::features(path, true);
    ASSERT_TRUE(features);
    // Four turns, and each turned then mirrored.
    EXPECT_EQ(features->hashes.size(), 8U);
    EXPECT_EQ(features->detailHashes.size(), 8U);
    EXPECT_EQ(features->pixelWidth, 800);
    EXPECT_EQ(features->pixelHeight, 600);
    EXPECT_EQ(features->pixels(), 480000);
    EXPECT_EQ(features->version, 5);
    EXPECT_GT(features->sharpness, 0);
    EXPECT_GT(features->meanLuma, 0.05);
    EXPECT_LT(features->meanLuma, 0.95);
    EXPECT_GE(features->clipped, 0);
    EXPECT_LT(features->clipped, 1);
    EXPECT_FALSE(features->captureDate);
    // No feature-print model on Linux yet: absent, as allowed. The quality
    // score comes with its utility verdict and revision.
    EXPECT_FALSE(features->featurePrint);
    EXPECT_EQ(features->featurePrintRevision, 0);
    ASSERT_TRUE(features->qualityScore);
    EXPECT_GE(*features->qualityScore, 0);
    EXPECT_LE(*features->qualityScore, 100);
    EXPECT_EQ(features->isUtility, false);
    EXPECT_EQ(features->qualityRevision, QualityScore::kRevision);
    EXPECT_FALSE(features->faces);
}

TEST(FeatureExtractor, OrientationSixExchangesWidthAndHeightAndTurnsThePixels) {
    TempTree tree;
    auto scene = makeScene(640, 480, 5);
    std::string upright = tree.path("upright.jpg");
    saveImage(scene.rot(VIPS_ANGLE_D90), upright);
    // Stored sideways, displayed upright through the tag.
    std::string tagged = tree.path("tagged.jpg");
    saveImage(scene, tagged, SaveOptions{.orientation = 6});

    auto a = FeatureExtractor::features(upright, false);
    auto b = FeatureExtractor::features(tagged, false);
    ASSERT_TRUE(a && b);
    EXPECT_EQ(b->pixelWidth, 480);
    EXPECT_EQ(b->pixelHeight, 640);
    EXPECT_LE(unturnedDistance(*a, *b), 4);
}

TEST(FeatureExtractor, AQuarterTurnedCopyMatchesAtAnOddTurn) {
    TempTree tree;
    auto scene = makeScene(800, 600, 11);
    std::string original = tree.path("original.jpg");
    std::string turned = tree.path("turned.jpg");
    saveImage(scene, original);
    saveImage(scene.rot(VIPS_ANGLE_D90), turned);

    auto a = FeatureExtractor::features(original, false);
    auto b = FeatureExtractor::features(turned, false);
    ASSERT_TRUE(a && b);
    auto match = FeatureExtractor::hashMatch(*a, *b);
    EXPECT_LE(match.distance, 4);
    EXPECT_TRUE(match.turn == 1 || match.turn == 3) << match.turn;
    EXPECT_GT(unturnedDistance(*a, *b), 12);
    EXPECT_LE(FeatureExtractor::detailDistance(*a, *b), 24);
    EXPECT_TRUE(FeatureExtractor::shapesAgree(*a, *b, true));
    EXPECT_FALSE(FeatureExtractor::shapesAgree(*a, *b, false));
}

// A copy mirrored (and turned) with libvips matches the original at the
// orientation that undoes it: turn t then mirror is index 4 + t, and the
// mirrored hashes come from the same transform as the turned ones.
TEST(FeatureExtractor, AMirroredCopyMatchesAtTheOrientationThatUndoesIt) {
    TempTree tree;
    auto scene = makeScene(800, 600, 12);
    std::string original = tree.path("original.jpg");
    saveImage(scene, original);
    auto a = FeatureExtractor::features(original, false);
    ASSERT_TRUE(a);

    struct Case {
        const char* name;
        vips::VImage copy;
        int orientation;
    };

    const std::vector<Case> cases{
        {"mirrored", scene.fliphor(), 4},
        {"mirrored, turned 90", scene.fliphor().rot90(), 7},
        {"mirrored, turned 180", scene.fliphor().rot180(), 6},
        {"mirrored, turned 270", scene.fliphor().rot270(), 5},
        {"turned 90", scene.rot90(), 3},
        {"turned 270", scene.rot270(), 1},
    };
    for (const auto& [name, copy, orientation] : cases) {
        std::string path = tree.path(std::string(name) + ".jpg");
        saveImage(copy, path);
        auto b = FeatureExtractor::features(path, false);
        ASSERT_TRUE(b) << name;
        auto match = FeatureExtractor::hashMatch(*a, *b);
        EXPECT_EQ(match.turn, orientation) << name;
        EXPECT_LE(match.distance, 4) << name;
        EXPECT_GT(unturnedDistance(*a, *b), 12) << name;
        EXPECT_LE(FeatureExtractor::detailDistance(*a, *b), 24) << name;
        EXPECT_TRUE(FeatureExtractor::shapesAgree(*a, *b, match.turn % 2 == 1)) << name;
    }
}

TEST(FeatureExtractor, ExifDateOfAFileIsGmtWhateverTheTimeZone) {
    TempTree tree;
    std::string path = writeScene(tree.path("dated.jpg"), 320, 240, 2,
                                  SaveOptions{.exifDate = "2023:07:04 18:30:00"});
    for (const char* zone : {"America/Los_Angeles", "Asia/Tokyo"}) {
        ScopedTimeZone timeZone(zone);
        auto features = FeatureExtractor::features(path, false);
        ASSERT_TRUE(features && features->captureDate) << zone;
        EXPECT_EQ(features->captureDate->unixSeconds(), 1688495400) << zone;
    }
}

TEST(FeatureExtractor, CameraRawDatesAreGmtAlsoInADaylightSavingGap) {
    // In Berlin 02:30 on 28 March 2021 does not exist (clocks went from 2:00
    // to 3:00) and 02:30 on 31 October 2021 happened twice; the date is the
    // text as written, read as GMT, whatever the local clock did.
    ScopedTimeZone timeZone("Europe/Berlin");
    TempTree tree;

    struct Case {
        const char* text;
        std::int64_t unixSeconds;
    };

    for (Case date :
         {Case{"2021:03:28 02:30:00", 1616898600}, Case{"2021:10:31 02:30:00", 1635647400},
          Case{"2021:07:01 12:00:00", 1625140800}}) {
        SCOPED_TRACE(date.text);
        std::string path = tree.file("dated.dng", testing::dngWithDate(date.text));
        auto features = FeatureExtractor::features(path, false);
        ASSERT_TRUE(features && features->captureDate);
        EXPECT_EQ(features->captureDate->unixSeconds(), static_cast<double>(date.unixSeconds));
    }
}

TEST(FeatureExtractor, EveryFormatMeasuresAlikeAndTheSameEveryTime) {
    TempTree tree;
    auto scene = makeScene(900, 600, 21);
    std::optional<ImageFeatures> reference;
    for (const char* name : {"b.png", "b.jpg", "b.tif", "b.heic"}) {
        std::string path = tree.path(name);
        saveImage(scene, path, SaveOptions{.exifDate = "2020:01:02 03:04:05"});
        auto first = FeatureExtractor::features(path, false);
        ASSERT_TRUE(first) << name;
        EXPECT_EQ(FeatureExtractor::features(path, true), first) << name;
        EXPECT_EQ(first->pixelWidth, 900) << name;
        EXPECT_EQ(first->pixelHeight, 600) << name;
        if (!reference) {
            reference = first;
        }
        EXPECT_LE(unturnedDistance(*reference, *first), 6) << name;
    }
}

TEST(FeatureExtractor, ADecodedImageMeasuresLikeItsFile) {
    TempTree tree;
    // Small enough that the file's thumbnail is the picture itself.
    auto scene = makeScene(300, 200, 4);
    std::string path = tree.path("small.png");
    saveImage(scene, path);
    std::vector<std::uint8_t> samples(static_cast<std::size_t>(300 * 200 * 3));
    std::size_t size = 0;
    void* memory = scene.write_to_memory(&size);
    ASSERT_EQ(size, samples.size());
    std::memcpy(samples.data(), memory, size);
    g_free(memory);

    auto image = platform::DecodedImage::fromPixels(samples, 300, 200, 3);
    ASSERT_TRUE(image);
    Date taken{700000000};
    auto fromImage = FeatureExtractor::features(*image, 3000, 2000, taken, true);
    auto fromFile = FeatureExtractor::features(path, false);
    ASSERT_TRUE(fromImage && fromFile);
    EXPECT_EQ(fromImage->hashes, fromFile->hashes);
    EXPECT_EQ(fromImage->detailHashes, fromFile->detailHashes);
    EXPECT_DOUBLE_EQ(fromImage->sharpness, fromFile->sharpness);
    // The caller's size and date stand.
    EXPECT_EQ(fromImage->pixelWidth, 3000);
    EXPECT_EQ(fromImage->pixelHeight, 2000);
    EXPECT_EQ(fromImage->captureDate, taken);

    EXPECT_FALSE(platform::DecodedImage::fromPixels(samples, 300, 201, 3));
    EXPECT_FALSE(platform::DecodedImage::fromPixels(samples, 300, 200, 2));
    EXPECT_FALSE(platform::DecodedImage::fromPixels({}, 0, 0, 3));
}

TEST(FeatureExtractor, ThumbnailsAreUprightBoundedAndNeverEnlarged) {
    TempTree tree;
    std::string wide = writeScene(tree.path("wide.jpg"), 2000, 1000, 6);
    auto small = platform::ImageDecoder::decode(wide, FeatureExtractor::kRenditionSize);
    ASSERT_TRUE(small);
    EXPECT_EQ(small->thumbnail.width(), 512);
    EXPECT_EQ(small->thumbnail.height(), 256);
    EXPECT_EQ(small->properties.pixelWidth, 2000);
    auto large = platform::ImageDecoder::decode(wide, FaceCheck::kRenditionSize);
    ASSERT_TRUE(large);
    EXPECT_EQ(large->thumbnail.width(), 1600);
    EXPECT_EQ(large->thumbnail.height(), 800);

    std::string tiny = writeScene(tree.path("tiny.png"), 40, 30, 6, SaveOptions{});
    auto decoded = platform::ImageDecoder::decode(tiny, FeatureExtractor::kRenditionSize);
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->thumbnail.width(), 40);
    EXPECT_EQ(decoded->thumbnail.height(), 30);
    auto features = FeatureExtractor::features(tiny, false);
    ASSERT_TRUE(features);
    EXPECT_EQ(features->pixelWidth, 40);

    std::string sideways =
        writeScene(tree.path("sideways.jpg"), 1000, 500, 6, SaveOptions{.orientation = 8});
    auto turned = platform::ImageDecoder::decode(sideways, FeatureExtractor::kRenditionSize);
    ASSERT_TRUE(turned);
    EXPECT_EQ(turned->thumbnail.width(), 256);
    EXPECT_EQ(turned->thumbnail.height(), 512);
    EXPECT_EQ(turned->properties.orientation, 8);
}

TEST(FeatureExtractor, UnreadableOrNonImageFilesGiveNoFeatures) {
    TempTree tree;
    std::string good = writeScene(tree.path("good.jpg"), 400, 300, 1);
    std::string bytes = testing::readFile(good);
    std::vector<std::string> paths = {
        tree.path("missing.jpg"),
        tree.file("text.jpg", "this is not a picture"),
        tree.file("empty.png", ""),
        tree.file("header-only.jpg", bytes.substr(0, 200)),
        tree.file("garbage.heic", std::string(5000, '\x42')),
        tree.file("fake.dng", "II*\0garbage"),
        tree.folder("folder.jpg"),
    };
    for (const std::string& path : paths) {
        EXPECT_FALSE(FeatureExtractor::features(path, true)) << path;
    }
    if (::geteuid() != 0) {
        // Root reads anything, so the permission case only holds for others.
        std::string locked = writeScene(tree.path("locked.jpg"), 100, 100, 1);
        ::chmod(locked.c_str(), 0);
        EXPECT_FALSE(FeatureExtractor::features(locked, false));
    }
    // The good file is still measured after all that.
    EXPECT_TRUE(FeatureExtractor::features(good, false));
}

} // namespace
} // namespace brevant
