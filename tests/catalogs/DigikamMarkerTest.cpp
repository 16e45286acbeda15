#include "engine/catalogs/DigikamMarker.hpp"

#include "tests/catalogs/DigikamFixture.hpp"
#include "tests/catalogs/MarkFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"
#include "tests/scan/ScanFixtures.hpp"

#include "engine/catalogs/CatalogBackup.hpp"
#include "engine/catalogs/DigikamScanner.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fmt/format.h>
#include <map>
#include <set>

// Marking copies in a digiKam library with the tag "Brevant Duplicates",
// and undoing it.
namespace brevant {
namespace {

using testing::DigikamFixture;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::TempTree;

// 1 May 2024 09:30:15 UTC.
const Date kNow = Date::fromUnixSeconds(1714555815.0);

// Three copies of one photo in one album: `a` is kept.
struct DigikamFamily {
    TempTree tree;
    std::string a = tree.file("Pictures/a.jpg", testing::photoOfSize(7, 20'000));
    std::string b = tree.file("Pictures/b.jpg", testing::readFile(a));
    std::string c = tree.file("Pictures/c.jpg", testing::readFile(a));
    std::string records = tree.path("Data/Markings");
    DigikamFixture fixture;
    std::map<std::string, std::int64_t> ids;

    explicit DigikamFamily(const std::string& version = "16")
        : fixture(tree.path("Pictures/digikam4.db"), version) {
        std::string encoded;
        for (char ch : tree.path("Pictures")) {
            encoded += ch == '/' ? std::string("%2F") : std::string(1, ch);
        }
        auto album = fixture.addAlbum(fixture.addPathRoot(encoded), "/");
        for (const auto& path : {a, b, c}) {
            ids[path] = fixture.addImage(album, std::filesystem::path(path).filename().string());
        }
    }

    [[nodiscard]] const std::string& database() const { return fixture.path(); }

    [[nodiscard]] DigikamMarker marker(bool open = false) const {
        DigikamMarker marker;
        marker.recordDirectory = records;
        marker.isOpen = [open](const std::string&) { return open; };
        return marker;
    }

    [[nodiscard]] std::pair<CleanupPlan, CleanupApproval>
    plan(const std::set<std::string>& marks) const {
        auto read = DigikamCatalog::read(database());
        EXPECT_TRUE(read.has_value());
        CancellationFlag cancel;
        return testing::approvedPlan(DigikamScanner::scan(*read, false, cancel, nullptr), marks);
    }

    [[nodiscard]] std::string value(const std::string& sql) {
        return fixture.database().value(sql);
    }

    [[nodiscard]] std::string duplicatesTag() {
        return value("SELECT group_concat(id || ':' || pid) FROM Tags WHERE name = "
                     "'Brevant Duplicates'");
    }

    [[nodiscard]] std::string tagged() {
        return value("SELECT group_concat(i.name, ' ') FROM (SELECT i.name FROM ImageTags x "
                     "JOIN Tags t ON t.id = x.tagid JOIN Images i ON i.id = x.imageid "
                     "WHERE t.name = 'Brevant Duplicates' ORDER BY i.name) i");
    }

    [[nodiscard]] std::vector<std::string> backups() const {
        return testing::namesIn(tree.path("Pictures/Brevant Backups"));
    }
};

TEST(DigikamMarker, TagsTheCopiesUnderANewTopLevelTag) {
    DigikamFamily family;
    auto [plan, approval] = family.plan({family.b, family.c});
    std::string before = testing::fileDigest(family.database());

    auto report = family.marker().mark(plan, approval, family.database(), kNow);

    ASSERT_TRUE(report.has_value()) << report.error().text();
    EXPECT_THAT(report->marked, ElementsAre(family.b, family.c));
    EXPECT_THAT(report->skipped, IsEmpty());
    auto tag = std::stoll(family.value("SELECT id FROM Tags WHERE name = 'Brevant Duplicates'"));
    EXPECT_EQ(family.duplicatesTag(), fmt::format("{}:0", tag));
    // digiKam's trigger filed it at the top of the tree.
    EXPECT_EQ(
        family.value(fmt::format("SELECT group_concat(pid) FROM TagsTree WHERE id = {}", tag)),
        "0");
    EXPECT_EQ(family.tagged(), "b.jpg c.jpg");
    ASSERT_TRUE(report->record.has_value());
    EXPECT_THAT(
        report->record->marked,
        ElementsAre(
            TagMarkItem{family.ids[family.b], family.b, {family.ids[family.b]}, tag, true},
            TagMarkItem{family.ids[family.c], family.c, {family.ids[family.c]}, tag, true}));
    // The backup is the database from before.
    ASSERT_THAT(family.backups(), ElementsAre("digikam4 " + CatalogBackup::dateText(kNow) + ".db"));
    EXPECT_EQ(report->record->backupPath,
              family.tree.path("Pictures/Brevant Backups/" + family.backups()[0]));
    testing::SQLiteFile backup(report->record->backupPath);
    EXPECT_EQ(backup.value("SELECT COUNT(*) FROM Tags WHERE name = 'Brevant Duplicates'"), "0");
    EXPECT_EQ(backup.value("SELECT COUNT(*) FROM Images"), "3");
    EXPECT_NE(testing::fileDigest(family.database()), before);
}

TEST(DigikamMarker, UndoLeavesThePhotoTheUserTaggedSinceAndTheTag) {
    DigikamFamily family;
    auto [plan, approval] = family.plan({family.b});
    auto report = family.marker().mark(plan, approval, family.database(), kNow);
    ASSERT_TRUE(report.has_value() && report->record) << report.error().text();
    auto tag = report->record->marked[0].tagID;
    family.fixture.tag(family.ids[family.a], tag);

    auto restored = family.marker().restore(*report->record);

    ASSERT_TRUE(restored.has_value()) << restored.error().text();
    EXPECT_TRUE(restored->restored);
    EXPECT_EQ(family.tagged(), "a.jpg");
    EXPECT_EQ(family.duplicatesTag(), fmt::format("{}:0", tag));
    EXPECT_THAT(family.marker().history(), ElementsAre(*restored));
}

TEST(DigikamMarker, UndoTakesAwayTheTagItMade) {
    DigikamFamily family;
    auto [plan, approval] = family.plan({family.b, family.c});
    auto report = family.marker().mark(plan, approval, family.database(), kNow);
    ASSERT_TRUE(report.has_value() && report->record) << report.error().text();

    auto restored = family.marker().restore(*report->record);

    ASSERT_TRUE(restored.has_value()) << restored.error().text();
    EXPECT_EQ(family.tagged(), "");
    EXPECT_EQ(family.duplicatesTag(), "");
    EXPECT_EQ(family.value(fmt::format("SELECT COUNT(*) FROM TagsTree WHERE id = {}",
                                       report->record->marked[0].tagID)),
              "0");
}

TEST(DigikamMarker, AUsersOwnDuplicatesTagIsUsedAndKept) {
    DigikamFamily family;
    auto tag = family.fixture.addTag(0, "Brevant Duplicates");
    auto [plan, approval] = family.plan({family.b});

    auto report = family.marker().mark(plan, approval, family.database(), kNow);
    ASSERT_TRUE(report.has_value() && report->record) << report.error().text();
    EXPECT_THAT(report->record->marked,
                ElementsAre(TagMarkItem{
                    family.ids[family.b], family.b, {family.ids[family.b]}, tag, false}));
    auto restored = family.marker().restore(*report->record);

    ASSERT_TRUE(restored.has_value()) << restored.error().text();
    EXPECT_EQ(family.tagged(), "");
    EXPECT_EQ(family.duplicatesTag(), fmt::format("{}:0", tag));
}

TEST(DigikamMarker, RefusesAnUntestedVersionAndARunningDigikamUntouched) {
    struct Case {
        std::string version;
        bool open;
        CatalogRefusal refusal;
    };

    const std::vector<Case> cases = {
        {"17", false, CatalogRefusal::untestedVersion(CatalogSource::Application::digikam, "17")},
        {"16", true, CatalogRefusal::applicationOpen(CatalogSource::Application::digikam)},
    };
    for (const auto& one : cases) {
        DigikamFamily family(one.version);
        auto [plan, approval] = family.plan({family.b});
        family.fixture.close();
        std::string digest = testing::fileDigest(family.database());

        auto report = family.marker(one.open).mark(plan, approval, family.database(), kNow);

        ASSERT_FALSE(report.has_value()) << one.version;
        EXPECT_EQ(report.error(), one.refusal);
        EXPECT_EQ(testing::fileDigest(family.database()), digest);
        EXPECT_THAT(family.backups(), IsEmpty());
    }
}

TEST(DigikamMarker, SkipsACopyAlreadyTagged) {
    DigikamFamily family;
    auto [plan, approval] = family.plan({family.b, family.c});
    family.fixture.tag(family.ids[family.c], family.fixture.addTag(0, "Brevant Duplicates"));

    auto report = family.marker().mark(plan, approval, family.database(), kNow);

    ASSERT_TRUE(report.has_value()) << report.error().text();
    EXPECT_THAT(report->marked, ElementsAre(family.b));
    EXPECT_THAT(report->skipped,
                ElementsAre(SkippedMark{"c.jpg", std::string(DigikamMarker::kAlreadyTagged)}));
}

} // namespace
} // namespace brevant
