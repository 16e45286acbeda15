#include "tests/app/ProgramRun.hpp"
#include "tests/catalogs/DarktableFixture.hpp"
#include "tests/catalogs/MarkFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"
#include "tests/scan/ScanFixtures.hpp"

#include "engine/catalogs/DarktableMarker.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fmt/format.h>

// `brevant catalog` on a darktable library, end to end, with sqlite3 reading
// what the program changed.
namespace brevant::cli {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::namesIn;
using ::testing::SizeIs;
using testing::TempTree;

Outcome catalogCommand(const TempTree& tree, const std::string& arguments) {
    return runCaptured(tree, fmt::format("BREVANT_DATA_DIR='{}' XDG_DATA_HOME='{}' '{}' catalog {}",
                                         tree.path("data"), tree.path("share"), BREVANT_BINARY,
                                         arguments));
}

// One value as the sqlite3 program prints it.
std::string sqlite3Value(const TempTree& tree, const std::string& database,
                         const std::string& sql) {
    Outcome run = runCaptured(tree, fmt::format("sqlite3 '{}' \"{}\"", database, sql));
    EXPECT_EQ(run.status, 0) << run.err;
    return run.out;
}

struct DarktableFamily {
    TempTree tree;
    std::string a = tree.file("Photos/a.jpg", testing::photoOfSize(41, 20'000));
    std::string b = tree.file("Photos/b.jpg", testing::readFile(a));
    testing::DarktableLibraryFixture fixture{tree.path("darktable")};
    std::int64_t roll = fixture.addFilmRoll(tree.path("Photos"));
    std::int64_t idA = fixture.addImage(roll, "a.jpg", {.flags = 4});
    std::int64_t idB = fixture.addImage(roll, "b.jpg");
    std::int64_t idB1 = fixture.addImage(roll, "b.jpg", {.version = 1});

    [[nodiscard]] std::string library() const { return "'" + fixture.libraryPath() + "'"; }

    [[nodiscard]] std::string tagged() const {
        return sqlite3Value(
            tree, fixture.libraryPath(),
            fmt::format("ATTACH '{}' AS data; SELECT group_concat(imgid, ' ') FROM (SELECT imgid "
                        "FROM tagged_images JOIN data.tags t ON t.id = tagid WHERE t.name = "
                        "'Brevant Duplicates' ORDER BY imgid);",
                        fixture.dataPath()));
    }

    [[nodiscard]] std::string tags() const {
        return sqlite3Value(tree, fixture.dataPath(),
                            "SELECT group_concat(name, ',') FROM (SELECT name FROM tags ORDER BY "
                            "id);");
    }
};

TEST(DarktableCommand, ScansTagsEveryVersionAndUndoesThroughTheCommand) {
    DarktableFamily family;

    Outcome scan = catalogCommand(family.tree, "scan " + family.library());

    EXPECT_EQ(scan.status, 0) << scan.err;
    EXPECT_THAT(scan.out, HasSubstr(fmt::format("  {}   [4 stars]\n", family.a)));
    EXPECT_THAT(scan.out, HasSubstr(fmt::format("  {}   [2 versions]\n", family.b)));
    EXPECT_THAT(scan.out, HasSubstr("2 photos in the catalog, 2 examined, 1 identical group\n"));

    Outcome mark = catalogCommand(family.tree, "mark --yes " + family.library());

    EXPECT_EQ(mark.status, 0) << mark.err;
    EXPECT_THAT(mark.out, HasSubstr("Tagged 1 photo Brevant Duplicates in darktable.\n"));
    EXPECT_THAT(mark.out, HasSubstr(std::string(DarktableMarker::kFinishNote)));
    EXPECT_EQ(family.tagged(), fmt::format("{} {}\n", family.idB, family.idB1));
    EXPECT_EQ(family.tags(), "darktable|format|jpg,Brevant Duplicates\n");
    auto backups = namesIn(family.tree.path("darktable/Brevant Backups"));
    ASSERT_THAT(backups, SizeIs(1));
    EXPECT_THAT(namesIn(family.tree.path("darktable/Brevant Backups/" + backups[0])),
                ::testing::ElementsAre("data.db", "library.db"));
    auto records = namesIn(family.tree.path("data/Markings/darktable"));
    ASSERT_THAT(records, SizeIs(1));
    std::string id = records[0].substr(0, records[0].size() - 5);

    Outcome history = catalogCommand(family.tree, "history");

    EXPECT_EQ(history.status, 0) << history.err;
    EXPECT_THAT(history.out, HasSubstr("  darktable  1 photo tagged Brevant Duplicates  "));

    Outcome undo = catalogCommand(family.tree, "undo " + id);

    EXPECT_EQ(undo.status, 0) << undo.err;
    EXPECT_EQ(family.tagged(), "\n");
    EXPECT_EQ(family.tags(), "darktable|format|jpg\n");
}

TEST(DarktableCommand, CommandRefusesAnUnknownVersionLeavingBothFilesAsTheyWere) {
    DarktableFamily family;
    family.fixture.setVersions("99", "9");
    std::string library = testing::fileDigest(family.fixture.libraryPath());
    std::string data = testing::fileDigest(family.fixture.dataPath());

    Outcome refused = catalogCommand(family.tree, "mark --yes " + family.library());

    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.err, HasSubstr("has not been tested with (library 99, data 9)"));
    EXPECT_EQ(testing::fileDigest(family.fixture.libraryPath()), library);
    EXPECT_EQ(testing::fileDigest(family.fixture.dataPath()), data);
    EXPECT_THAT(namesIn(family.tree.path("darktable/Brevant Backups")), IsEmpty());
}

} // namespace
} // namespace brevant::cli
