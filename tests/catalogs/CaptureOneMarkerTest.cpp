#include "engine/catalogs/CaptureOneMarker.hpp"

#include "tests/catalogs/MarkFixtures.hpp"
#include "tests/fixtures/CatalogFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"
#include "tests/scan/ScanFixtures.hpp"

#include "engine/catalogs/CaptureOneScanner.hpp"
#include "engine/catalogs/CatalogBackup.hpp"
#include "engine/support/PathNames.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fmt/format.h>
#include <map>

namespace brevant {
namespace {

using testing::approvedPlan;
using testing::CaptureOneCatalogFixture;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::namesIn;
using testing::TempTree;

const Date kNow = Date::fromUnixSeconds(1714555815.25);

// Three copies of one photo in a Capture One catalog beside them: `a` is
// kept; `b` has an adjustment layer with its own metadata row and an earlier
// modification date, `c` one layer sharing the combined settings' row and no
// date.
struct Family {
    TempTree tree;
    std::string a = tree.file("Photos/a.jpg", testing::photoOfSize(7, 20'000));
    std::string b = tree.file("Photos/b.jpg", testing::readFile(a));
    std::string c = tree.file("Photos/c.jpg", testing::readFile(a));
    std::string records = tree.path("Data/Markings");
    CaptureOneCatalogFixture fixture{tree.path("Family.cocatalog")};
    std::map<std::string, std::int64_t> images;
    std::map<std::string, CaptureOneCatalogFixture::AddedVariant> variants;
    std::int64_t location = 0;

    Family() {
        using Layer = CaptureOneCatalogFixture::AdjustmentLayer;
        add(a, {.lastModified = 700000000.5});
        add(b, {.lastModified = 700000123.125, .adjustment = Layer::ownMetadata});
        add(c, {.adjustment = Layer::sharedMetadata});
    }

    Family(const Family&) = delete;
    Family& operator=(const Family&) = delete;
    Family(Family&&) = delete;
    Family& operator=(Family&&) = delete;
    ~Family() = default;

    void add(const std::string& path, const CaptureOneCatalogFixture::Variant& variant) {
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

    [[nodiscard]] std::pair<CleanupPlan, CleanupApproval>
    plan(const std::set<std::string>& marks) const {
        auto read = CaptureOneCatalog::read(package());
        EXPECT_TRUE(read.has_value());
        CancellationFlag cancel;
        return approvedPlan(CaptureOneScanner::scan(*read, false, cancel, nullptr), marks);
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
        return namesIn(tree.path("Brevant Backups"));
    }
};

TEST(CaptureOneMarker, TagsTheCopiesRedAndUndoPutsBackEveryTagAndDate) {
    Family family;
    auto [plan, approval] = family.plan({family.b, family.c});
    std::string before = family.state();

    auto report = family.marker().mark(plan, approval, family.package(), kNow);

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
    EXPECT_EQ(family.backups()[0], "Family " + CatalogBackup::dateText(kNow) + ".cocatalog");
    EXPECT_THAT(namesIn(report->record->backupPath), ElementsAre("Family.cocatalogdb"));

    auto restored = family.marker().restore(*report->record);

    ASSERT_TRUE(restored.has_value()) << restored.error().text();
    EXPECT_TRUE(restored->restored);
    EXPECT_EQ(family.state(), before);
    EXPECT_THAT(family.marker().history(), ElementsAre(*restored));
    EXPECT_EQ(CaptureOneMarkRecord::decode(restored->encoded()), *restored);
}

TEST(CaptureOneMarker, UndoLeavesAnItemTheUserRetaggedWhole) {
    Family family;
    auto [plan, approval] = family.plan({family.b, family.c});
    auto report = family.marker().mark(plan, approval, family.package(), kNow);
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
    Family family;
    auto [plan, approval] = family.plan({family.b, family.c});
    family.fixture.database().exec(
        fmt::format("UPDATE ZIMAGE SET ZISTRASHED = 1 WHERE Z_PK = {}", family.images[family.b]));
    family.fixture.addVariant(family.images[family.c]);
    std::string digest = testing::fileDigest(family.fixture.databasePath());

    auto report = family.marker().mark(plan, approval, family.package(), kNow);

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
    Family family;
    auto [plan, approval] = family.plan({family.b, family.c});
    family.fixture.database().exec(
        fmt::format("UPDATE ZVARIANTMETADATA SET ZCOLOR_TAG_INDEX = {} WHERE Z_PK = {}", 1,
                    family.variants[family.b].combinedMetadataID));
    family.fixture.database().exec(
        fmt::format("UPDATE ZVARIANTMETADATA SET ZCOLOR_TAG_INDEX = {} WHERE Z_PK = {}", 5,
                    family.variants[family.c].combinedMetadataID));

    auto report = family.marker().mark(plan, approval, family.package(), kNow);

    ASSERT_TRUE(report.has_value()) << report.error().text();
    EXPECT_THAT(report->skipped,
                ElementsAre(SkippedMark{"b.jpg", "Already tagged Red in Capture One."},
                            SkippedMark{"c.jpg", "It has a colour tag now, so it is kept."}));
}

struct RefusalCase {
    const char* name;
    std::int64_t version = 160800;
    bool open = false;
    bool otherApproval = false;
    bool folderPhoto = false;
    CaptureOneRefusal expected;
    std::string text;
};

class CaptureOneMarkerRefusal : public ::testing::TestWithParam<RefusalCase> {};

TEST_P(CaptureOneMarkerRefusal, LeavesTheDatabaseByteIdenticalWithNoBackup) {
    const RefusalCase& refusal = GetParam();
    Family family;
    family.fixture.setVersion(refusal.version);
    auto [plan, approval] = family.plan({family.b});
    if (refusal.otherApproval) {
        approval.planID = Uuid::make();
    }
    if (refusal.folderPhoto) {
        PlannedRemoval folder = plan.removals[0];
        folder.path = family.tree.file("Elsewhere/b.jpg", testing::readFile(family.b));
        folder.captureOneImageID.reset();
        plan.removals.insert(plan.removals.begin(), folder);
    }
    std::string digest = testing::fileDigest(family.fixture.databasePath());

    auto report = family.marker(refusal.open).mark(plan, approval, family.package(), kNow);

    ASSERT_FALSE(report.has_value());
    EXPECT_EQ(report.error(), refusal.expected);
    EXPECT_EQ(report.error().text(), refusal.text);
    EXPECT_EQ(testing::fileDigest(family.fixture.databasePath()), digest);
    EXPECT_THAT(family.backups(), IsEmpty());
    EXPECT_THAT(namesIn(family.records), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Cases, CaptureOneMarkerRefusal,
    ::testing::Values(
        RefusalCase{.name = "otherApproval",
                    .otherApproval = true,
                    .expected = CaptureOneRefusal::approvalDoesNotMatch(),
                    .text = "This approval is for a different set of photos. Review them again."},
        RefusalCase{.name = "folderPhoto",
                    .folderPhoto = true,
                    .expected = CaptureOneRefusal::notCaptureOnePhotos(),
                    .text = "Only photos from a Capture One catalog can be tagged there."},
        RefusalCase{.name = "captureOneOpen",
                    .open = true,
                    .expected = CaptureOneRefusal::captureOneOpen(),
                    .text = "Quit Capture One first. Its catalog is only changed while Capture "
                            "One is closed."},
        RefusalCase{.name = "newerVersion",
                    .version = 160900,
                    .expected = CaptureOneRefusal::untestedVersion("160900"),
                    .text = "This catalog is from a Capture One version Brevant has not been "
                            "tested with (160900), so it was not changed."}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(CaptureOneMarker, UndoOfACatalogThatIsGoneIsRefused) {
    Family family;
    auto [plan, approval] = family.plan({family.b});
    auto report = family.marker().mark(plan, approval, family.package(), kNow);
    ASSERT_TRUE(report.has_value() && report->record.has_value());
    CaptureOneMarkRecord moved = *report->record;
    moved.catalogPath = family.tree.path("Moved.cocatalog");

    auto restored = family.marker().restore(moved);

    ASSERT_FALSE(restored.has_value());
    EXPECT_EQ(restored.error().text(), "The catalog was not changed: the catalog is no longer "
                                       "there");
}

} // namespace
} // namespace brevant
