#include "engine/catalogs/LightroomRejecter.hpp"

#include "tests/catalogs/MarkFixtures.hpp"
#include "tests/fixtures/CatalogFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"
#include "tests/scan/ScanFixtures.hpp"

#include "engine/catalogs/CatalogBackup.hpp"
#include "engine/catalogs/LightroomScanner.hpp"
#include "engine/support/IsoDate.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fmt/format.h>
#include <map>

namespace brevant {
namespace {

using testing::approvedPlan;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::LightroomCatalogFixture;
using testing::namesIn;
using testing::SQLiteFile;
using testing::TempTree;

// 1 May 2024 09:30:15 UTC.
const Date kNow = Date::fromUnixSeconds(1714555815.0);

// Three copies of one photo and two of another in a catalog beside them.
struct Family {
    TempTree tree;
    std::string a = tree.file("Photos/a.jpg", testing::photoOfSize(1, 20'000));
    std::string b = tree.file("Photos/b.jpg", testing::readFile(a));
    std::string c = tree.file("Photos/c.jpg", testing::readFile(a));
    std::string d = tree.file("Photos/d.jpg", testing::photoOfSize(2, 20'000));
    std::string e = tree.file("Photos/e.jpg", testing::readFile(d));
    std::string catalog = tree.path("Lightroom/Family.lrcat");
    std::string records = tree.path("Data/Markings");
    std::map<std::string, std::int64_t> ids;
    // Left open, idle, for the changes the user makes in Lightroom.
    LightroomCatalogFixture fixture{catalog};

    explicit Family(const std::optional<std::string>& version = "1504001") {
        fixture.setVersion(version);
        for (const auto& [path, pick] :
             {std::pair{a, 0.0}, {b, 1.0}, {c, 0.0}, {d, 0.0}, {e, 1.0}}) {
            ids[path] = fixture.addPhotoAt(path, {.pick = pick});
        }
    }

    Family(const Family&) = delete;
    Family& operator=(const Family&) = delete;
    Family(Family&&) = delete;
    Family& operator=(Family&&) = delete;
    ~Family() = default;

    [[nodiscard]] LightroomRejecter rejecter(bool open = false) const {
        return {records, [open](const std::string&) { return open; }};
    }

    [[nodiscard]] std::pair<CleanupPlan, CleanupApproval>
    plan(const std::set<std::string>& marks) const {
        auto read = LightroomCatalog::read(catalog);
        EXPECT_TRUE(read.has_value());
        CancellationFlag cancel;
        return approvedPlan(LightroomScanner::scan(*read, false, cancel, nullptr), marks);
    }

    [[nodiscard]] double pick(const std::string& path) {
        return std::stod(fixture.database().value(
            fmt::format("SELECT pick FROM Adobe_images WHERE id_local = {}", ids.at(path))));
    }

    void setPick(const std::string& path, double pick) {
        fixture.database().exec(fmt::format("UPDATE Adobe_images SET pick = {:.1f} WHERE "
                                            "id_local = {}",
                                            pick, ids.at(path)));
    }

    [[nodiscard]] std::vector<double> picks() {
        std::vector<double> all;
        for (const auto& path : {a, b, c, d, e}) {
            all.push_back(pick(path));
        }
        return all;
    }

    [[nodiscard]] std::vector<std::string> backups() const {
        return namesIn(tree.path("Lightroom/Brevant Backups"));
    }
};

TEST(LightroomRejecter, MarksTheCopiesRejectedAndUndoGivesEveryFlagBack) {
    Family family;
    auto [plan, approval] = family.plan({family.b, family.c, family.e});
    auto before = family.picks();
    ASSERT_THAT(before, ElementsAre(0, 1, 0, 0, 1));

    auto report = family.rejecter().mark(plan, approval, family.catalog, kNow);

    ASSERT_TRUE(report.has_value()) << report.error().text();
    EXPECT_THAT(report->marked, ElementsAre(family.b, family.c, family.e));
    EXPECT_THAT(report->skipped, IsEmpty());
    EXPECT_EQ(report->bytesFreed, 0);
    EXPECT_THAT(family.picks(), ElementsAre(0, -1, -1, 0, -1));
    ASSERT_TRUE(report->record.has_value());
    const LightroomMarkRecord& record = *report->record;
    EXPECT_EQ(record.planID, plan.id);
    EXPECT_EQ(record.catalogPath, family.catalog);
    EXPECT_EQ(record.date, kNow);
    EXPECT_FALSE(record.restored);
    EXPECT_THAT(record.marked,
                ElementsAre(LightroomMarkRecord::Item{family.ids[family.b], family.b, 1},
                            LightroomMarkRecord::Item{family.ids[family.c], family.c, 0},
                            LightroomMarkRecord::Item{family.ids[family.e], family.e, 1}));
    auto backups = family.backups();
    ASSERT_EQ(backups.size(), 1u);
    EXPECT_EQ(record.backupPath, family.tree.path("Lightroom/Brevant Backups/") + backups[0]);
    EXPECT_EQ(backups[0], "Family " + CatalogBackup::dateText(kNow) + ".lrcat");
    // The backup holds the flags from before.
    SQLiteFile copy(record.backupPath);
    EXPECT_EQ(copy.value("SELECT COUNT(*) FROM Adobe_images WHERE pick < 0"), "0");

    std::string saved = testing::readFile(family.records + "/" + record.id.text() + ".json");
    EXPECT_EQ(saved, record.encoded() + "\n");
    EXPECT_THAT(saved, HasSubstr("\"date\": \"2024-05-01T09:30:15Z\""));
    EXPECT_LT(saved.find("\"backupPath\""), saved.find("\"catalogPath\""));
    EXPECT_LT(saved.find("\"imageID\""), saved.find("\"path\""));

    auto restored = family.rejecter().restore(record);

    ASSERT_TRUE(restored.has_value()) << restored.error().text();
    EXPECT_TRUE(restored->restored);
    EXPECT_EQ(family.picks(), before);
    auto history = family.rejecter().history();
    ASSERT_EQ(history.size(), 1u);
    EXPECT_EQ(history[0], *restored);
    EXPECT_EQ(family.backups().size(), 1u);
}

TEST(LightroomRejecter, UndoLeavesAFlagTheUserChangedSinceAlone) {
    Family family;
    auto [plan, approval] = family.plan({family.b, family.e});
    auto report = family.rejecter().mark(plan, approval, family.catalog, kNow);
    ASSERT_TRUE(report.has_value() && report->record.has_value());
    family.setPick(family.e, 0);

    auto restored = family.rejecter().restore(*report->record);

    ASSERT_TRUE(restored.has_value()) << restored.error().text();
    EXPECT_EQ(family.pick(family.b), 1);
    EXPECT_EQ(family.pick(family.e), 0);
}

TEST(LightroomRejecter, SkipsWhatChangedSinceTheScanAndRecordsOnlyWhatItMarked) {
    Family family;
    auto [plan, approval] = family.plan({family.b, family.c, family.e});
    // Rejected in Lightroom after the scan, edited on disk, and the kept
    // copy of the other group gone.
    family.setPick(family.b, -1);
    testing::rewriteKeepingSize(family.c);
    std::filesystem::remove(family.d);

    auto report = family.rejecter().mark(plan, approval, family.catalog, kNow);

    ASSERT_TRUE(report.has_value()) << report.error().text();
    EXPECT_THAT(report->skipped,
                ElementsAre(SkippedMark{"b.jpg", "Already Rejected in Lightroom."},
                            SkippedMark{"c.jpg", "Changed or moved since the scan."},
                            SkippedMark{"e.jpg", "No copy its group keeps is still there "
                                                 "unchanged."}));
    // Nothing left to mark: no backup, no record, the catalog untouched.
    EXPECT_FALSE(report->record.has_value());
    EXPECT_THAT(report->marked, IsEmpty());
    EXPECT_THAT(family.backups(), IsEmpty());
    EXPECT_THAT(namesIn(family.records), IsEmpty());
}

TEST(LightroomRejecter, APhotoRejectedAfterTheScanStaysRejectedAfterUndo) {
    Family family;
    auto [plan, approval] = family.plan({family.b, family.c});
    family.setPick(family.b, -1);

    auto report = family.rejecter().mark(plan, approval, family.catalog, kNow);

    ASSERT_TRUE(report.has_value() && report->record.has_value());
    EXPECT_THAT(report->skipped,
                ElementsAre(SkippedMark{"b.jpg", "Already Rejected in Lightroom."}));
    ASSERT_EQ(report->record->marked.size(), 1u);
    EXPECT_EQ(report->record->marked[0].path, family.c);
    ASSERT_TRUE(family.rejecter().restore(*report->record).has_value());
    EXPECT_EQ(family.pick(family.b), -1);
    EXPECT_EQ(family.pick(family.c), 0);
}

TEST(LightroomRejecter, SkipsAPhotoThatGotAVirtualCopyOrLeftTheCatalog) {
    Family family;
    auto [plan, approval] = family.plan({family.b, family.e});
    family.fixture.addVirtualCopy(family.ids[family.b]);
    family.fixture.database().exec(
        fmt::format("DELETE FROM Adobe_images WHERE id_local = {}", family.ids[family.e]));

    auto report = family.rejecter().mark(plan, approval, family.catalog, kNow);

    ASSERT_TRUE(report.has_value()) << report.error().text();
    EXPECT_THAT(report->skipped,
                ElementsAre(SkippedMark{"b.jpg", "It has a virtual copy now, so it is kept."},
                            SkippedMark{"e.jpg", "No longer in the catalog at that place."}));
}

struct RefusalCase {
    const char* name;
    std::optional<std::string> version = "1504001";
    bool open = false;
    bool otherApproval = false;
    bool folderPhoto = false;
    LightroomRefusal expected;
    std::string text;
};

class LightroomRejecterRefusal : public ::testing::TestWithParam<RefusalCase> {};

TEST_P(LightroomRejecterRefusal, LeavesTheCatalogByteIdenticalWithNoBackup) {
    const RefusalCase& refusal = GetParam();
    Family family(refusal.version);
    auto [plan, approval] = family.plan({family.b});
    if (refusal.otherApproval) {
        approval.planID = Uuid::make();
    }
    if (refusal.folderPhoto) {
        PlannedRemoval folder = plan.removals[0];
        folder.path = family.tree.file("Elsewhere/b.jpg", testing::readFile(family.b));
        folder.lightroomImageID.reset();
        plan.removals.push_back(folder);
    }
    std::string digest = testing::fileDigest(family.catalog);

    auto report = family.rejecter(refusal.open).mark(plan, approval, family.catalog, kNow);

    ASSERT_FALSE(report.has_value());
    EXPECT_EQ(report.error(), refusal.expected);
    EXPECT_EQ(report.error().text(), refusal.text);
    EXPECT_EQ(testing::fileDigest(family.catalog), digest);
    EXPECT_THAT(family.backups(), IsEmpty());
    EXPECT_THAT(namesIn(family.records), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Cases, LightroomRejecterRefusal,
    ::testing::Values(
        RefusalCase{.name = "otherApproval",
                    .otherApproval = true,
                    .expected = LightroomRefusal::approvalDoesNotMatch(),
                    .text = "This approval is for a different set of photos. Review them again."},
        RefusalCase{.name = "folderPhoto",
                    .folderPhoto = true,
                    .expected = LightroomRefusal::notLightroomPhotos(),
                    .text = "Only photos from a Lightroom Classic catalog can be marked Rejected."},
        RefusalCase{.name = "lightroomOpen",
                    .open = true,
                    .expected = LightroomRefusal::lightroomOpen(),
                    .text = "Quit Lightroom Classic first. Its catalog is only changed while "
                            "Lightroom is closed."},
        RefusalCase{.name = "newerVersion",
                    .version = "1504002",
                    .expected = LightroomRefusal::untestedVersion("1504002"),
                    .text = "This catalog is from a Lightroom Classic version Brevant has not "
                            "been tested with (1504002), so it was not changed."},
        RefusalCase{.name = "noVersion",
                    .version = std::nullopt,
                    .expected = LightroomRefusal::untestedVersion("unknown"),
                    .text = "This catalog is from a Lightroom Classic version Brevant has not "
                            "been tested with (unknown), so it was not changed."}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(LightroomRejecter, AFailedUpdateRollsEverythingBackAndKeepsTheBackup) {
    Family family;
    auto [plan, approval] = family.plan({family.b, family.c});
    family.fixture.database().exec(
        fmt::format("CREATE TRIGGER refuse BEFORE UPDATE ON Adobe_images WHEN NEW.id_local = {} "
                    "BEGIN SELECT RAISE(ABORT, 'disk full'); END",
                    family.ids[family.c]));
    auto before = family.picks();

    auto report = family.rejecter().mark(plan, approval, family.catalog, kNow);

    ASSERT_FALSE(report.has_value());
    EXPECT_EQ(report.error().text(), "The catalog was not changed: disk full");
    EXPECT_EQ(family.picks(), before);
    EXPECT_EQ(family.backups().size(), 1u);
    EXPECT_THAT(namesIn(family.records), IsEmpty());
}

TEST(LightroomRejecter, ARecordThatCannotBeSavedIsReportedWithTheBackup) {
    Family family;
    auto [plan, approval] = family.plan({family.b});
    // A file where the record folder should be.
    family.tree.file("Data/Markings", "in the way");

    auto report = family.rejecter().mark(plan, approval, family.catalog, kNow);

    ASSERT_FALSE(report.has_value());
    EXPECT_EQ(report.error().kind, LightroomRefusal::Kind::recordNotSaved);
    EXPECT_THAT(report.error().text(),
                ::testing::StartsWith("The catalog was changed, but its record could not be "
                                      "saved: the record folder could not be created"));
    ASSERT_EQ(family.backups().size(), 1u);
    EXPECT_THAT(report.error().text(), HasSubstr(family.backups()[0]));
    EXPECT_EQ(family.pick(family.b), -1);
}

TEST(LightroomRejecter, HistoryIsNewestFirstAndPassesOverOtherFiles) {
    Family family;
    auto [first, firstApproval] = family.plan({family.b});
    auto [second, secondApproval] = family.plan({family.e});
    auto earlier = family.rejecter().mark(first, firstApproval, family.catalog, kNow);
    auto later = family.rejecter().mark(second, secondApproval, family.catalog,
                                        Date::fromUnixSeconds(kNow.unixSeconds() + 60));
    ASSERT_TRUE(earlier && earlier->record && later && later->record);
    family.tree.file("Data/Markings/notes.json", "{\"id\": 1}");
    family.tree.file("Data/Markings/readme.txt", "not a record");

    auto history = family.rejecter().history();

    ASSERT_EQ(history.size(), 2u);
    EXPECT_EQ(history[0], *later->record);
    EXPECT_EQ(history[1], *earlier->record);
    EXPECT_EQ(LightroomMarkRecord::decode(history[0].encoded()), history[0]);
}

TEST(RealCatalogs, MarkingLightroomClassicFifteenIsRefusedAsUntested) {
    auto path =
        testing::sampleFile("pixelpast/catalog/lightroom-classic-catalog-test-fixture.lrcat");
    if (!path) {
        GTEST_SKIP() << "shared test data not present";
    }
    std::string digest = testing::fileDigest(*path);
    auto catalog = LightroomCatalog::read(*path);
    ASSERT_TRUE(catalog.has_value() && catalog->photos.size() == 3u);
    CleanupPlan plan{.id = Uuid::make()};
    for (const auto& photo : catalog->photos) {
        auto snapshot = FileSnapshot::read(photo.path);
        ASSERT_TRUE(snapshot.has_value());
        plan.removals.push_back(
            {.path = photo.path, .snapshot = *snapshot, .lightroomImageID = photo.ref.imageID});
    }
    TempTree tree;
    LightroomRejecter rejecter{tree.path("Markings"), [](const std::string&) { return false; }};

    auto report = rejecter.mark(plan, {plan.id, kNow}, *path, kNow);

    ASSERT_FALSE(report.has_value());
    EXPECT_EQ(report.error(), LightroomRefusal::untestedVersion("1500000"));
    EXPECT_EQ(testing::fileDigest(*path), digest);
    std::error_code error;
    EXPECT_FALSE(std::filesystem::exists(
        std::filesystem::path(*path).parent_path() / "Brevant Backups", error));
}

} // namespace
} // namespace brevant
