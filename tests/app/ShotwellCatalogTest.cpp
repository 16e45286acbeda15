#include "tests/app/ProgramRun.hpp"
#include "tests/catalogs/MarkFixtures.hpp"
#include "tests/catalogs/ShotwellFixture.hpp"
#include "tests/fixtures/TempTree.hpp"
#include "tests/scan/ScanFixtures.hpp"

#include "engine/catalogs/ShotwellMarker.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fmt/format.h>

// `brevant catalog` on a Shotwell library, with SQLite's own shell reading
// what changed.
namespace brevant::cli {
namespace {

using ::testing::HasSubstr;
using testing::namesIn;
using ::testing::SizeIs;
using testing::TempTree;

Outcome catalogCommand(const TempTree& tree, const std::string& arguments) {
    return runCaptured(tree, fmt::format("BREVANT_DATA_DIR='{}' '{}' catalog {}", tree.path("data"),
                                         BREVANT_BINARY, arguments));
}

std::string sqlite(const TempTree& tree, const std::string& database, const std::string& query) {
    Outcome read = runCaptured(tree, fmt::format("sqlite3 '{}' \"{}\"", database, query));
    EXPECT_EQ(read.status, 0) << read.err;
    return read.out;
}

TEST(ShotwellCatalogCommand, ScansTagsAndUndoesAShotwellLibrary) {
    TempTree tree;
    std::string a = tree.file("Photos/a.jpg", testing::photoOfSize(41, 20'000));
    std::string b = tree.file("Photos/b.jpg", testing::readFile(a));
    std::string library = tree.path("shotwell/data/photo.db");
    {
        testing::ShotwellLibraryFixture fixture(library, 24);
        fixture.addPhoto(a, {.rating = 3});
        fixture.addPhoto(b);
        fixture.addVideo(tree.file("Photos/clip.mp4", "video"));
        fixture.addTag("Family", "thumb0000000000000001,");
    }
    const std::string tags = "SELECT name || '=' || COALESCE(photo_id_list, '') FROM TagTable "
                             "ORDER BY id";

    Outcome scan = catalogCommand(tree, "scan '" + library + "'");

    EXPECT_EQ(scan.status, 0) << scan.err;
    EXPECT_EQ(scan.out, fmt::format("identical: 2 photos\n"
                                    "  {0}/a.jpg   [3 stars, has a tag]\n"
                                    "  {0}/b.jpg\n"
                                    "\n"
                                    "2 photos in the catalog, 2 examined, 1 identical group\n",
                                    tree.path("Photos")));

    Outcome mark = catalogCommand(tree, "mark --yes '" + library + "'");

    EXPECT_EQ(mark.status, 0) << mark.err;
    EXPECT_THAT(mark.out, HasSubstr("Tagged 1 photo Brevant Duplicates in Shotwell.\n"));
    EXPECT_THAT(mark.out, HasSubstr(std::string(ShotwellMarker::kFinishNote)));
    EXPECT_EQ(sqlite(tree, library, tags),
              "Family=thumb0000000000000001,\nBrevant Duplicates=thumb0000000000000002,\n");
    EXPECT_THAT(namesIn(tree.path("shotwell/data/Brevant Backups")), SizeIs(1));
    auto records = namesIn(tree.path("data/Markings/Shotwell"));
    ASSERT_THAT(records, SizeIs(1));
    std::string id = records[0].substr(0, records[0].size() - 5);

    Outcome history = catalogCommand(tree, "history");

    EXPECT_EQ(history.status, 0) << history.err;
    EXPECT_THAT(history.out,
                HasSubstr("  Shotwell  1 photo tagged Brevant Duplicates  " + library + "\n"));

    Outcome undo = catalogCommand(tree, "undo " + id);

    EXPECT_EQ(undo.status, 0) << undo.err;
    EXPECT_EQ(sqlite(tree, library, tags), "Family=thumb0000000000000001,\n");
}

TEST(ShotwellCatalogCommand, AnUnknownSchemaIsRefusedUntouched) {
    TempTree tree;
    std::string a = tree.file("Photos/a.jpg", testing::photoOfSize(42, 20'000));
    std::string b = tree.file("Photos/b.jpg", testing::readFile(a));
    std::string library = tree.path("shotwell/data/photo.db");
    {
        testing::ShotwellLibraryFixture fixture(library, 24);
        fixture.setVersion(30);
        fixture.addPhoto(a);
        fixture.addPhoto(b);
    }
    std::string digest = testing::fileDigest(library);

    Outcome mark = catalogCommand(tree, "mark --yes '" + library + "'");

    EXPECT_EQ(mark.status, 1);
    EXPECT_THAT(mark.err, HasSubstr("This catalog is from a Shotwell version Brevant has not been "
                                    "tested with (30), so it was not changed.\n"));
    EXPECT_EQ(testing::fileDigest(library), digest);
    EXPECT_THAT(namesIn(tree.path("shotwell/data/Brevant Backups")), SizeIs(0));
}

} // namespace
} // namespace brevant::cli
