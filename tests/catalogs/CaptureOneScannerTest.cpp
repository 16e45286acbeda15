#include "engine/catalogs/CaptureOneScanner.hpp"

#include "tests/fixtures/CatalogFixtures.hpp"
#include "tests/fixtures/Groups.hpp"
#include "tests/fixtures/TempTree.hpp"
#include "tests/scan/ScanFixtures.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace brevant {
namespace {

using testing::CaptureOneCatalogFixture;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::memberPaths;
using testing::TempTree;

CaptureOneCatalog readCatalog(const std::string& package) {
    auto catalog = CaptureOneCatalog::read(package);
    EXPECT_TRUE(catalog.has_value()) << catalog.error().text();
    return catalog.value_or(CaptureOneCatalog{});
}

ScanResult scanCatalog(const CaptureOneCatalog& catalog, bool keepPictures = false) {
    CancellationFlag cancel;
    return CaptureOneScanner::scan(catalog, keepPictures, cancel, nullptr);
}

TEST(CaptureOneScanner, AnImageWithAnOrangeVariantIsUsableAndCarriesItsTags) {
    TempTree tree;
    std::string bytes = testing::photoOfSize(11, 25'000);
    std::string a = tree.file("Photos/2023/a.jpg", bytes);
    std::string b = tree.file("Photos/2024/b.jpg", bytes);
    tree.file("Photos/2024/unlisted.jpg", bytes);
    CaptureOneCatalogFixture fixture(tree.path("Family.cocatalog"));
    std::int64_t first = fixture.addImageAt(a);
    fixture.addVariant(first, {.colorTag = 2});
    fixture.addVariant(first, {.colorTag = 0});
    std::int64_t second = fixture.addImageAt(b, {.rating = 5});
    fixture.close();
    std::string digest = testing::fileDigest(fixture.databasePath());
    CaptureOneCatalog catalog = readCatalog(fixture.package());
    ASSERT_EQ(catalog.photos.size(), 2u);
    EXPECT_EQ(catalog.photos[0].ref.colorTags, (std::vector<int>{0, 2, 0}));
    EXPECT_TRUE(CaptureOneScanner::isUsable(catalog.photos[0]));

    ScanResult result = scanCatalog(catalog, true);

    ASSERT_EQ(result.groups.size(), 1u);
    EXPECT_THAT(memberPaths(result.groups[0]), ElementsAre(a, b));
    EXPECT_EQ(result.groups[0].members[0].catalog, CatalogReference{catalog.photos[0].ref});
    EXPECT_EQ(result.groups[0].members[1].catalog, CatalogReference{catalog.photos[1].ref});
    EXPECT_EQ(result.groups[0].members[1].catalog->imageID(), second);
    EXPECT_EQ(result.groups[0].members[0].fixedKeepReason(),
              "Has a second variant in Capture One, which is another edit of this very file, so "
              "it is kept");
    EXPECT_EQ(result.pictures.size(), 2u);
    EXPECT_EQ(result.examined, 2);
    EXPECT_THAT(result.roots, ElementsAre(tree.path("Photos/2023"), tree.path("Photos/2024")));
    EXPECT_EQ(result.captureOneRed, 0);
    EXPECT_EQ(testing::fileDigest(fixture.databasePath()), digest);
}

TEST(CaptureOneScanner, TrashedAndRedImagesAreNeverGroupedAndOnlyRedOnesCount) {
    TempTree tree;
    std::string bytes = testing::photoOfSize(12, 25'000);
    std::string kept = tree.file("Photos/kept.jpg", bytes);
    std::string trashed = tree.file("Photos/trashed.jpg", bytes);
    std::string trashedRed = tree.file("Photos/trashed red.jpg", bytes);
    std::string red = tree.file("Photos/red.jpg", bytes);
    CaptureOneCatalogFixture fixture(tree.path("Family.cocatalog"));
    fixture.addImageAt(kept);
    fixture.addImageAt(trashed, {}, true);
    fixture.addImageAt(trashedRed, {.colorTag = 1}, true);
    std::int64_t redImage = fixture.addImageAt(red);
    fixture.addVariant(redImage, {.colorTag = 1});
    fixture.close();
    CaptureOneCatalog catalog = readCatalog(fixture.package());

    ScanResult result = scanCatalog(catalog, true);

    EXPECT_THAT(result.groups, IsEmpty());
    ASSERT_EQ(result.pictures.size(), 1u);
    EXPECT_EQ(result.pictures[0].path, kept);
    EXPECT_EQ(result.captureOneRed, 1);
    EXPECT_FALSE(CaptureOneScanner::isUsable(catalog.photos[1]));
    EXPECT_FALSE(CaptureOneScanner::isUsable(catalog.photos[2]));
    EXPECT_FALSE(CaptureOneScanner::isUsable(catalog.photos[3]));
}

TEST(CaptureOneScanner, MissingImagesAreSkippedWithTheirSentence) {
    TempTree tree;
    std::string a = tree.file("Photos/a.jpg", testing::photoOfSize(13, 25'000));
    CaptureOneCatalogFixture fixture(tree.path("Family.cocatalog"));
    fixture.addImageAt(a);
    fixture.addImageAt(tree.path("Photos/gone.jpg"));
    fixture.addImageAt("/Volumes/Card/DCIM/b.jpg");
    fixture.close();

    ScanResult result = scanCatalog(readCatalog(fixture.package()));

    std::string sentence = "Capture One lists it, but the file is not where the catalog says.";
    EXPECT_THAT(
        result.skipped,
        ElementsAre(SkippedFile{tree.path("Photos/gone.jpg"), SkipReason::unreadable, sentence},
                    SkippedFile{"/Volumes/Card/DCIM/b.jpg", SkipReason::unreadable, sentence}));
    EXPECT_THAT(result.excluded, IsEmpty());
    EXPECT_EQ(result.examined, 1);
}

} // namespace
} // namespace brevant
