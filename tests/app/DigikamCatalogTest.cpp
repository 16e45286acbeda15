#include "tests/app/ProgramRun.hpp"
#include "tests/catalogs/DigikamFixture.hpp"
#include "tests/catalogs/MarkFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"
#include "tests/scan/ScanFixtures.hpp"

#include "engine/catalogs/DigikamMarker.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fmt/format.h>

// A digiKam library scanned, tagged and untagged through `brevant catalog`,
// with sqlite3 reading what changed.
namespace brevant::cli {
namespace {

using ::testing::HasSubstr;
using testing::namesIn;
using ::testing::SizeIs;
using testing::TempTree;

Outcome catalogCommand(const TempTree& tree, const std::string& arguments) {
    return runCaptured(tree, fmt::format("BREVANT_DATA_DIR='{}' XDG_DATA_HOME='{}' '{}' catalog {}",
                                         tree.path("data"), tree.path("share"), BREVANT_BINARY,
                                         arguments));
}

// What sqlite3 answers to one query on the database.
std::string sqlite3(const TempTree& tree, const std::string& database, const std::string& sql) {
    Outcome run = runCaptured(tree, fmt::format("sqlite3 '{}' \"{}\"", database, sql));
    EXPECT_EQ(run.status, 0) << run.err;
    return run.out;
}

std::string percentEncoded(const std::string& path) {
    std::string encoded;
    for (char c : path) {
        encoded += c == '/' ? std::string("%2F") : std::string(1, c);
    }
    return encoded;
}

TEST(DigikamCatalogCommand, ScansTagsAndUndoesADigikamLibrary) {
    TempTree tree;
    std::string a = tree.file("Pictures/a.jpg", testing::photoOfSize(23, 20'000));
    tree.file("Pictures/b.jpg", testing::readFile(a));
    std::string database = tree.path("Pictures/digikam4.db");
    {
        testing::DigikamFixture fixture(database, "15");
        auto album =
            fixture.addAlbum(fixture.addPathRoot(percentEncoded(tree.path("Pictures"))), "/");
        fixture.addImage(album, "a.jpg", 1, 4);
        fixture.addImage(album, "b.jpg");
        // A root on a drive this computer does not have.
        auto away = fixture.addUuidRoot("00000000-dead-beef-0000-000000000000", "/Photos");
        fixture.addImage(fixture.addAlbum(away, "/Trip"), "c.jpg");
        fixture.close();
    }
    std::string tags = "SELECT t.pid, t.name, i.name FROM ImageTags x JOIN Tags t ON t.id = "
                       "x.tagid JOIN Images i ON i.id = x.imageid WHERE t.pid = 0";
    std::string duplicatesTag = "SELECT COUNT(*) FROM Tags WHERE name = 'Brevant Duplicates'";

    Outcome scan = catalogCommand(tree, "scan '" + database + "'");

    EXPECT_EQ(scan.status, 0) << scan.err;
    EXPECT_THAT(scan.out, HasSubstr("identical: 2 photos\n"));
    EXPECT_THAT(scan.out, HasSubstr("3 photos in the catalog, 2 examined, 1 identical group\n"));
    EXPECT_THAT(scan.out, HasSubstr("On a drive that is not connected: 1\n  /Photos/Trip/c.jpg\n"));

    Outcome mark = catalogCommand(tree, "mark --yes '" + database + "'");

    EXPECT_EQ(mark.status, 0) << mark.err;
    EXPECT_THAT(mark.out, HasSubstr("Tagged 1 photo Brevant Duplicates in digiKam.\n"));
    EXPECT_THAT(mark.out, HasSubstr(std::string(DigikamMarker::kFinishNote)));
    // The copy with stars is kept; the other is tagged under a new top-level
    // tag.
    EXPECT_EQ(sqlite3(tree, database, tags), "0|Brevant Duplicates|b.jpg\n");
    EXPECT_THAT(namesIn(tree.path("Pictures/Brevant Backups")), SizeIs(1));
    auto records = namesIn(tree.path("data/Markings/digiKam"));
    ASSERT_THAT(records, SizeIs(1));
    std::string id = records[0].substr(0, records[0].size() - 5);

    Outcome history = catalogCommand(tree, "history");

    EXPECT_EQ(history.status, 0) << history.err;
    EXPECT_THAT(history.out,
                HasSubstr("  digiKam  1 photo tagged Brevant Duplicates  " + database + "\n"));

    Outcome undo = catalogCommand(tree, "undo " + id);

    EXPECT_EQ(undo.status, 0) << undo.err;
    EXPECT_EQ(sqlite3(tree, database, tags), "");
    EXPECT_EQ(sqlite3(tree, database, duplicatesTag), "0\n");
}

TEST(DigikamCatalogCommand, AnUntestedVersionIsRefusedByteIdentical) {
    TempTree tree;
    std::string a = tree.file("Pictures/a.jpg", testing::photoOfSize(24, 20'000));
    tree.file("Pictures/b.jpg", testing::readFile(a));
    std::string database = tree.path("Pictures/digikam4.db");
    {
        testing::DigikamFixture fixture(database, "99");
        auto album =
            fixture.addAlbum(fixture.addPathRoot(percentEncoded(tree.path("Pictures"))), "/");
        fixture.addImage(album, "a.jpg");
        fixture.addImage(album, "b.jpg");
        fixture.close();
    }
    std::string digest = testing::fileDigest(database);

    Outcome refused = catalogCommand(tree, "mark --yes '" + database + "'");

    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.err, HasSubstr("(99)"));
    EXPECT_EQ(testing::fileDigest(database), digest);
    EXPECT_THAT(namesIn(tree.path("Pictures/Brevant Backups")), ::testing::IsEmpty());
}

} // namespace
} // namespace brevant::cli
