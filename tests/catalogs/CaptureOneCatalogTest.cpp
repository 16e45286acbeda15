#include "engine/catalogs/CaptureOneCatalog.hpp"

#include "tests/fixtures/CatalogFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace brevant {
namespace {

using testing::CaptureOneCatalogFixture;
using ::testing::ElementsAre;
using testing::TempTree;
using Fixture = CaptureOneCatalogFixture;

TEST(CaptureOneCatalog, ThePhotosQueryIsAssembledFromItsPieces) {
    const std::string expected =
        "SELECT i.Z_PK, p.ZMACROOT, p.ZRELATIVEPATH, COALESCE(p.ZISRELATIVE, 0), i.ZIMAGEFILENAME, "
        "COALESCE(i.ZISTRASHED, 0),\n"
        "       (SELECT MIN(v.Z_PK) FROM ZVARIANT v WHERE v.ZIMAGE = i.Z_PK),\n"
        "       (SELECT COUNT(*) FROM ZVARIANT v WHERE v.ZIMAGE = i.Z_PK),\n"
        "       (SELECT COUNT(*) FROM ZVARIANT v WHERE v.ZIMAGE = i.Z_PK AND v.ZISMODIFIED = 1),\n"
        "       (SELECT MAX(COALESCE(m.ZBASIC_RATING, 0)) FROM ZVARIANT v JOIN ZVARIANTLAYER l ON "
        "l.Z_PK = v.ZCOMBINEDSETTINGS\n"
        "JOIN ZVARIANTMETADATA m ON m.Z_PK = l.ZMETADATA WHERE v.ZIMAGE = i.Z_PK),\n"
        "       (SELECT group_concat(COALESCE(m.ZCOLOR_TAG_INDEX, 0)) FROM ZVARIANT v JOIN "
        "ZVARIANTLAYER l ON l.Z_PK = v.ZCOMBINEDSETTINGS\n"
        "JOIN ZVARIANTMETADATA m ON m.Z_PK = l.ZMETADATA WHERE v.ZIMAGE = i.Z_PK),\n"
        "       (SELECT COUNT(*) FROM ZVARIANT v JOIN ZVARIANTLAYER l ON l.Z_PK = "
        "v.ZCOMBINEDSETTINGS\n"
        "JOIN ZVARIANTMETADATA m ON m.Z_PK = l.ZMETADATA WHERE v.ZIMAGE = i.Z_PK AND "
        "length(COALESCE(m.ZCONTENT_KEYWORDS, '')) > 0),\n"
        "       (SELECT COUNT(*) FROM ZIMAGEINCOLLECTION x JOIN ZCOLLECTION c ON c.Z_PK = "
        "x.ZCOLLECTION LEFT JOIN ZCOLLECTION parent ON parent.Z_PK = c.ZPARENT\n"
        "WHERE c.Z_ENT = 2 AND COALESCE(parent.Z_ENT, 0) != 8 AND x.ZIMAGE = i.Z_PK)\n"
        "     + (SELECT COUNT(*) FROM ZVARIANTINCOLLECTION x JOIN ZCOLLECTION c ON c.Z_PK = "
        "x.ZCOLLECTION LEFT JOIN ZCOLLECTION parent ON parent.Z_PK = c.ZPARENT\n"
        "WHERE c.Z_ENT = 2 AND COALESCE(parent.Z_ENT, 0) != 8\n"
        "          AND x.ZVARIANT IN (SELECT v.Z_PK FROM ZVARIANT v WHERE v.ZIMAGE = i.Z_PK))\n"
        "FROM ZIMAGE i JOIN ZPATHLOCATION p ON p.Z_PK = i.ZIMAGELOCATION\n"
        "ORDER BY i.Z_PK";
    EXPECT_EQ(CaptureOneCatalog::photosQuery(), expected);
}

TEST(CaptureOneCatalog, ReadsEachImageWithItsVariants) {
    TempTree tree;
    std::string a = tree.file("Photos/2023/a.jpg", "a");
    std::string b = tree.file("Photos/2023/b.jpg", "b");
    Fixture fixture(tree.path("Catalogs/Family.cocatalog"));
    std::int64_t location = fixture.addLocation(tree.path("Photos"), "2023", false);
    std::int64_t first = fixture.addImage(location, "a.jpg");
    auto firstVariant = fixture.addVariant(first, {.rating = 2, .keywords = "beach"});
    fixture.addVariant(first, {.modified = true, .rating = 4, .colorTag = 2});
    fixture.addVariant(first, {.keywords = ""});
    std::int64_t second = fixture.addImage(location, "b.jpg", true);
    auto secondVariant = fixture.addVariant(second, {.colorTag = 1});
    std::int64_t gone = fixture.addImage(location, "gone.jpg");
    fixture.close();
    std::string digest = testing::fileDigest(fixture.databasePath());

    auto catalog = CaptureOneCatalog::read(fixture.package());

    ASSERT_TRUE(catalog.has_value()) << catalog.error().text();
    EXPECT_EQ(catalog->url, fixture.package());
    EXPECT_EQ(catalog->databaseURL, fixture.databasePath());
    EXPECT_EQ(catalog->schemaVersion, "160800");
    EXPECT_TRUE(catalog->isTestedVersion());
    ASSERT_EQ(catalog->photos.size(), 3u);
    CaptureOneRef three{.imageID = first,
                        .variantID = firstVariant.variantID,
                        .variants = 3,
                        .rating = 4,
                        .colorTags = {0, 2, 0},
                        .isEdited = true,
                        .albums = 0,
                        .keywords = 1};
    EXPECT_EQ(catalog->photos[0], (CaptureOnePhoto{a, true, false, three}));
    CaptureOneRef red{
        .imageID = second, .variantID = secondVariant.variantID, .variants = 1, .colorTags = {1}};
    EXPECT_EQ(catalog->photos[1], (CaptureOnePhoto{b, true, true, red}));
    EXPECT_EQ(
        catalog->photos[2],
        (CaptureOnePhoto{tree.path("Photos/2023/gone.jpg"), false, false, {.imageID = gone}}));
    EXPECT_THAT(catalog->missing(), ElementsAre(catalog->photos[2]));
    EXPECT_THAT(catalog->rootFolders, ElementsAre(tree.path("Photos/2023")));
    EXPECT_EQ(testing::fileDigest(fixture.databasePath()), digest);
}

TEST(CaptureOneCatalog, AlbumsCountForTheImageAndItsVariantsButNotUnderAnExcludedParent) {
    TempTree tree;
    std::string a = tree.file("Photos/a.jpg", "a");
    Fixture fixture(tree.path("Family.cocatalog"));
    std::int64_t image = fixture.addImageAt(a);
    std::int64_t variant = std::stoll(fixture.database().value(
        "SELECT Z_PK FROM ZVARIANT WHERE ZIMAGE = " + std::to_string(image)));
    std::int64_t album = fixture.addCollection(Fixture::kAlbum);
    std::int64_t group = fixture.addCollection(5);
    std::int64_t nested = fixture.addCollection(Fixture::kAlbum, group);
    std::int64_t project = fixture.addCollection(Fixture::kProjectLike);
    std::int64_t inProject = fixture.addCollection(Fixture::kAlbum, project);
    std::int64_t smart = fixture.addCollection(3);
    fixture.addImageToCollection(image, album);
    fixture.addVariantToCollection(variant, nested);
    fixture.addImageToCollection(image, inProject);
    fixture.addVariantToCollection(variant, inProject);
    fixture.addImageToCollection(image, smart);
    fixture.addImageToCollection(image, project);
    fixture.close();

    auto catalog = CaptureOneCatalog::read(fixture.package());

    ASSERT_TRUE(catalog.has_value()) << catalog.error().text();
    EXPECT_EQ(catalog->photos.at(0).ref.albums, 2);
}

TEST(CaptureOneCatalog, RelativeLocationsLieInsideThePackage) {
    TempTree tree;
    Fixture fixture(tree.path("Family.cocatalog"));
    std::string a = tree.file("Family.cocatalog/Originals/2023/a.jpg", "a");
    fixture.addImage(fixture.addLocation("/Users/ann/Old", "Originals/2023/", true), "a.jpg");
    std::int64_t absolute = fixture.addLocation(tree.path("Elsewhere/"), "", false);
    fixture.addImage(absolute, "b.jpg");
    fixture.close();

    auto catalog = CaptureOneCatalog::read(fixture.package() + "/");

    ASSERT_TRUE(catalog.has_value()) << catalog.error().text();
    ASSERT_EQ(catalog->photos.size(), 2u);
    EXPECT_EQ(catalog->photos[0].path, a);
    EXPECT_TRUE(catalog->photos[0].exists);
    EXPECT_EQ(catalog->photos[1].path, tree.path("Elsewhere/b.jpg"));
    EXPECT_FALSE(catalog->photos[1].exists);
    EXPECT_THAT(catalog->rootFolders,
                ElementsAre(tree.path("Family.cocatalog/Originals/2023"), tree.path("Elsewhere")));
}

TEST(CaptureOneCatalog, TheVersionIsTheNewestRowAsText) {
    TempTree tree;
    Fixture fixture(tree.path("Family.cocatalog"));
    fixture.database().exec("INSERT INTO ZVERSIONINFO (Z_PK, ZVERSION) VALUES (0, 1200)");
    auto read = [&] {
        auto catalog = CaptureOneCatalog::read(fixture.package());
        EXPECT_TRUE(catalog.has_value());
        return catalog ? catalog->schemaVersion : "";
    };
    EXPECT_EQ(read(), "160800");
    fixture.setVersion(std::string("16.3.1"));
    EXPECT_EQ(read(), "16.3.1");
    fixture.setVersion(std::nullopt);
    EXPECT_EQ(read(), "unknown");
    fixture.database().exec("INSERT INTO ZVERSIONINFO (Z_PK, ZVERSION) VALUES (5, NULL)");
    EXPECT_EQ(read(), "unknown");
    fixture.database().exec("INSERT INTO ZVERSIONINFO (Z_PK, ZVERSION) VALUES (6, 12.5)");
    EXPECT_EQ(read(), "unknown");
    EXPECT_THAT(CaptureOneCatalog::testedSchemaVersions(), ElementsAre("160800"));
}

TEST(CaptureOneCatalog, OnlyAPackageWithADatabaseIsACatalog) {
    TempTree tree;
    std::string empty = tree.folder("Empty.cocatalog");
    tree.file("Empty.cocatalog/Empty.cocatalogdb-wal", "");
    tree.file("Empty.cocatalog/Cache/x.cocatalogdb", "");
    std::string file = tree.file("File.cocatalog", "not a folder");
    Fixture wrongExtension(tree.path("Family.cosessiondb"));
    wrongExtension.close();
    std::string target = tree.folder("Real.cocatalog");
    std::string link = tree.symbolicLink(target, "Linked.cocatalog");
    Fixture holder(tree.path("Holder.cocatalog"));
    holder.close();
    tree.symbolicLink(holder.databasePath(), "Real.cocatalog/Real.cocatalogdb");

    for (const auto& path :
         {empty, file, wrongExtension.package(), link, target, tree.path("Missing.cocatalog")}) {
        auto catalog = CaptureOneCatalog::read(path);
        ASSERT_FALSE(catalog.has_value()) << path;
        EXPECT_EQ(catalog.error(), CaptureOneCatalog::notACatalog()) << path;
    }
    EXPECT_EQ(CaptureOneCatalog::notACatalog().text(),
              "That is not a Capture One catalog (.cocatalog).");
    EXPECT_EQ(CaptureOneCatalog::database(holder.package()), holder.databasePath());
}

TEST(CaptureOneCatalog, ColourNamesFollowCaptureOnesNumbering) {
    EXPECT_EQ(CaptureOneCatalog::colorName(CaptureOneCatalog::kRed), "Red");
    EXPECT_EQ(CaptureOneCatalog::colorName(2), "Orange");
    EXPECT_EQ(CaptureOneCatalog::colorName(7), "Purple");
    EXPECT_EQ(CaptureOneCatalog::colorName(0), std::nullopt);
    EXPECT_EQ(CaptureOneCatalog::colorName(8), std::nullopt);
    EXPECT_EQ(CaptureOneCatalog::colorName(-1), std::nullopt);
}

TEST(CaptureOneCatalog, ThePicturesFolderOffersItsNewestPackage) {
    TempTree tree;
    std::string folder = tree.folder("Pictures");
    std::string package = tree.folder("Pictures/Family.cocatalog");
    tree.file("Pictures/Loose.cocatalog", "a file, not a package");
    tree.folder("Pictures/Session.cosessiondb");

    EXPECT_THAT(CaptureOneCatalog::catalogsIn(folder), ElementsAre(package));
    EXPECT_EQ(CaptureOneCatalog::choose(folder), (CatalogChoice{package, std::nullopt}));
    std::string empty = tree.folder("Empty");
    EXPECT_EQ(CaptureOneCatalog::choose(empty).notice,
              "There is no Capture One catalog (.cocatalog) in " + empty +
                  ". Choose the folder the catalog is in.");
}

} // namespace
} // namespace brevant
