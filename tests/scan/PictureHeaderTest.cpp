#include "tests/fixtures/ImageFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"
#include "tests/scan/ScanFixtures.hpp"

#include "engine/scan/FolderSource.hpp"

#include <gtest/gtest.h>

#include <random>

namespace brevant {
namespace {

using Inspection = FolderSource::Inspection;
using testing::TempTree;

TEST(Inspection, ReadsTheSizeOfEachDecodableFormat) {
    TempTree tree;
    std::string jpeg = testing::writeScene(tree.path("a.jpg"), 64, 48, 1);
    std::string png = testing::writeScene(tree.path("b.png"), 30, 20, 2);
    std::string tiff = testing::writeScene(tree.path("c.tif"), 17, 33, 3);
    std::string heic = testing::writeScene(tree.path("d.heic"), 80, 64, 4);

    EXPECT_EQ(FolderSource::inspect(jpeg, PhotoFormat::jpeg), Inspection::readable(64, 48));
    EXPECT_EQ(FolderSource::inspect(png, PhotoFormat::png), Inspection::readable(30, 20));
    EXPECT_EQ(FolderSource::inspect(tiff, PhotoFormat::tiff), Inspection::readable(17, 33));
    EXPECT_EQ(FolderSource::inspect(heic, PhotoFormat::heic), Inspection::readable(80, 64));
}

TEST(Inspection, ReadsAPictureByItsContentsNotItsName) {
    TempTree tree;
    std::string jpegNamedPng = tree.file("really-a-jpeg.png", testing::jpegBytes(5, 40, 30));
    EXPECT_EQ(FolderSource::inspect(jpegNamedPng, PhotoFormat::png), Inspection::readable(40, 30));
}

TEST(Inspection, TextAndRandomBytesAreDamaged) {
    TempTree tree;
    std::mt19937 random(7);
    std::string noise(50'000, '\0');
    for (auto& byte : noise) {
        byte = static_cast<char>(random());
    }
    std::string randomJpeg = tree.file("random.jpg", noise);
    std::string textJpeg = tree.file("text.jpg", "Shopping list: milk, eggs, bread.\n");
    std::string textHeic = tree.file("text.heic", "1 2\n3 4\n");
    std::string cut = tree.file("cut.png", testing::jpegBytes(6).substr(0, 40));

    EXPECT_EQ(FolderSource::inspect(randomJpeg, PhotoFormat::jpeg), Inspection::damaged());
    EXPECT_EQ(FolderSource::inspect(textJpeg, PhotoFormat::jpeg), Inspection::damaged());
    EXPECT_EQ(FolderSource::inspect(textHeic, PhotoFormat::heic), Inspection::damaged());
    EXPECT_EQ(FolderSource::inspect(cut, PhotoFormat::png), Inspection::damaged());
}

TEST(Inspection, NeverReadsThroughASymbolicLink) {
    TempTree tree;
    std::string photo = testing::writeScene(tree.path("a.jpg"), 20, 10, 8);
    std::string link = tree.symbolicLink(photo, "link.jpg");
    EXPECT_EQ(FolderSource::inspect(link, PhotoFormat::jpeg), Inspection::damaged());
}

TEST(Inspection, RawThatLibRawCannotOpenIsNotDecodableHere) {
    TempTree tree;
    std::string fake = tree.file("fake.nef", std::string(20'000, 'x'));
    EXPECT_EQ(FolderSource::inspect(fake, PhotoFormat::raw), Inspection::notDecodableHere());
    EXPECT_FALSE(FolderSource::decodesFully(fake));
}

TEST(Inspection, RealCameraRawFiles) {
    auto dng = testing::sampleFile("photoprism/assets/examples/canon_eos_6d.dng");
    auto truncated = testing::sampleFile("exiftool-t-images/FujiFilm.raf");
    auto stub = testing::sampleFile("exif-py/raw/sony_alpha_a7iii_raw_image.ARW");
    if (!dng || !truncated || !stub) {
        GTEST_SKIP() << "the shared sample photos are not present";
    }
    EXPECT_EQ(FolderSource::inspect(*dng, PhotoFormat::raw), Inspection::readable(1224, 816));
    EXPECT_TRUE(FolderSource::decodesFully(*dng));
    // Its header reads, but the picture data is cut short.
    EXPECT_EQ(FolderSource::inspect(*truncated, PhotoFormat::raw).kind, Inspection::Kind::readable);
    EXPECT_FALSE(FolderSource::decodesFully(*truncated));
    EXPECT_EQ(FolderSource::inspect(*stub, PhotoFormat::raw), Inspection::notDecodableHere());
}

} // namespace
} // namespace brevant
