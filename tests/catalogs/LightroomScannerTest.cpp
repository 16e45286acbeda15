#include "engine/catalogs/LightroomScanner.hpp"

#include "tests/fixtures/CatalogFixtures.hpp"
#include "tests/fixtures/Groups.hpp"
#include "tests/fixtures/TempTree.hpp"
#include "tests/scan/ScanFixtures.hpp"

#include "engine/catalogs/CatalogScan.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace brevant {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::LightroomCatalogFixture;
using testing::memberPaths;
using testing::TempTree;

LightroomCatalog readCatalog(const std::string& path) {
    auto catalog = LightroomCatalog::read(path);
    EXPECT_TRUE(catalog.has_value()) << catalog.error().text();
    return catalog.value_or(LightroomCatalog{});
}

ScanResult scanCatalog(const LightroomCatalog& catalog, bool keepPictures = false) {
    CancellationFlag cancel;
    return LightroomScanner::scan(catalog, keepPictures, cancel, nullptr);
}

TEST(LightroomScanner, GroupsTheCatalogsCopiesAndCarriesWhatLightroomKnows) {
    TempTree tree;
    std::string bytes = testing::photoOfSize(1, 30'000);
    std::string a = tree.file("Photos/2024/a.jpg", bytes);
    std::string b = tree.file("Photos/backup/a.jpg", bytes);
    std::string c = tree.file("Photos/2024/c.jpg", testing::photoOfSize(2, 30'000));
    // In the catalog's folder but not in the catalog: never examined.
    tree.file("Photos/2024/not in catalog.jpg", bytes);
    LightroomCatalogFixture fixture(tree.path("Lightroom/Family.lrcat"));
    std::int64_t root = fixture.addRoot(tree.path("Photos/"));
    std::int64_t first =
        fixture.addPhoto(fixture.addFolder(root, "2024/"), "a.jpg", {.rating = 3, .keywords = 1});
    std::int64_t second = fixture.addPhoto(fixture.addFolder(root, "backup/"), "a.jpg");
    fixture.addPhoto(fixture.addFolder(root, "2024/"), "c.jpg");
    fixture.close();
    std::string digest = testing::fileDigest(fixture.path());

    ScanResult result = scanCatalog(readCatalog(fixture.path()), true);

    ASSERT_EQ(result.groups.size(), 1u);
    EXPECT_THAT(memberPaths(result.groups[0]), ElementsAre(a, b));
    const auto& members = result.groups[0].members;
    EXPECT_EQ(members[0].catalog,
              (CatalogReference{LightroomRef{.imageID = first, .rating = 3, .keywords = 1}}));
    EXPECT_EQ(members[1].catalog, (CatalogReference{LightroomRef{.imageID = second}}));
    EXPECT_EQ(result.examined, 3);
    EXPECT_EQ(result.discovered, 3);
    EXPECT_THAT(result.roots, ElementsAre(tree.path("Photos")));
    ASSERT_EQ(result.pictures.size(), 3u);
    for (const auto& picture : result.pictures) {
        EXPECT_TRUE(picture.catalog.hasValue()) << picture.path;
    }
    EXPECT_THAT(result.skipped, IsEmpty());
    EXPECT_EQ(result.lightroomRejected, 0);
    EXPECT_EQ(testing::fileDigest(fixture.path()), digest);
    (void)c;
}

TEST(LightroomScanner, ARejectedPhotoIsCountedAndNeverGrouped) {
    TempTree tree;
    std::string bytes = testing::photoOfSize(3, 20'000);
    std::string a = tree.file("Photos/a.jpg", bytes);
    std::string b = tree.file("Photos/b.jpg", bytes);
    std::string c = tree.file("Photos/c.jpg", bytes);
    LightroomCatalogFixture fixture(tree.path("Family.lrcat"));
    fixture.addPhotoAt(a);
    fixture.addPhotoAt(b, {.pick = -1});

    ScanResult alone = scanCatalog(readCatalog(fixture.path()), true);

    EXPECT_THAT(alone.groups, IsEmpty());
    EXPECT_EQ(alone.lightroomRejected, 1);
    EXPECT_EQ(alone.examined, 1);
    ASSERT_EQ(alone.pictures.size(), 1u);
    EXPECT_EQ(alone.pictures[0].path, a);

    fixture.addPhotoAt(c, {.pick = 1});
    ScanResult pair = scanCatalog(readCatalog(fixture.path()));

    ASSERT_EQ(pair.groups.size(), 1u);
    EXPECT_THAT(memberPaths(pair.groups[0]), ElementsAre(a, c));
    EXPECT_EQ(pair.lightroomRejected, 1);
}

TEST(LightroomScanner, MissingPhotosAreSkippedWithTheirSentence) {
    TempTree tree;
    std::string a = tree.file("Photos/a.jpg", testing::photoOfSize(4, 20'000));
    LightroomCatalogFixture fixture(tree.path("Family.lrcat"));
    fixture.addPhotoAt(a);
    fixture.addPhotoAt(tree.path("Photos/gone.jpg"));
    // A rejected photo that is gone too: counted, and listed as missing.
    fixture.addPhotoAt("/Volumes/Old Drive/b.jpg", {.pick = -1});
    fixture.close();

    ScanResult result = scanCatalog(readCatalog(fixture.path()));

    std::string sentence =
        "Lightroom Classic lists it, but the file is not where the catalog says.";
    EXPECT_THAT(
        result.skipped,
        ElementsAre(SkippedFile{tree.path("Photos/gone.jpg"), SkipReason::unreadable, sentence},
                    SkippedFile{"/Volumes/Old Drive/b.jpg", SkipReason::unreadable, sentence}));
    EXPECT_EQ(result.lightroomRejected, 1);
    // The drive that is not here is not walked, so it is not refused either.
    EXPECT_THAT(result.excluded, IsEmpty());
    EXPECT_THAT(result.roots, ElementsAre(tree.path("Photos")));
}

TEST(CatalogScan, OnlyRootsHoldingUsablePhotosAreWalkedAndEachOnlyOnce) {
    EXPECT_THAT(CatalogScan::rootsToWalk({"/p", "/p/q", "/r", "/s", "C:/x/"},
                                         {"/p/q/a.jpg", "/p/b.jpg", "/r/c/d.jpg", "/t/e.jpg"}),
                ElementsAre("/p", "/r"));
    EXPECT_THAT(CatalogScan::rootsToWalk({"/p/q"}, {"/p/q/a.jpg"}), ElementsAre("/p/q"));
    EXPECT_THAT(CatalogScan::rootsToWalk({"/p"}, {}), IsEmpty());
}

TEST(LightroomScanner, ACancelledScanStillReportsTheMissingPhotos) {
    TempTree tree;
    std::string bytes = testing::photoOfSize(5, 20'000);
    LightroomCatalogFixture fixture(tree.path("Family.lrcat"));
    fixture.addPhotoAt(tree.file("Photos/a.jpg", bytes));
    fixture.addPhotoAt(tree.file("Photos/b.jpg", bytes));
    fixture.addPhotoAt(tree.path("Photos/gone.jpg"));
    fixture.close();
    CancellationFlag cancel;
    cancel.cancel();

    ScanResult result = LightroomScanner::scan(readCatalog(fixture.path()), false, cancel, nullptr);

    EXPECT_TRUE(result.cancelled);
    EXPECT_THAT(result.groups, IsEmpty());
    ASSERT_EQ(result.skipped.size(), 1u);
    EXPECT_EQ(result.skipped[0].path, tree.path("Photos/gone.jpg"));
}

} // namespace
} // namespace brevant
