#include "engine/catalogs/CatalogBackup.hpp"

#include "tests/fixtures/CatalogFixtures.hpp"
#include "tests/fixtures/ScopedTimeZone.hpp"
#include "tests/fixtures/TempTree.hpp"

#include "engine/catalogs/SQLiteReader.hpp"
#include "engine/scan/PathRules.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace brevant {
namespace {

using testing::CaptureOneCatalogFixture;
using ::testing::ElementsAre;
using testing::Journal;
using testing::LightroomCatalogFixture;
using testing::TempTree;
using ::testing::UnorderedElementsAre;

// 09:30:15 on 1 May 2024 in UTC.
Date mayFirst() {
    return Date::fromUnix(1714555815, 250'000'000);
}

std::vector<std::string> entries(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        names.push_back(entry.path().filename().string());
    }
    return names;
}

std::string countOfImages(const std::string& database) {
    auto reader = SQLiteReader::open(database, std::nullopt, "busy");
    if (!reader) {
        return reader.error().text();
    }
    auto rows = reader->rows("SELECT COUNT(*) FROM Adobe_images");
    if (!rows) {
        return rows.error().text();
    }
    return std::to_string(SQLiteValues::integer(rows->at(0).at(0)));
}

TEST(CatalogBackup, TheDateIsTheLocalTimeWithAsciiDigits) {
    {
        testing::ScopedTimeZone zone("UTC");
        EXPECT_EQ(CatalogBackup::dateText(mayFirst()), "2024-05-01 093015");
    }
    {
        testing::ScopedTimeZone zone("Asia/Kolkata");
        EXPECT_EQ(CatalogBackup::dateText(mayFirst()), "2024-05-01 150015");
    }
    {
        testing::ScopedTimeZone zone("America/Los_Angeles");
        EXPECT_EQ(CatalogBackup::dateText(mayFirst()), "2024-05-01 023015");
    }
}

TEST(CatalogBackup, TwoBackupsWithinOneSecondGetTheSecondNameWithACounter) {
    testing::ScopedTimeZone zone("UTC");
    TempTree tree;
    LightroomCatalogFixture fixture(tree.path("Lightroom/Family.lrcat"));
    fixture.addPhotoAt(tree.path("Photos/a.jpg"));
    fixture.close();
    std::string digest = testing::fileDigest(fixture.path());

    auto first = CatalogBackup::backUpLightroom(fixture.path(), mayFirst());
    auto second =
        CatalogBackup::backUpLightroom(fixture.path(), Date::fromUnix(1714555815, 900'000'000));
    tree.file("Lightroom/Brevant Backups/Family 2024-05-01 093015 3.lrcat", "taken");
    auto fourth = CatalogBackup::backUpLightroom(fixture.path(), mayFirst());

    ASSERT_TRUE(first.has_value()) << first.error().description;
    ASSERT_TRUE(second.has_value()) << second.error().description;
    ASSERT_TRUE(fourth.has_value()) << fourth.error().description;
    std::string folder = tree.path("Lightroom/Brevant Backups");
    EXPECT_EQ(*first, folder + "/Family 2024-05-01 093015.lrcat");
    EXPECT_EQ(*second, folder + "/Family 2024-05-01 093015 2.lrcat");
    EXPECT_EQ(*fourth, folder + "/Family 2024-05-01 093015 4.lrcat");
    EXPECT_EQ(countOfImages(*first), "1");
    EXPECT_EQ(countOfImages(*second), "1");
    EXPECT_EQ(testing::readFile(folder + "/Family 2024-05-01 093015 3.lrcat"), "taken");
    EXPECT_EQ(testing::fileDigest(fixture.path()), digest);
    EXPECT_THAT(entries(tree.path("Lightroom")),
                UnorderedElementsAre("Family.lrcat", "Brevant Backups"));
}

TEST(CatalogBackup, TheCopyHoldsWhatSatInTheLogAsOneFile) {
    TempTree tree;
    LightroomCatalogFixture fixture(tree.path("Family.lrcat"), Journal::writeAheadLog);
    fixture.checkpoint();
    fixture.addPhotoAt(tree.path("Photos/a.jpg"));
    fixture.addPhotoAt(tree.path("Photos/b.jpg"));
    ASSERT_GT(std::filesystem::file_size(fixture.path() + "-wal"), 0u);

    auto backup = CatalogBackup::backUpLightroom(fixture.path(), mayFirst());

    ASSERT_TRUE(backup.has_value()) << backup.error().description;
    EXPECT_FALSE(std::filesystem::exists(*backup + "-wal"));
    EXPECT_FALSE(std::filesystem::exists(*backup + "-shm"));
    EXPECT_EQ(countOfImages(*backup), "2");
    EXPECT_THAT(entries(tree.path("Brevant Backups")),
                ElementsAre(PathRules::lastComponent(*backup)));
}

TEST(CatalogBackup, ACaptureOneBackupIsAPackageHoldingOnlyTheDatabase) {
    testing::ScopedTimeZone zone("UTC");
    TempTree tree;
    CaptureOneCatalogFixture fixture(tree.path("Catalogs/Family.cocatalog"));
    fixture.addImageAt(tree.path("Photos/a.jpg"));
    fixture.close();
    tree.file("Catalogs/Family.cocatalog/Cache/Previews/a.cop", "preview");
    tree.file("Catalogs/Family.cocatalog/Settings/x.plist", "settings");

    auto first =
        CatalogBackup::backUpCaptureOne(fixture.package(), fixture.databasePath(), mayFirst());
    auto second = CatalogBackup::backUpCaptureOne(fixture.package() + "/", fixture.databasePath(),
                                                  mayFirst());

    ASSERT_TRUE(first.has_value()) << first.error().description;
    ASSERT_TRUE(second.has_value()) << second.error().description;
    EXPECT_EQ(*first, tree.path("Catalogs/Brevant Backups/Family 2024-05-01 093015.cocatalog"));
    EXPECT_EQ(*second, tree.path("Catalogs/Brevant Backups/Family 2024-05-01 093015 2.cocatalog"));
    EXPECT_THAT(entries(*first), ElementsAre("Family.cocatalogdb"));
    auto reader = SQLiteReader::open(*first + "/Family.cocatalogdb", std::nullopt, "busy");
    ASSERT_TRUE(reader.has_value());
    auto rows = reader->rows("SELECT ZIMAGEFILENAME FROM ZIMAGE");
    ASSERT_TRUE(rows.has_value());
    ASSERT_EQ(rows->size(), 1u);
    EXPECT_EQ(SQLiteValues::text(rows->at(0).at(0)), "a.jpg");
}

TEST(CatalogBackup, FailuresSayWhatCouldNotBeDone) {
    TempTree tree;
    // Source missing: SQLite's message, and no backup file left behind.
    auto missing = CatalogBackup::copyDatabase(tree.path("none.lrcat"), tree.path("copy.lrcat"));
    ASSERT_FALSE(missing.has_value());
    EXPECT_EQ(missing.error().description, "unable to open database file");
    EXPECT_FALSE(std::filesystem::exists(tree.path("copy.lrcat")));

    // A destination that exists is never overwritten.
    LightroomCatalogFixture fixture(tree.path("Family.lrcat"));
    fixture.close();
    std::string taken = tree.file("taken.lrcat", "mine");
    auto occupied = CatalogBackup::copyDatabase(fixture.path(), taken);
    ASSERT_FALSE(occupied.has_value());
    EXPECT_EQ(occupied.error().description, "could not create taken.lrcat");
    EXPECT_EQ(testing::readFile(taken), "mine");

    // Not a database: the copy stops part way with SQLite's code.
    std::string junk = tree.file("junk.lrcat", std::string(8192, 'j'));
    auto stopped = CatalogBackup::copyDatabase(junk, tree.path("junk copy.lrcat"));
    ASSERT_FALSE(stopped.has_value());
    EXPECT_EQ(stopped.error().description, "the copy stopped part way (26)");

    // The backup folder cannot be made where a file has its name.
    TempTree other;
    LightroomCatalogFixture blocked(other.path("Family.lrcat"));
    blocked.close();
    other.file("Brevant Backups", "not a folder");
    auto noFolder = CatalogBackup::backUpLightroom(blocked.path(), mayFirst());
    ASSERT_FALSE(noFolder.has_value());
    EXPECT_THAT(noFolder.error().description,
                ::testing::StartsWith("could not create Brevant Backups ("));
}

TEST(CatalogBackup, AnUnwritableCatalogFolderRefusesTheBackup) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "root may write anywhere";
    }
    TempTree tree;
    LightroomCatalogFixture fixture(tree.path("Locked/Family.lrcat"));
    fixture.close();
    ::chmod(tree.path("Locked").c_str(), 0555);

    auto backup = CatalogBackup::backUpLightroom(fixture.path(), mayFirst());

    ::chmod(tree.path("Locked").c_str(), 0755);
    ASSERT_FALSE(backup.has_value());
    EXPECT_EQ(backup.error().description, "could not create Brevant Backups (Permission denied)");
}

} // namespace
} // namespace brevant
