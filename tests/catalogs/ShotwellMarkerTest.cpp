#include "engine/catalogs/ShotwellMarker.hpp"

#include "tests/catalogs/MarkFixtures.hpp"
#include "tests/catalogs/ShotwellFixture.hpp"
#include "tests/fixtures/TempTree.hpp"
#include "tests/scan/ScanFixtures.hpp"

#include "engine/catalogs/CatalogBackup.hpp"
#include "engine/catalogs/ShotwellScanner.hpp"
#include "engine/catalogs/ShotwellTagList.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fmt/format.h>
#include <map>

// Marking copies in a Shotwell library: the tag "Brevant Duplicates" in its
// TagTable, and undo taking back exactly what the marking added.
namespace brevant {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::namesIn;
using testing::SQLiteFile;

// 1 May 2024 09:30:15 UTC.
const Date kNow = Date::fromUnixSeconds(1714555815.0);
constexpr auto kShotwell = CatalogSource::Application::shotwell;

// Three copies of one photo and two of another in a Shotwell library, with
// a video beside them.
struct ShotwellFamily {
    testing::TempTree tree;
    std::string a = tree.file("Photos/a.jpg", testing::photoOfSize(1, 20'000));
    std::string b = tree.file("Photos/b.jpg", testing::readFile(a));
    std::string c = tree.file("Photos/c.jpg", testing::readFile(a));
    std::string d = tree.file("Photos/d.jpg", testing::photoOfSize(2, 20'000));
    std::string e = tree.file("Photos/e.jpg", testing::readFile(d));
    std::string library = tree.path("shotwell/data/photo.db");
    std::string records = tree.path("Data/Markings");
    std::map<std::string, std::int64_t> ids;
    // Left open, idle, for the changes the user makes in Shotwell.
    testing::ShotwellLibraryFixture fixture{library};

    explicit ShotwellFamily(int schemaVersion = 20) {
        fixture.setVersion(schemaVersion);
        // A video that shares the first photo's id: videos are never tagged.
        fixture.addVideo(tree.file("Photos/clip.mp4", "video"));
        for (const auto& path : {a, b, c, d, e}) {
            ids[path] = fixture.addPhoto(path);
        }
    }

    [[nodiscard]] ShotwellMarker marker(bool open = false) const {
        ShotwellMarker marker;
        marker.recordDirectory = records;
        marker.isOpen = [open](const std::string&) { return open; };
        return marker;
    }

    [[nodiscard]] std::pair<CleanupPlan, CleanupApproval>
    plan(const std::set<std::string>& marks) const {
        auto read = ShotwellCatalog::read(library);
        EXPECT_TRUE(read.has_value());
        CancellationFlag cancel;
        return testing::approvedPlan(ShotwellScanner::scan(*read, false, cancel, nullptr), marks);
    }

    [[nodiscard]] std::string sourceID(const std::string& path) const {
        return ShotwellTagList::sourceID(ids.at(path));
    }

    [[nodiscard]] std::string duplicates() const {
        return fixture.tagList(std::string(kDuplicatesTag));
    }

    [[nodiscard]] std::vector<std::string> backups() const {
        return namesIn(tree.path("shotwell/data/Brevant Backups"));
    }
};

TEST(ShotwellMarker, MakesTheTagAtTheTopAndUndoTakesItAwayAgain) {
    ShotwellFamily family;
    auto [plan, approval] = family.plan({family.b, family.c, family.e});

    auto report = family.marker().mark(plan, approval, family.library, kNow);

    ASSERT_TRUE(report.has_value()) << report.error().text();
    EXPECT_THAT(report->marked, ElementsAre(family.b, family.c, family.e));
    EXPECT_THAT(report->skipped, IsEmpty());
    EXPECT_EQ(family.duplicates(), family.sourceID(family.b) + "," + family.sourceID(family.c) +
                                       "," + family.sourceID(family.e) + ",");
    EXPECT_EQ(family.fixture.database().value(
                  "SELECT time_created FROM TagTable WHERE name = 'Brevant Duplicates'"),
              "1714555815");
    ASSERT_TRUE(report->record.has_value());
    const TagMarkRecord& record = *report->record;
    auto tagID = std::stoll(family.fixture.database().value(
        "SELECT id FROM TagTable WHERE name = 'Brevant Duplicates'"));
    EXPECT_THAT(
        record.marked,
        ElementsAre(
            TagMarkItem{family.ids[family.b], family.b, {family.ids[family.b]}, tagID, true},
            TagMarkItem{family.ids[family.c], family.c, {family.ids[family.c]}, tagID, true},
            TagMarkItem{family.ids[family.e], family.e, {family.ids[family.e]}, tagID, true}));
    auto backups = family.backups();
    ASSERT_EQ(backups.size(), 1u);
    EXPECT_EQ(backups[0], "photo " + CatalogBackup::dateText(kNow) + ".db");
    EXPECT_EQ(record.backupPath, family.tree.path("shotwell/data/Brevant Backups/") + backups[0]);
    // The backup is the library from before.
    SQLiteFile copy(record.backupPath);
    EXPECT_EQ(copy.value("SELECT COUNT(*) FROM TagTable"), "0");
    EXPECT_EQ(copy.value("SELECT COUNT(*) FROM PhotoTable"), "5");

    auto restored = family.marker().restore(record);

    ASSERT_TRUE(restored.has_value()) << restored.error().text();
    EXPECT_TRUE(restored->restored);
    EXPECT_EQ(family.fixture.tagCount(std::string(kDuplicatesTag)), "0");
    EXPECT_EQ(family.marker().history().at(0), *restored);
}

TEST(ShotwellMarker, UndoLeavesAPhotoTheUserTaggedSinceAndTheTag) {
    ShotwellFamily family;
    auto [plan, approval] = family.plan({family.b, family.e});
    auto report = family.marker().mark(plan, approval, family.library, kNow);
    ASSERT_TRUE(report.has_value() && report->record.has_value());
    // In Shotwell the user tags one more photo.
    family.fixture.setTagList(std::string(kDuplicatesTag),
                              family.duplicates() + family.sourceID(family.a) + ",");

    auto restored = family.marker().restore(*report->record);

    ASSERT_TRUE(restored.has_value()) << restored.error().text();
    EXPECT_EQ(family.duplicates(), family.sourceID(family.a) + ",");
}

TEST(ShotwellMarker, ATagThatExistedIsReusedAndKeptByUndo) {
    ShotwellFamily family;
    std::string before = "video-0000000000000001,7," + family.sourceID(family.a) + ",";
    family.fixture.addTag(std::string(kDuplicatesTag), before);
    family.fixture.addTag("Holidays", family.sourceID(family.b) + ",");
    auto [plan, approval] = family.plan({family.c, family.e});

    auto report = family.marker().mark(plan, approval, family.library, kNow);

    ASSERT_TRUE(report.has_value() && report->record.has_value()) << report.error().text();
    EXPECT_EQ(family.duplicates(),
              before + family.sourceID(family.c) + "," + family.sourceID(family.e) + ",");
    EXPECT_FALSE(report->record->marked.at(0).tagCreated);
    EXPECT_FALSE(report->record->marked.at(1).tagCreated);

    auto restored = family.marker().restore(*report->record);

    ASSERT_TRUE(restored.has_value()) << restored.error().text();
    EXPECT_EQ(family.duplicates(), before);
    EXPECT_EQ(family.fixture.tagList("Holidays"), family.sourceID(family.b) + ",");
}

TEST(ShotwellMarker, SkipsAPhotoTrashedOrTaggedSinceTheScan) {
    ShotwellFamily family;
    auto [plan, approval] = family.plan({family.b, family.c});
    family.fixture.database().exec(
        fmt::format("UPDATE PhotoTable SET flags = 4 WHERE id = {}", family.ids[family.b]));
    family.fixture.addTag(std::string(kDuplicatesTag), family.sourceID(family.c) + ",");

    auto report = family.marker().mark(plan, approval, family.library, kNow);

    ASSERT_TRUE(report.has_value()) << report.error().text();
    EXPECT_THAT(report->marked, IsEmpty());
    ASSERT_EQ(report->skipped.size(), 2u);
    EXPECT_EQ(report->skipped[0].reason, ShotwellMarker::kInTrash);
    EXPECT_EQ(report->skipped[1].reason, ShotwellMarker::kAlreadyTagged);
    EXPECT_THAT(family.backups(), IsEmpty());
}

struct ShotwellRefusalCase {
    const char* name;
    int schemaVersion = 20;
    bool open = false;
    CatalogRefusal expected;
    std::string text;
};

class ShotwellMarkRefusal : public ::testing::TestWithParam<ShotwellRefusalCase> {};

TEST_P(ShotwellMarkRefusal, LeavesTheLibraryByteIdenticalWithNoBackup) {
    ShotwellFamily family;
    auto [plan, approval] = family.plan({family.b});
    family.fixture.setVersion(GetParam().schemaVersion);
    std::string digest = testing::fileDigest(family.library);

    auto report = family.marker(GetParam().open).mark(plan, approval, family.library, kNow);

    ASSERT_FALSE(report.has_value());
    EXPECT_EQ(report.error(), GetParam().expected);
    EXPECT_EQ(report.error().text(), GetParam().text);
    EXPECT_EQ(testing::fileDigest(family.library), digest);
    EXPECT_THAT(family.backups(), IsEmpty());
    EXPECT_THAT(namesIn(family.records), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ShotwellMarkRefusal,
    ::testing::Values(
        ShotwellRefusalCase{.name = "unknownVersion",
                            .schemaVersion = 25,
                            .expected = CatalogRefusal::untestedVersion(kShotwell, "25"),
                            .text = "This catalog is from a Shotwell version Brevant has not been "
                                    "tested with (25), so it was not changed."},
        ShotwellRefusalCase{.name = "shotwellRunning",
                            .open = true,
                            .expected = CatalogRefusal::applicationOpen(kShotwell),
                            .text = "Quit Shotwell first. Its library is only changed while "
                                    "Shotwell is closed."}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(ShotwellMarker, TheCurrentSchemaIsMarkedToo) {
    ShotwellFamily family(24);
    auto [plan, approval] = family.plan({family.b});

    auto report = family.marker().mark(plan, approval, family.library, kNow);

    ASSERT_TRUE(report.has_value()) << report.error().text();
    EXPECT_EQ(family.duplicates(), family.sourceID(family.b) + ",");
}

} // namespace
} // namespace brevant
