#include "tests/fixtures/ImageFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"
#include "tests/scan/ScanFixtures.hpp"

#include "engine/platform/ImageHeaders.hpp"
#include "engine/scan/FolderSource.hpp"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace brevant {
namespace {

using Inspection = FolderSource::Inspection;
using testing::TempTree;

TEST(Inspection, ReadsTheSizeOfEachDecodableFormat) {
    struct Case {
        std::string name;
        PhotoFormat format;
        int width;
        int height;
    };

    const std::vector<Case> cases{
        {"a.jpg", PhotoFormat::jpeg, 64, 48},  {"b.png", PhotoFormat::png, 30, 20},
        {"c.tif", PhotoFormat::tiff, 17, 33},  {"d.heic", PhotoFormat::heic, 80, 64},
        {"e.webp", PhotoFormat::webp, 50, 40}, {"f.avif", PhotoFormat::avif, 72, 56},
        {"g.gif", PhotoFormat::gif, 33, 21},   {"h.jxl", PhotoFormat::jxl, 44, 66}};
    TempTree tree;
    for (const auto& [name, format, width, height] : cases) {
        if (format == PhotoFormat::jxl &&
            !platform::ImageHeaders::canDecode(platform::ImageLoader::jxl)) {
            continue; // libvips without libjxl can neither write nor read it
        }
        std::string path = testing::writeScene(tree.path(name), width, height, 4);
        EXPECT_EQ(FolderSource::inspect(path, format), Inspection::readable(width, height)) << name;
    }
}

TEST(Inspection, AJpegXlPictureIsReadOnlyWhereLibvipsDecodesIt) {
    TempTree tree;
    std::string path = tree.file("a.jxl", "not written by libjxl");
    bool decodable = platform::ImageHeaders::canDecode(platform::ImageLoader::jxl);
    EXPECT_EQ(FolderSource::inspect(path, PhotoFormat::jxl),
              decodable ? Inspection::damaged() : Inspection::notDecodableHere());
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
