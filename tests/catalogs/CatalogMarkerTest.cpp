#include "tests/catalogs/MarkFixtures.hpp"
#include "tests/fixtures/CatalogFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"
#include "tests/scan/ScanFixtures.hpp"

#include "engine/catalogs/CaptureOneMarker.hpp"
#include "engine/catalogs/CaptureOneScanner.hpp"
#include "engine/catalogs/CatalogBackup.hpp"
#include "engine/catalogs/LightroomRejecter.hpp"
#include "engine/catalogs/LightroomScanner.hpp"
#include "engine/support/PathNames.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fmt/format.h>
#include <map>
#include <variant>

// Marking copies in a catalog: Rejected in Lightroom Classic, tagged Red in
// Capture One. Each kind has a family of copies with the same calls, so the
// refusals the two share are one suite.
namespace brevant {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::namesIn;
using testing::SQLiteFile;
using testing::TempTree;

// 1 May 2024 09:30:15 UTC, and a quarter second later for the dates Capture
// One keeps in fractions.
const Date kNow = Date::fromUnixSeconds(1714555815.0);
const Date kNowAndAQuarter = Date::fromUnixSeconds(1714555815.25);
constexpr auto kLightroom = CatalogSource::Application::lightroom;
constexpr auto kCaptureOne = CatalogSource::Application::captureOne;

// Three copies of one photo and two of another in a Lightroom catalog
// beside them.
struct LightroomFamily {

    testing::TempTree tree;
    std::string a = tree.file("Photos/a.jpg", testing::photoOfSize(1, 20'000));
    std::string b = tree.file("Photos/b.jpg", testing::readFile(a));
    std::string c = tree.file("Photos/c.jpg", testing::readFile(a));
    std::string d = tree.file("Photos/d.jpg", testing::photoOfSize(2, 20'000));
    std::string e = tree.file("Photos/e.jpg", testing::readFile(d));
    std::string catalog = tree.path("Lightroom/Family.lrcat");
    std::string records = tree.path("Data/Markings");
    std::map<std::string, std::int64_t> ids;
    // Left open, idle, for the changes the user makes in Lightroom.
    testing::LightroomCatalogFixture fixture{catalog};

    explicit LightroomFamily(const std::optional<std::string>& version = "1504001") {
        fixture.setVersion(version);
        for (const auto& [path, pick] :
             {std::pair{a, 0.0}, {b, 1.0}, {c, 0.0}, {d, 0.0}, {e, 1.0}}) {
            ids[path] = fixture.addPhotoAt(path, {.pick = pick});
        }
    }

    [[nodiscard]] LightroomRejecter rejecter(bool open = false) const {
        return {records, [open](const std::string&) { return open; }};
    }

    [[nodiscard]] auto mark(const CleanupPlan& plan, const CleanupApproval& approval,
                            const Date& now, bool open = false) const {
        return rejecter(open).mark(plan, approval, catalog, now);
    }

    // The file whose bytes a refused marking must leave as they were.
    [[nodiscard]] const std::string& databasePath() const { return catalog; }

    void setVersion(const std::optional<std::string>& version) { fixture.setVersion(version); }

    // The same photo in a folder that is not the catalog's, added last.
    void addFolderPhoto(CleanupPlan& plan) const {
        PlannedRemoval folder = plan.removals[0];
        folder.path = tree.file("Elsewhere/b.jpg", testing::readFile(b));
        folder.catalog.reset();
        plan.removals.push_back(folder);
    }

    [[nodiscard]] std::pair<CleanupPlan, CleanupApproval>
    plan(const std::set<std::string>& marks) const {
        auto read = LightroomCatalog::read(catalog);
        EXPECT_TRUE(read.has_value());
        CancellationFlag cancel;
        return testing::approvedPlan(LightroomScanner::scan(*read, false, cancel, nullptr), marks);
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
        return testing::namesIn(tree.path("Lightroom/Brevant Backups"));
    }
};

// Three copies of one photo in a Capture One catalog beside them: `a` is
// kept; `b` has an adjustment layer with its own metadata row and an earlier
// modification date, `c` one layer sharing the combined settings' row and no
// date.
struct CaptureOneFamily {

    testing::TempTree tree;
    std::string a = tree.file("Photos/a.jpg", testing::photoOfSize(7, 20'000));
    std::string b = tree.file("Photos/b.jpg", testing::readFile(a));
    std::string c = tree.file("Photos/c.jpg", testing::readFile(a));
    std::string records = tree.path("Data/Markings");
    testing::CaptureOneCatalogFixture fixture{tree.path("Family.cocatalog")};
    std::map<std::string, std::int64_t> images;
    std::map<std::string, testing::CaptureOneCatalogFixture::AddedVariant> variants;
    std::int64_t location = 0;

    CaptureOneFamily() {
        using Layer = testing::CaptureOneCatalogFixture::AdjustmentLayer;
        add(a, {.lastModified = 700000000.5});
        add(b, {.lastModified = 700000123.125, .adjustment = Layer::ownMetadata});
        add(c, {.adjustment = Layer::sharedMetadata});
    }

    void add(const std::string& path, const testing::CaptureOneCatalogFixture::Variant& variant) {
        if (location == 0) {
            location = fixture.addLocation(tree.path("Photos"), "", false);
        }
        images[path] = fixture.addImage(location, PathNames::lastComponent(path));
        variants[path] = fixture.addVariant(images[path], variant);
    }

    [[nodiscard]] const std::string& package() const { return fixture.package(); }

    [[nodiscard]] CaptureOneMarker marker(bool open = false) const {
        return {records, [open](const std::string&) { return open; }};
    }

    [[nodiscard]] auto mark(const CleanupPlan& plan, const CleanupApproval& approval,
                            const Date& now, bool open = false) const {
        return marker(open).mark(plan, approval, package(), now);
    }

    [[nodiscard]] const std::string& databasePath() const { return fixture.databasePath(); }

    // Capture One keeps its version as a number.
    void setVersion(const std::optional<std::string>& version) {
        if (!version) {
            fixture.setVersion(std::nullopt);
            return;
        }
        fixture.setVersion(std::variant<std::int64_t, std::string>(std::stoll(*version)));
    }

    // The same photo in a folder that is not the catalog's, added first.
    void addFolderPhoto(CleanupPlan& plan) const {
        PlannedRemoval folder = plan.removals[0];
        folder.path = tree.file("Elsewhere/b.jpg", testing::readFile(b));
        folder.catalog.reset();
        plan.removals.insert(plan.removals.begin(), folder);
    }

    [[nodiscard]] std::pair<CleanupPlan, CleanupApproval>
    plan(const std::set<std::string>& marks) const {
        auto read = CaptureOneCatalog::read(package());
        EXPECT_TRUE(read.has_value());
        CancellationFlag cancel;
        return testing::approvedPlan(CaptureOneScanner::scan(*read, false, cancel, nullptr), marks);
    }

    // Every tag and date of the catalog, as SQLite shows them.
    [[nodiscard]] std::string state() {
        return fixture.database().value(
                   "SELECT group_concat(Z_PK || '=' || COALESCE(typeof(ZCOLOR_TAG_INDEX) || ':' "
                   "|| ZCOLOR_TAG_INDEX, 'null'), ' ') FROM ZVARIANTMETADATA") +
               " | " +
               fixture.database().value("SELECT group_concat(Z_PK || '=' || quote("
                                        "ZLASTMETADATAMODIFICATIONDATE), ' ') FROM ZVARIANT");
    }

    [[nodiscard]] std::string tag(std::int64_t metadata) {
        return fixture.database().value(fmt::format(
            "SELECT COALESCE(ZCOLOR_TAG_INDEX, 'null') FROM ZVARIANTMETADATA WHERE Z_PK = {}",
            metadata));
    }

    [[nodiscard]] std::string modified(const std::string& path) {
        return fixture.database().value(
            fmt::format("SELECT quote(ZLASTMETADATAMODIFICATIONDATE) FROM ZVARIANT WHERE Z_PK = {}",
                        variants.at(path).variantID));
    }

    [[nodiscard]] std::vector<std::string> backups() const {
        return testing::namesIn(tree.path("Brevant Backups"));
    }
};

TEST(LightroomRejecter, MarksTheCopiesRejectedAndUndoGivesEveryFlagBack) {
    LightroomFamily family;
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
    LightroomFamily family;
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
    LightroomFamily family;
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
    LightroomFamily family;
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
    LightroomFamily family;
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

TEST(LightroomRejecter, AFailedUpdateRollsEverythingBackAndKeepsTheBackup) {
    LightroomFamily family;
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
    LightroomFamily family;
    auto [plan, approval] = family.plan({family.b});
    // A file where the record folder should be.
    family.tree.file("Data/Markings", "in the way");

    auto report = family.rejecter().mark(plan, approval, family.catalog, kNow);

    ASSERT_FALSE(report.has_value());
    EXPECT_EQ(report.error().kind, CatalogRefusal::Kind::recordNotSaved);
    EXPECT_THAT(report.error().text(),
                ::testing::StartsWith("The catalog was changed, but its record could not be "
                                      "saved: the record folder could not be created"));
    ASSERT_EQ(family.backups().size(), 1u);
    EXPECT_THAT(report.error().text(), HasSubstr(family.backups()[0]));
    EXPECT_EQ(family.pick(family.b), -1);
}

TEST(LightroomRejecter, HistoryIsNewestFirstAndPassesOverOtherFiles) {
    LightroomFamily family;
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
            {.path = photo.path,
             .snapshot = *snapshot,
             .catalog = CatalogItem{CatalogApplication::lightroom, photo.ref.imageID}});
    }
    TempTree tree;
    LightroomRejecter rejecter{tree.path("Markings"), [](const std::string&) { return false; }};

    auto report = rejecter.mark(plan, {plan.id, kNow}, *path, kNow);

    ASSERT_FALSE(report.has_value());
    EXPECT_EQ(report.error(), CatalogRefusal::untestedVersion(kLightroom, "1500000"));
    EXPECT_EQ(testing::fileDigest(*path), digest);
    std::error_code error;
    EXPECT_FALSE(std::filesystem::exists(
        std::filesystem::path(*path).parent_path() / "Brevant Backups", error));
}

TEST(CaptureOneMarker, TagsTheCopiesRedAndUndoPutsBackEveryTagAndDate) {
    CaptureOneFamily family;
    auto [plan, approval] = family.plan({family.b, family.c});
    std::string before = family.state();

    auto report = family.marker().mark(plan, approval, family.package(), kNowAndAQuarter);

    ASSERT_TRUE(report.has_value()) << report.error().text();
    EXPECT_THAT(report->marked, ElementsAre(family.b, family.c));
    EXPECT_THAT(report->skipped, IsEmpty());
    ASSERT_TRUE(report->record.has_value());
    const auto& b = family.variants[family.b];
    const auto& c = family.variants[family.c];
    using Item = CaptureOneMarkRecord::Item;
    // Both of b's rows, in layer order; c's layers share one row.
    EXPECT_THAT(report->record->marked,
                ElementsAre(Item{family.images[family.b],
                                 b.variantID,
                                 family.b,
                                 {*b.adjustmentMetadataID, b.combinedMetadataID},
                                 {std::nullopt, std::nullopt},
                                 700000123.125},
                            Item{family.images[family.c],
                                 c.variantID,
                                 family.c,
                                 {c.combinedMetadataID},
                                 {std::nullopt},
                                 std::nullopt}));
    EXPECT_EQ(family.tag(*b.adjustmentMetadataID), "1");
    EXPECT_EQ(family.tag(b.combinedMetadataID), "1");
    EXPECT_EQ(family.tag(c.combinedMetadataID), "1");
    EXPECT_EQ(family.tag(family.variants[family.a].combinedMetadataID), "null");
    EXPECT_EQ(family.modified(family.c), "736248615.25");
    EXPECT_EQ(family.modified(family.a), "700000000.5");
    // The backup package holds the database and nothing else.
    ASSERT_EQ(family.backups().size(), 1u);
    EXPECT_EQ(family.backups()[0],
              "Family " + CatalogBackup::dateText(kNowAndAQuarter) + ".cocatalog");
    EXPECT_THAT(namesIn(report->record->backupPath), ElementsAre("Family.cocatalogdb"));

    auto restored = family.marker().restore(*report->record);

    ASSERT_TRUE(restored.has_value()) << restored.error().text();
    EXPECT_TRUE(restored->restored);
    EXPECT_EQ(family.state(), before);
    EXPECT_THAT(family.marker().history(), ElementsAre(*restored));
    EXPECT_EQ(CaptureOneMarkRecord::decode(restored->encoded()), *restored);
}

TEST(CaptureOneMarker, UndoLeavesAnItemTheUserRetaggedWhole) {
    CaptureOneFamily family;
    auto [plan, approval] = family.plan({family.b, family.c});
    auto report = family.marker().mark(plan, approval, family.package(), kNowAndAQuarter);
    ASSERT_TRUE(report.has_value() && report->record.has_value());
    const auto& b = family.variants[family.b];
    family.fixture.database().exec(fmt::format(
        "UPDATE ZVARIANTMETADATA SET ZCOLOR_TAG_INDEX = 4 WHERE Z_PK = {}", b.combinedMetadataID));

    auto restored = family.marker().restore(*report->record);

    ASSERT_TRUE(restored.has_value()) << restored.error().text();
    EXPECT_EQ(family.tag(*b.adjustmentMetadataID), "1");
    EXPECT_EQ(family.tag(b.combinedMetadataID), "4");
    EXPECT_EQ(family.modified(family.b), "736248615.25");
    EXPECT_EQ(family.tag(family.variants[family.c].combinedMetadataID), "null");
    EXPECT_EQ(family.modified(family.c), "NULL");
}

TEST(CaptureOneMarker, SkipsWhatChangedInCaptureOneSinceTheScan) {
    CaptureOneFamily family;
    auto [plan, approval] = family.plan({family.b, family.c});
    family.fixture.database().exec(
        fmt::format("UPDATE ZIMAGE SET ZISTRASHED = 1 WHERE Z_PK = {}", family.images[family.b]));
    family.fixture.addVariant(family.images[family.c]);
    std::string digest = testing::fileDigest(family.fixture.databasePath());

    auto report = family.marker().mark(plan, approval, family.package(), kNowAndAQuarter);

    ASSERT_TRUE(report.has_value()) << report.error().text();
    EXPECT_THAT(report->skipped,
                ElementsAre(SkippedMark{"b.jpg", "Already in Capture One's Trash."},
                            SkippedMark{"c.jpg", "It has a second variant now, so it is kept."}));
    EXPECT_FALSE(report->record.has_value());
    EXPECT_THAT(family.backups(), IsEmpty());
    EXPECT_THAT(namesIn(family.records), IsEmpty());
    EXPECT_EQ(testing::fileDigest(family.fixture.databasePath()), digest);
}

TEST(CaptureOneMarker, SkipsAnImageTaggedSinceTheScan) {
    CaptureOneFamily family;
    auto [plan, approval] = family.plan({family.b, family.c});
    family.fixture.database().exec(
        fmt::format("UPDATE ZVARIANTMETADATA SET ZCOLOR_TAG_INDEX = {} WHERE Z_PK = {}", 1,
                    family.variants[family.b].combinedMetadataID));
    family.fixture.database().exec(
        fmt::format("UPDATE ZVARIANTMETADATA SET ZCOLOR_TAG_INDEX = {} WHERE Z_PK = {}", 5,
                    family.variants[family.c].combinedMetadataID));

    auto report = family.marker().mark(plan, approval, family.package(), kNowAndAQuarter);

    ASSERT_TRUE(report.has_value()) << report.error().text();
    EXPECT_THAT(report->skipped,
                ElementsAre(SkippedMark{"b.jpg", "Already tagged Red in Capture One."},
                            SkippedMark{"c.jpg", "It has a colour tag now, so it is kept."}));
}

TEST(CaptureOneMarker, UndoOfACatalogThatIsGoneIsRefused) {
    CaptureOneFamily family;
    auto [plan, approval] = family.plan({family.b});
    auto report = family.marker().mark(plan, approval, family.package(), kNowAndAQuarter);
    ASSERT_TRUE(report.has_value() && report->record.has_value());
    CaptureOneMarkRecord moved = *report->record;
    moved.catalogPath = family.tree.path("Moved.cocatalog");

    auto restored = family.marker().restore(moved);

    ASSERT_FALSE(restored.has_value());
    EXPECT_EQ(restored.error().text(), "The catalog was not changed: the catalog is no longer "
                                       "there");
}

struct RefusalCase {
    const char* name;
    // The catalog's version; unset keeps the tested one.
    std::optional<std::optional<std::string>> version;
    bool open = false;
    bool otherApproval = false;
    bool folderPhoto = false;
    CatalogRefusal expected;
    std::string text;

    friend void PrintTo(const RefusalCase& row, std::ostream* out) { *out << row.name; }
};

class CatalogMarkRefusal : public ::testing::TestWithParam<RefusalCase> {};

template <typename Family> void expectRefused(const RefusalCase& refusal) {
    Family family;
    if (refusal.version) {
        family.setVersion(*refusal.version);
    }
    auto [plan, approval] = family.plan({family.b});
    if (refusal.otherApproval) {
        approval.planID = Uuid::make();
    }
    if (refusal.folderPhoto) {
        family.addFolderPhoto(plan);
    }
    std::string digest = testing::fileDigest(family.databasePath());

    auto report = family.mark(plan, approval, kNow, refusal.open);

    ASSERT_FALSE(report.has_value());
    EXPECT_EQ(report.error(), refusal.expected);
    EXPECT_EQ(report.error().text(), refusal.text);
    EXPECT_EQ(testing::fileDigest(family.databasePath()), digest);
    EXPECT_THAT(family.backups(), IsEmpty());
    EXPECT_THAT(namesIn(family.records), IsEmpty());
}

TEST_P(CatalogMarkRefusal, LeavesTheDatabaseByteIdenticalWithNoBackup) {
    // The refusal's application picks the catalog it is asked of.
    if (GetParam().expected.application == kLightroom) {
        expectRefused<LightroomFamily>(GetParam());
    } else {
        expectRefused<CaptureOneFamily>(GetParam());
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, CatalogMarkRefusal,
    ::testing::Values(
        RefusalCase{.name = "lightroomOtherApproval",
                    .otherApproval = true,
                    .expected = CatalogRefusal::approvalDoesNotMatch(kLightroom),
                    .text = "This approval is for a different set of photos. Review them again."},
        RefusalCase{.name = "lightroomFolderPhoto",
                    .folderPhoto = true,
                    .expected = CatalogRefusal::notCatalogPhotos(kLightroom),
                    .text = "Only photos from a Lightroom Classic catalog can be marked Rejected."},
        RefusalCase{.name = "lightroomOpen",
                    .open = true,
                    .expected = CatalogRefusal::applicationOpen(kLightroom),
                    .text = "Quit Lightroom Classic first. Its catalog is only changed while "
                            "Lightroom is closed."},
        RefusalCase{.name = "lightroomNewerVersion",
                    .version = std::optional<std::string>("1504002"),
                    .expected = CatalogRefusal::untestedVersion(kLightroom, "1504002"),
                    .text = "This catalog is from a Lightroom Classic version Brevant has not "
                            "been tested with (1504002), so it was not changed."},
        RefusalCase{.name = "lightroomNoVersion",
                    .version = std::optional<std::string>(),
                    .expected = CatalogRefusal::untestedVersion(kLightroom, "unknown"),
                    .text = "This catalog is from a Lightroom Classic version Brevant has not "
                            "been tested with (unknown), so it was not changed."},
        RefusalCase{.name = "captureOneOtherApproval",
                    .otherApproval = true,
                    .expected = CatalogRefusal::approvalDoesNotMatch(kCaptureOne),
                    .text = "This approval is for a different set of photos. Review them again."},
        RefusalCase{.name = "captureOneFolderPhoto",
                    .folderPhoto = true,
                    .expected = CatalogRefusal::notCatalogPhotos(kCaptureOne),
                    .text = "Only photos from a Capture One catalog can be tagged there."},
        RefusalCase{.name = "captureOneOpen",
                    .open = true,
                    .expected = CatalogRefusal::applicationOpen(kCaptureOne),
                    .text = "Quit Capture One first. Its catalog is only changed while Capture "
                            "One is closed."},
        RefusalCase{.name = "captureOneNewerVersion",
                    .version = std::optional<std::string>("160900"),
                    .expected = CatalogRefusal::untestedVersion(kCaptureOne, "160900"),
                    .text = "This catalog is from a Capture One version Brevant has not been "
                            "tested with (160900), so it was not changed."}),
    [](const auto& info) { return std::string(info.param.name); });

} // namespace
} // namespace brevant
