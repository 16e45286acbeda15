#include "app/cli/CatalogCommand.hpp"

#include "tests/app/ProgramRun.hpp"
#include "tests/catalogs/MarkFixtures.hpp"
#include "tests/fixtures/CatalogFixtures.hpp"
#include "tests/fixtures/ScopedEnvironment.hpp"
#include "tests/fixtures/TempTree.hpp"
#include "tests/scan/ScanFixtures.hpp"

#include "app/cli/ExitStatus.hpp"
#include "app/cli/Program.hpp"
#include "engine/catalogs/CaptureOneMarker.hpp"
#include "engine/catalogs/LightroomRejecter.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fmt/format.h>

namespace brevant::cli {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::namesIn;
using ::testing::SizeIs;
using ::testing::StartsWith;
using testing::TempTree;

// Runs `brevant catalog ...` with its data folder and data home in the tree.
Outcome catalogCommand(const TempTree& tree, const std::string& arguments) {
    return runCaptured(tree, fmt::format("BREVANT_DATA_DIR='{}' XDG_DATA_HOME='{}' '{}' catalog {}",
                                         tree.path("data"), tree.path("share"), BREVANT_BINARY,
                                         arguments));
}

std::string shellWord(const std::string& path) {
    return "'" + path + "'";
}

// Three copies of one photo in a Lightroom Classic catalog: one flagged as a
// pick, one with stars, one untouched.
struct LightroomFamily {
    TempTree tree;
    std::string a = tree.file("Photos/a.jpg", testing::photoOfSize(21, 20'000));
    std::string b = tree.file("Photos/b.jpg", testing::readFile(a));
    std::string c = tree.file("Photos/c.jpg", testing::readFile(a));
    std::string catalog = tree.path("Lightroom/Family.lrcat");
    testing::LightroomCatalogFixture fixture{catalog};

    explicit LightroomFamily(const std::string& version = "1504001") {
        fixture.setVersion(version);
        fixture.addPhotoAt(a, {.pick = 1});
        fixture.addPhotoAt(b, {.rating = 3});
        fixture.addPhotoAt(c);
    }

    [[nodiscard]] std::string picks() {
        return fixture.database().value(
            "SELECT group_concat(pick + 0.0, ' ') FROM Adobe_images ORDER BY id_local");
    }
};

TEST(CatalogCommand, ScansMarksListsAndUndoesALightroomCatalog) {
    LightroomFamily family;
    std::string before = family.picks();
    ASSERT_EQ(before, "1.0 0.0 0.0");

    Outcome scan = catalogCommand(family.tree, "scan " + shellWord(family.catalog));

    EXPECT_EQ(scan.status, 0) << scan.err;
    EXPECT_EQ(scan.out, fmt::format("identical: 3 photos\n"
                                    "  {0}/a.jpg   [flagged as a pick]\n"
                                    "  {0}/b.jpg   [3 stars]\n"
                                    "  {0}/c.jpg\n"
                                    "\n"
                                    "3 photos in the catalog, 3 examined, 1 identical group\n",
                                    family.tree.path("Photos")));

    Outcome unasked = catalogCommand(family.tree, "mark " + shellWord(family.catalog));
    EXPECT_EQ(unasked.status, 1);
    EXPECT_THAT(unasked.err, HasSubstr("nothing was marked: there is no terminal to ask on"));
    EXPECT_EQ(family.picks(), before);

    Outcome mark = catalogCommand(family.tree, "mark --yes " + shellWord(family.catalog));

    EXPECT_EQ(mark.status, 0) << mark.err;
    EXPECT_THAT(mark.out, HasSubstr("Marked 2 photos Rejected in Lightroom Classic.\n"));
    EXPECT_THAT(mark.out, HasSubstr(std::string(LightroomRejecter::kFreedNothing)));
    EXPECT_EQ(family.picks(), "1.0 -1.0 -1.0");
    EXPECT_THAT(namesIn(family.tree.path("Lightroom/Brevant Backups")), SizeIs(1));
    auto records = namesIn(family.tree.path("data/Markings/Lightroom Classic"));
    ASSERT_THAT(records, SizeIs(1));
    std::string id = records[0].substr(0, records[0].size() - 5);
    EXPECT_THAT(mark.out, HasSubstr("Undo with: brevant catalog undo " + id + "\n"));

    Outcome history = catalogCommand(family.tree, "history");

    EXPECT_EQ(history.status, 0) << history.err;
    EXPECT_THAT(history.out, StartsWith(id + "  "));
    EXPECT_THAT(history.out, HasSubstr("  Lightroom Classic  2 photos marked Rejected  " +
                                       family.catalog + "\n"));

    Outcome undo = catalogCommand(family.tree, "undo " + id);

    EXPECT_EQ(undo.status, 0) << undo.err;
    EXPECT_EQ(family.picks(), before);
    EXPECT_THAT(catalogCommand(family.tree, "history").out, HasSubstr("  (undone)\n"));
}

TEST(CatalogCommand, RefusedOrUnconfirmedMarkingLeavesTheCatalogByteIdentical) {
    LightroomFamily family("1504002");
    std::string digest = testing::fileDigest(family.catalog);

    Outcome refused = catalogCommand(family.tree, "mark --yes " + shellWord(family.catalog));
    Outcome unasked = catalogCommand(family.tree, "mark " + shellWord(family.catalog));
    Outcome dryRun = catalogCommand(family.tree, "mark --dry-run " + shellWord(family.catalog));

    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.err, HasSubstr("brevant: This catalog is from a Lightroom Classic version "
                                       "Brevant has not been tested with (1504002), so it was "
                                       "not changed.\n"));
    EXPECT_EQ(unasked.status, 1);
    EXPECT_THAT(unasked.err, HasSubstr("has not been tested with (1504002)"));
    EXPECT_EQ(dryRun.status, 0) << dryRun.err;
    EXPECT_THAT(dryRun.out, HasSubstr("  mark  " + family.c));
    EXPECT_EQ(testing::fileDigest(family.catalog), digest);
    EXPECT_THAT(namesIn(family.tree.path("Lightroom/Brevant Backups")), IsEmpty());
    EXPECT_THAT(namesIn(family.tree.path("data")), IsEmpty());
}

TEST(CatalogCommand, TagsACaptureOneCatalogRedAndUndoesIt) {
    TempTree tree;
    std::string a = tree.file("Photos/a.jpg", testing::photoOfSize(22, 20'000));
    std::string b = tree.file("Photos/b.jpg", testing::readFile(a));
    testing::CaptureOneCatalogFixture fixture(tree.path("Family.cocatalog"));
    fixture.addImageAt(a, {.rating = 4});
    fixture.addImageAt(b, {.lastModified = 700000000.5});
    auto state = [&fixture] {
        return fixture.database().value("SELECT group_concat(quote(ZCOLOR_TAG_INDEX), ' ') FROM "
                                        "ZVARIANTMETADATA") +
               " | " +
               fixture.database().value(
                   "SELECT group_concat(quote(ZLASTMETADATAMODIFICATIONDATE), ' ') FROM ZVARIANT");
    };
    std::string before = state();

    Outcome mark = catalogCommand(tree, "mark --yes " + shellWord(fixture.package()));

    EXPECT_EQ(mark.status, 0) << mark.err;
    EXPECT_THAT(mark.out, HasSubstr("Tagged 1 photo Red in Capture One.\n"));
    EXPECT_THAT(mark.out, HasSubstr(std::string(CaptureOneMarker::kFinishNote)));
    EXPECT_NE(state(), before);
    auto records = namesIn(tree.path("data/Markings/Capture One"));
    ASSERT_THAT(records, SizeIs(1));

    Outcome undo = catalogCommand(tree, "undo " + records[0].substr(0, records[0].size() - 5));

    EXPECT_EQ(undo.status, 0) << undo.err;
    EXPECT_EQ(state(), before);
}

// The photos behind the counts are named, each under its count as a group
// lists its members, with the home folder written as "~".
TEST(CatalogCommand, ScanNamesThePhotosItCounts) {
    LightroomFamily family;
    std::string gone = family.tree.path("Photos/Old/gone.jpg");
    family.fixture.addPhotoAt(gone);
    std::string rejected = family.tree.file("Photos/r.jpg", testing::photoOfSize(23, 20'000));
    family.fixture.addPhotoAt(rejected, {.pick = -1});
    family.fixture.close();
    testing::ScopedEnvironment data("BREVANT_DATA_DIR", family.tree.path("data"));
    MemoryStream out;
    MemoryStream err;
    CancellationFlag cancel;
    Environment environment{
        .out = out.get(), .err = err.get(), .cancel = &cancel, .home = family.tree.root()};

    int status = runCommand({"brevant", "catalog", "scan", family.catalog}, environment);

    EXPECT_EQ(status, 0) << err.text();
    EXPECT_EQ(out.text(), "identical: 3 photos\n"
                          "  ~/Photos/a.jpg   [flagged as a pick]\n"
                          "  ~/Photos/b.jpg   [3 stars]\n"
                          "  ~/Photos/c.jpg\n"
                          "\n"
                          "5 photos in the catalog, 3 examined, 1 identical group\n"
                          "Not where the catalog says: 1\n"
                          "  ~/Photos/Old/gone.jpg\n"
                          "Already Rejected in Lightroom Classic: 1\n"
                          "  ~/Photos/r.jpg\n");
}

// A catalog scan lists what the window's review of the catalog holds: the
// identical copies stay a group beside the series (none here: the photos
// carry no capture date) and are found among the similar versions.
TEST(CatalogCommand, ScansListTheGroupsAReviewHolds) {
    LightroomFamily family;

    Outcome series = catalogCommand(family.tree, "scan --series " + shellWord(family.catalog));
    Outcome similar =
        catalogCommand(family.tree, "scan --similar balanced " + shellWord(family.catalog));

    EXPECT_EQ(series.status, 0) << series.err;
    EXPECT_EQ(series.out, fmt::format("identical: 3 photos\n"
                                      "  {0}/a.jpg   [flagged as a pick]\n"
                                      "  {0}/b.jpg   [3 stars]\n"
                                      "  {0}/c.jpg\n"
                                      "\n"
                                      "3 photos in the catalog, 3 examined, 0 series, "
                                      "1 identical group\n",
                                      family.tree.path("Photos")));
    EXPECT_EQ(similar.status, 0) << similar.err;
    EXPECT_THAT(similar.out, StartsWith("similar: 3 photos\n"));
    EXPECT_THAT(similar.out, HasSubstr(", 1 similar group at Balanced\n"));
}

TEST(CatalogCommand, WrongArgumentsEndWithStatusTwo) {
    TempTree tree;

    Outcome noCatalog = catalogCommand(tree, "scan");
    Outcome both = catalogCommand(tree, "scan --similar broad --series x.lrcat");
    Outcome badPreset = catalogCommand(tree, "scan --similar wide x.lrcat");
    Outcome noRecord = catalogCommand(tree, "undo 7D2F8E4A-0000-4000-8000-000000000000");

    EXPECT_EQ(noCatalog.status, 2);
    EXPECT_THAT(noCatalog.err, StartsWith("brevant catalog scan: no catalog given\n"));
    EXPECT_EQ(both.status, 2);
    EXPECT_EQ(badPreset.status, 2);
    EXPECT_EQ(noRecord.status, 2);
    EXPECT_THAT(noRecord.err, HasSubstr("no marking has the id"));
    for (const auto& run : {noCatalog, both, badPreset, noRecord}) {
        EXPECT_EQ(run.out, "");
    }
}

TEST(CatalogCommand, SimilarScanOfTheRealClassicFifteenCatalogGroupsItsThreePhotos) {
    auto path =
        testing::sampleFile("pixelpast/catalog/lightroom-classic-catalog-test-fixture.lrcat");
    if (!path) {
        GTEST_SKIP() << "shared test data not present";
    }
    TempTree tree;
    std::string digest = testing::fileDigest(*path);

    Outcome scan = catalogCommand(tree, "scan --similar balanced " + shellWord(*path));

    EXPECT_EQ(scan.status, 0) << scan.err;
    EXPECT_THAT(scan.out, StartsWith("similar: 3 photos\n"));
    EXPECT_THAT(scan.out, HasSubstr("monalisa-1.jpg   [3 stars, labelled Rot"));
    EXPECT_THAT(scan.out, HasSubstr("1 similar group at Balanced\n"));
    Outcome mark = catalogCommand(tree, "mark --yes " + shellWord(*path));
    EXPECT_EQ(mark.status, ExitStatus::kFailed);
    EXPECT_THAT(mark.err, HasSubstr("1500000"));
    EXPECT_EQ(testing::fileDigest(*path), digest);
    EXPECT_FALSE(
        std::filesystem::exists(std::filesystem::path(*path).parent_path() / "Brevant Backups"));
}

} // namespace
} // namespace brevant::cli
