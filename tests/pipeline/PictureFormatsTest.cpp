#include "tests/fixtures/ImageFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"

#include "engine/pipeline/ScanPipeline.hpp"
#include "engine/platform/ImageHeaders.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace brevant {
namespace {

using testing::TempTree;

struct FormatCase {
    std::string extension;
    PhotoFormat format;
};

// The formats Brevant reads besides JPEG, PNG, HEIC, TIFF and RAW. JPEG XL
// is only read where libvips was built with libjxl.
std::vector<FormatCase> newerFormats() {
    std::vector<FormatCase> cases{
        {"webp", PhotoFormat::webp}, {"avif", PhotoFormat::avif}, {"gif", PhotoFormat::gif}};
    if (platform::ImageHeaders::canDecode(platform::ImageLoader::jxl)) {
        cases.push_back({"jxl", PhotoFormat::jxl});
    }
    return cases;
}

ScanOutcome scanSimilar(const std::string& folder) {
    ScanRequest request{.source = ScanSource::ofFolders({folder}),
                        .mode = ScanMode::similar(SimilarityPreset::balanced)};
    auto outcome = ScanPipeline().run(request, CancellationFlag(), {});
    EXPECT_TRUE(outcome.has_value());
    return outcome ? std::move(*outcome) : ScanOutcome{};
}

// A copy saved in another format from the JPEG's own pixels, as an export or
// a messaging app makes it, is another version of the same photo.
TEST(PictureFormats, ACopyInEachNewerFormatGroupsWithItsJpeg) {
    for (const auto& [extension, format] : newerFormats()) {
        TempTree tree;
        std::string jpeg = testing::writeScene(tree.path("photos/IMG_0001.jpg"), 640, 480, 31);
        std::string copy = tree.path("photos/IMG_0001 shared." + extension);
        testing::saveImage(testing::openImage(jpeg), copy);
        testing::writeScene(tree.path("photos/IMG_0002.jpg"), 640, 480, 32);

        ScanOutcome outcome = scanSimilar(tree.path("photos"));

        auto groups = outcome.found();
        ASSERT_EQ(groups.size(), 1u) << extension;
        ASSERT_EQ(groups[0].kind, MatchKind::similar);
        std::vector<std::string> paths;
        for (const auto& member : groups[0].members) {
            paths.push_back(member.path);
            if (member.path == copy) {
                EXPECT_EQ(member.format, format);
            }
        }
        std::ranges::sort(paths);
        EXPECT_EQ(paths, (std::vector<std::string>{copy, jpeg})) << extension;
    }
}

// Without the decoder a JPEG XL picture is left out with the usual reason and
// the format's name, like a HEIC picture on a computer without libheif.
TEST(PictureFormats, AJpegXlPictureIsSkippedWhereItCannotBeDecoded) {
    if (platform::ImageHeaders::canDecode(platform::ImageLoader::jxl)) {
        GTEST_SKIP() << "libvips decodes JPEG XL here";
    }
    TempTree tree;
    std::string path = tree.file("photos/a.jxl", std::string("\xFF\x0A", 2) + "data");

    ScanOutcome outcome = scanSimilar(tree.path("photos"));

    ASSERT_EQ(outcome.result->skipped.size(), 1u);
    EXPECT_EQ(outcome.result->skipped[0].path, path);
    EXPECT_EQ(outcome.result->skipped[0].reason, SkipReason::unsupportedFormat);
    EXPECT_EQ(outcome.result->skipped[0].detail, "This computer cannot decode JPEG XL");
}

} // namespace
} // namespace brevant
