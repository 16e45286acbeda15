#include "engine/catalogs/LightroomCatalog.hpp"

#include "tests/fixtures/CatalogFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>

namespace brevant {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::Journal;
using testing::LightroomCatalogFixture;
using testing::TempTree;
using Photo = LightroomCatalogFixture::Photo;

TEST(LightroomCatalog, ReadsWhatTheUserDidToEachMasterPhoto) {
    TempTree tree;
    std::string a = tree.file("Photos/2024/a.jpg", "a");
    std::string b = tree.file("Photos/2024/b.nef", "b");
    LightroomCatalogFixture fixture(tree.path("Lightroom/Family.lrcat"));
    std::int64_t root = fixture.addRoot(tree.path("Photos/"));
    std::int64_t folder = fixture.addFolder(root, "2024/");
    std::int64_t first = fixture.addPhoto(
        folder, "a.jpg",
        {.pick = 1, .rating = 4, .colorLabel = "Rot", .collections = 1, .keywords = 2});
    std::int64_t second =
        fixture.addPhoto(folder, "b.nef", {.pick = -1, .sidecarExtensions = " xmp , JPG,, "});
    fixture.addVirtualCopy(first, {.edited = true, .collections = 2, .keywords = 1});
    fixture.addVirtualCopy(first, {.rating = 5});
    std::int64_t gone = fixture.addPhoto(folder, "gone.jpg");
    fixture.close();
    std::string digest = testing::fileDigest(fixture.path());

    auto catalog = LightroomCatalog::read(fixture.path());

    ASSERT_TRUE(catalog.has_value()) << catalog.error().text();
    EXPECT_EQ(catalog->url, fixture.path());
    EXPECT_EQ(catalog->schemaVersion, "1504001");
    EXPECT_TRUE(catalog->isTestedVersion());
    // Masters only, in id order; virtual copies are counted on their master.
    ASSERT_EQ(catalog->photos.size(), 3u);
    LightroomRef master{.imageID = first,
                        .pick = 1,
                        .rating = 4,
                        .isEdited = true,
                        .virtualCopies = 2,
                        .collections = 3,
                        .keywords = 3,
                        .colorLabel = "Rot"};
    EXPECT_EQ(catalog->photos[0], (LightroomPhoto{a, true, master}));
    LightroomRef rejected{.imageID = second, .pick = -1, .sidecarExtensions = {"xmp", "JPG"}};
    EXPECT_EQ(catalog->photos[1], (LightroomPhoto{b, true, rejected}));
    EXPECT_EQ(catalog->photos[2],
              (LightroomPhoto{tree.path("Photos/2024/gone.jpg"), false, {.imageID = gone}}));
    EXPECT_THAT(catalog->missing(), ElementsAre(catalog->photos[2]));
    EXPECT_THAT(catalog->rootFolders, ElementsAre(tree.path("Photos")));
    EXPECT_EQ(testing::fileDigest(fixture.path()), digest);
}

TEST(LightroomCatalog, RootAndFolderJoinWithExactlyOneSlash) {
    EXPECT_EQ(LightroomCatalog::joinedPath("/P/", "2024/", "a.jpg"), "/P/2024/a.jpg");
    EXPECT_EQ(LightroomCatalog::joinedPath("/P", "2024", "a.jpg"), "/P/2024/a.jpg");
    EXPECT_EQ(LightroomCatalog::joinedPath("/P/", "", "a.jpg"), "/P/a.jpg");
    EXPECT_EQ(LightroomCatalog::joinedPath("/P", "", "a.jpg"), "/P/a.jpg");
    EXPECT_EQ(LightroomCatalog::joinedPath("/", "x/", "a.jpg"), "/x/a.jpg");

    TempTree tree;
    std::string a = tree.file("P/2024/a.jpg", "a");
    std::string b = tree.file("Q/b.jpg", "b");
    LightroomCatalogFixture fixture(tree.path("Family.lrcat"));
    fixture.addPhoto(fixture.addFolder(fixture.addRoot(tree.path("P")), "2024"), "a.jpg");
    fixture.addPhoto(fixture.addFolder(fixture.addRoot(tree.path("Q/")), ""), "b.jpg");
    fixture.close();

    auto catalog = LightroomCatalog::read(fixture.path());

    ASSERT_TRUE(catalog.has_value()) << catalog.error().text();
    ASSERT_EQ(catalog->photos.size(), 2u);
    EXPECT_EQ(catalog->photos[0].path, a);
    EXPECT_EQ(catalog->photos[1].path, b);
    EXPECT_TRUE(catalog->photos[0].exists);
    EXPECT_TRUE(catalog->photos[1].exists);
    EXPECT_THAT(catalog->rootFolders, ElementsAre(tree.path("P"), tree.path("Q")));
}

TEST(LightroomCatalog, PathsAreResolvedThroughLinks) {
    TempTree tree;
    std::string a = tree.file("Real/a.jpg", "a");
    tree.symbolicLink(tree.path("Real"), "Linked");
    LightroomCatalogFixture fixture(tree.path("Family.lrcat"));
    fixture.addPhoto(fixture.addFolder(fixture.addRoot(tree.path("Linked/")), ""), "a.jpg");
    fixture.close();

    auto catalog = LightroomCatalog::read(fixture.path());

    ASSERT_TRUE(catalog.has_value());
    EXPECT_EQ(catalog->photos.at(0).path, a);
    EXPECT_THAT(catalog->rootFolders, ElementsAre(tree.path("Real")));
}

TEST(LightroomCatalog, ACatalogWithoutAVersionReadsAsUnknown) {
    TempTree tree;
    LightroomCatalogFixture fixture(tree.path("Family.lrcat"));
    fixture.setVersion(std::nullopt);
    fixture.close();

    auto catalog = LightroomCatalog::read(fixture.path());

    ASSERT_TRUE(catalog.has_value());
    EXPECT_EQ(catalog->schemaVersion, "unknown");
    EXPECT_FALSE(catalog->isTestedVersion());
    EXPECT_THAT(catalog->photos, IsEmpty());

    LightroomCatalogFixture newer(tree.path("Newer.lrcat"));
    newer.setVersion("1504002");
    newer.close();
    auto other = LightroomCatalog::read(newer.path());
    ASSERT_TRUE(other.has_value());
    EXPECT_EQ(other->schemaVersion, "1504002");
    EXPECT_FALSE(other->isTestedVersion());
    EXPECT_THAT(LightroomCatalog::testedSchemaVersions(), ElementsAre("1504001"));
}

TEST(LightroomCatalog, OnlyAnLrcatFileIsACatalog) {
    TempTree tree;
    LightroomCatalogFixture fixture(tree.path("Family.db"));
    fixture.close();
    LightroomCatalogFixture upper(tree.path("UPPER.LRCAT"));
    upper.close();

    auto wrong = LightroomCatalog::read(fixture.path());
    auto missing = LightroomCatalog::read(tree.path("missing.lrcat"));

    ASSERT_FALSE(wrong.has_value());
    EXPECT_EQ(wrong.error().kind, CatalogReadError::Kind::notACatalog);
    EXPECT_EQ(wrong.error().text(), "That is not a Lightroom Classic catalog (.lrcat).");
    EXPECT_TRUE(LightroomCatalog::read(upper.path()).has_value());
    ASSERT_FALSE(missing.has_value());
    EXPECT_EQ(missing.error().text(),
              "The catalog could not be read: unable to open database file");
    EXPECT_FALSE(std::filesystem::exists(tree.path("missing.lrcat")));
}

TEST(LightroomCatalog, PhotosStillInTheLogAreRead) {
    TempTree tree;
    std::string a = tree.file("Photos/a.jpg", "a");
    LightroomCatalogFixture fixture(tree.path("Family.lrcat"), Journal::writeAheadLog);
    fixture.checkpoint();
    fixture.addPhotoAt(a, {.rating = 2});
    std::string digest = testing::fileDigest(fixture.path());

    auto catalog = LightroomCatalog::read(fixture.path());

    ASSERT_TRUE(catalog.has_value()) << catalog.error().text();
    ASSERT_EQ(catalog->photos.size(), 1u);
    EXPECT_EQ(catalog->photos[0].path, a);
    EXPECT_EQ(catalog->photos[0].ref.rating, 2);
    EXPECT_EQ(testing::fileDigest(fixture.path()), digest);
}

TEST(LightroomCatalog, RootsOfAnotherComputerAreFoundBesideTheCatalog) {
    TempTree tree;
    std::string a = tree.file("Shared/Photos/2019/a.jpg", "a");
    LightroomCatalogFixture fixture(tree.path("Shared/Catalog/Family.lrcat"));
    std::int64_t windows = fixture.addRoot("C:/Users/ann/Pictures/", "../Photos/");
    std::int64_t unknown = fixture.addRoot("D:/Archive/");
    std::int64_t empty = fixture.addRoot("E:/Old/", "");
    fixture.addPhoto(fixture.addFolder(windows, "2019/"), "a.jpg");
    fixture.addPhoto(fixture.addFolder(windows, "2019/"), "elsewhere.jpg");
    fixture.addPhoto(fixture.addFolder(unknown, ""), "b.jpg");
    fixture.addPhoto(fixture.addFolder(empty, ""), "c.jpg");
    fixture.close();

    auto catalog = LightroomCatalog::read(fixture.path());

    ASSERT_TRUE(catalog.has_value()) << catalog.error().text();
    ASSERT_EQ(catalog->photos.size(), 4u);
    EXPECT_EQ(catalog->photos[0].path, a);
    EXPECT_TRUE(catalog->photos[0].exists);
    // Not found either way: the path the catalog records.
    EXPECT_EQ(catalog->photos[1].path, "C:/Users/ann/Pictures/2019/elsewhere.jpg");
    EXPECT_FALSE(catalog->photos[1].exists);
    EXPECT_EQ(catalog->photos[2].path, "D:/Archive/b.jpg");
    EXPECT_EQ(catalog->photos[3].path, "E:/Old/c.jpg");
    EXPECT_THAT(catalog->rootFolders,
                ElementsAre(tree.path("Shared/Photos"), "C:/Users/ann/Pictures/", "D:/Archive/",
                            "E:/Old/"));

    // A catalog of a version without the column reads as the catalog says.
    LightroomCatalogFixture older(tree.path("Shared/Catalog/Older.lrcat"));
    older.database().exec("ALTER TABLE AgLibraryRootFolder DROP COLUMN relativePathFromCatalog");
    older.addPhotoAt("C:/Users/ann/Pictures/2019/a.jpg");
    older.close();
    auto old = LightroomCatalog::read(older.path());
    ASSERT_TRUE(old.has_value()) << old.error().text();
    EXPECT_FALSE(old->photos.at(0).exists);
}

TEST(LightroomCatalog, AChosenFolderUsesItsNewestCatalog) {
    TempTree tree;
    std::string folder = tree.folder("Lightroom");
    auto touch = [&](const std::string& path, std::int64_t seconds) {
        timespec times[2] = {{seconds, 0}, {seconds, 0}};
        ::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW);
    };
    std::string old = tree.file("Lightroom/Old.lrcat", "");
    std::string recent = tree.file("Lightroom/Recent.LRCAT", "");
    std::string middle = tree.file("Lightroom/Middle.lrcat", "");
    touch(old, 1'000'000);
    touch(recent, 3'000'000);
    touch(middle, 2'000'000);
    tree.file("Lightroom/Recent.lrcat-wal", "");
    tree.file("Lightroom/Recent.lrcat.lock", "");
    tree.folder("Lightroom/Recent Previews.lrdata");
    tree.folder("Lightroom/Folder.lrcat");
    tree.symbolicLink(old, "Lightroom/Link.lrcat");

    EXPECT_THAT(LightroomCatalog::catalogsIn(folder), ElementsAre(recent, middle, old));
    auto choice = LightroomCatalog::choose(folder);
    EXPECT_EQ(choice.catalog, recent);
    EXPECT_EQ(choice.notice,
              "This folder holds 3 catalogs; using Recent.LRCAT, the most recently changed.");

    std::string single = tree.folder("Single");
    std::string only = tree.file("Single/Only.lrcat", "");
    EXPECT_EQ(LightroomCatalog::choose(single), (CatalogChoice{only, std::nullopt}));

    std::string empty = tree.folder("Empty");
    EXPECT_EQ(
        LightroomCatalog::choose(empty),
        (CatalogChoice{std::nullopt, "There is no Lightroom Classic catalog (.lrcat) in " + empty +
                                         ". Choose the folder the catalog file is in."}));
    EXPECT_THAT(LightroomCatalog::catalogsIn(tree.path("Missing")), IsEmpty());
}

} // namespace
} // namespace brevant
