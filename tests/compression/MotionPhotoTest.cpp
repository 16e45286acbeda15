#include "engine/platform/MotionPhoto.hpp"

#include "tests/compression/CompressionFixtures.hpp"
#include "tests/fixtures/LivePhotoFixtures.hpp"

#include "engine/compression/CompressionTexts.hpp"
#include "engine/compression/CopyCheck.hpp"
#include "engine/platform/PhotoProbe.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <exiv2/exiv2.hpp>
#include <fstream>

namespace brevant {
namespace {

// The ASSERTs before each access guard these optionals.
// NOLINTBEGIN(bugprone-unchecked-optional-access)

using platform::MotionPhoto;
using testing::MotionStyle;

class MotionPhotoStill : public ::testing::TestWithParam<MotionStyle> {};

TEST_P(MotionPhotoStill, LosesTheMovieAndItsXmpAndKeepsPixelsAndEveryOtherTag) {
    testing::CompressionWorkspace files;
    std::string photo = testing::writeMotionPhoto(files.tree.path("photos/PXL_1.jpg"), GetParam());
    auto facts = MotionPhoto::read(photo);
    ASSERT_TRUE(facts.has_value());
    EXPECT_GT(facts->movieBytes, 1000);
    EXPECT_TRUE(MotionPhoto::declaresMotion(photo));

    std::string still = files.tree.path("photos/still.jpg");
    ASSERT_TRUE(MotionPhoto::writeStill(photo, still, 0644).has_value());
    EXPECT_EQ(MotionPhoto::read(still), std::nullopt);
    EXPECT_FALSE(MotionPhoto::declaresMotion(still));
    EXPECT_EQ(MotionPhoto::samePixels(photo, still), true);
    EXPECT_EQ(MotionPhoto::tagsLost(photo, still), "");
    auto shown = platform::PhotoProbe::read(still);
    ASSERT_TRUE(shown.has_value());
    EXPECT_EQ(shown->exifOrientation, 6);
    EXPECT_EQ(shown->dateTimeOriginal, "2024:05:01 10:20:30");
    EXPECT_EQ(CopyCheck::checkStill(photo, still), std::nullopt);
    EXPECT_LT(testing::readFile(still).size() + facts->movieBytes - 4096,
              testing::readFile(photo).size());
    // Never written over: the name is taken now.
    EXPECT_FALSE(MotionPhoto::writeStill(photo, still, 0644).has_value());
}

INSTANTIATE_TEST_SUITE_P(Styles, MotionPhotoStill,
                         ::testing::Values(MotionStyle::motionPhoto, MotionStyle::microVideo));

TEST(MotionPhotoCheck, RefusesAStillWithOtherPixelsOrLostTags) {
    testing::CompressionWorkspace files;
    std::string photo =
        testing::writeMotionPhoto(files.tree.path("photos/PXL_1.jpg"), MotionStyle::motionPhoto);
    std::string other =
        testing::writeMotionPhoto(files.tree.path("photos/PXL_2.jpg"), MotionStyle::motionPhoto, 3);
    std::string still = files.tree.path("photos/still.jpg");
    ASSERT_TRUE(MotionPhoto::writeStill(other, still, 0644).has_value());
    EXPECT_EQ(CopyCheck::checkStill(photo, still), std::string(compression_texts::kOtherPixels));

    // The right pixels, but a still that lost where the photo was taken.
    std::string placeless = files.tree.path("photos/placeless.jpg");
    ASSERT_TRUE(MotionPhoto::writeStill(photo, placeless, 0644).has_value());
    {
        auto image = Exiv2::ImageFactory::open(placeless);
        image->readMetadata();
        Exiv2::ExifData& exif = image->exifData();
        exif.erase(exif.findKey(Exiv2::ExifKey("Exif.GPSInfo.GPSLatitude")));
        image->writeMetadata();
    }
    EXPECT_EQ(CopyCheck::checkStill(photo, placeless),
              compression_texts::tagsLost("Exif.GPSInfo.GPSLatitude"));
    // A plain JPEG, or one whose declared movie is not where it says, is no
    // motion photo.
    std::string plain = files.turnedPhoto("plain.jpg");
    EXPECT_EQ(MotionPhoto::read(plain), std::nullopt);
    std::ofstream(photo, std::ios::binary | std::ios::app) << "trailing bytes";
    EXPECT_EQ(MotionPhoto::read(photo), std::nullopt);
}

TEST(MotionPhotoCompression, FindsOnlyMotionPhotosAndMovesTheOriginalToTheTrash) {
    testing::CompressionWorkspace files;
    std::string photo =
        testing::writeMotionPhoto(files.tree.path("photos/PXL_1.jpg"), MotionStyle::microVideo);
    (void)files.turnedPhoto("plain.jpg");
    std::string bytes = testing::readFile(photo);
    CancellationFlag cancel;
    auto found = CompressionFinder::find(
        {.folders = {files.photos}, .photos = false, .videos = false, .motionPhotos = true},
        cancel);
    ASSERT_EQ(found.plan.items.size(), 1U);
    const PlannedCompression& item = found.plan.items[0];
    EXPECT_EQ(item.path, photo);
    EXPECT_EQ(item.kind, MediaKind::motionPhoto);
    EXPECT_EQ(item.height, 320);
    EXPECT_GT(item.estimatedSaving, 1000);

    auto report = Compressor(files.data).run(found.plan, cancel);
    ASSERT_TRUE(report.has_value()) << report.error();
    EXPECT_EQ(report->compressed(), 1);
    std::string still = files.tree.path("photos/PXL_1 (still).jpg");
    EXPECT_FALSE(MotionPhoto::declaresMotion(still));
    EXPECT_EQ(MotionPhoto::samePixels(still, files.trashFiles() + "/PXL_1.jpg"), true);
    EXPECT_EQ(testing::readFile(files.trashFiles() + "/PXL_1.jpg"), bytes);
    EXPECT_TRUE(testing::exists(files.trashInfo("PXL_1.jpg")));
    EXPECT_FALSE(testing::exists(photo));
}

// NOLINTEND(bugprone-unchecked-optional-access)

} // namespace
} // namespace brevant
