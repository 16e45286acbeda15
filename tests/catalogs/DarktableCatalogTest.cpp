#include "tests/catalogs/DarktableFixture.hpp"
#include "tests/catalogs/MarkFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"
#include "tests/scan/ScanFixtures.hpp"

#include "engine/catalogs/CatalogBackup.hpp"
#include "engine/catalogs/DarktableMarker.hpp"
#include "engine/catalogs/DarktableScanner.hpp"
#include "engine/platform/LockOwner.hpp"
#include "engine/platform/RunningApplications.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fmt/format.h>
#include <sys/wait.h>
#include <unistd.h>

// A darktable library read, marked and undone: every version of a file is
// one photo, and all its versions carry the tag.
namespace brevant {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::namesIn;
using testing::TempTree;

const Date kNow = Date::fromUnixSeconds(1714555815.0);
constexpr std::string_view kTag = kDuplicatesTag;

// Three copies of one photo, the second with a duplicate (a second version)
// in darktable, and a file the library lists that is gone.
struct DarktableFamily {
    TempTree tree;
    std::string a = tree.file("Photos/a.jpg", testing::photoOfSize(31, 20'000));
    std::string b = tree.file("Photos/b.jpg", testing::readFile(a));
    std::string c = tree.file("Photos/c.jpg", testing::readFile(a));
    std::string records = tree.path("Data/Markings");
    testing::DarktableLibraryFixture fixture{tree.path("darktable")};
    std::int64_t roll = fixture.addFilmRoll(tree.path("Photos"));
    std::int64_t idA = fixture.addImage(roll, "a.jpg", {.flags = 3});
    std::int64_t idB = fixture.addImage(roll, "b.jpg");
    std::int64_t idC = fixture.addImage(roll, "c.jpg", {.flags = 8});
    std::int64_t idGone = fixture.addImage(roll, "gone.jpg");
    std::int64_t idB1 = fixture.addImage(roll, "b.jpg", {.version = 1});

    [[nodiscard]] const std::string& library() const { return fixture.libraryPath(); }

    [[nodiscard]] DarktableMarker marker(bool open = false) const {
        DarktableMarker marker;
        marker.recordDirectory = records;
        marker.isOpen = [open](const std::string&) { return open; };
        return marker;
    }

    [[nodiscard]] std::pair<CleanupPlan, CleanupApproval>
    plan(const std::set<std::string>& marks) const {
        auto read = DarktableCatalog::read(library());
        EXPECT_TRUE(read.has_value());
        CancellationFlag cancel;
        return testing::approvedPlan(DarktableScanner::scan(*read, false, cancel, nullptr), marks);
    }

    [[nodiscard]] auto mark(bool open = false) const {
        auto [plan, approval] = this->plan({b, c});
        return marker(open).mark(plan, approval, library(), kNow);
    }

    [[nodiscard]] std::string backupFolder() const {
        return tree.path("darktable/Brevant Backups/darktable " + CatalogBackup::dateText(kNow));
    }

    [[nodiscard]] std::string tagID() { return fixture.tagID(std::string(kTag)); }
};

const DarktablePhoto& photoAt(const DarktableCatalog& catalog, const std::string& path) {
    auto found = std::ranges::find(catalog.photos, path, &DarktablePhoto::path);
    EXPECT_NE(found, catalog.photos.end()) << path;
    return *found;
}

TEST(DarktableCatalog, ReadsEachFileOnceWithWhatTheUserDidToAnyOfItsVersions) {
    DarktableFamily family;
    family.fixture.edit(family.idA);
    family.fixture.tag(family.idA, "Places|Paris");
    family.fixture.label(family.idB1, 1);

    auto catalog = DarktableCatalog::read(family.library());

    ASSERT_TRUE(catalog.has_value()) << catalog.error().text();
    EXPECT_EQ(catalog->schemaVersion, "library 37, data 9");
    EXPECT_TRUE(catalog->isTestedVersion());
    EXPECT_EQ(catalog->dataURL, family.fixture.dataPath());
    ASSERT_EQ(catalog->photos.size(), 4U);
    const auto& a = photoAt(*catalog, family.a);
    EXPECT_EQ(a.ref.rating, 3);
    EXPECT_TRUE(a.ref.isEdited);
    EXPECT_EQ(a.ref.tags, 1);
    EXPECT_EQ(a.ref.workSummary(), "edited, 3 stars, has a tag");
    const auto& b = photoAt(*catalog, family.b);
    EXPECT_EQ(b.ref.imageID, family.idB);
    EXPECT_THAT(b.ref.versionIDs, ElementsAre(family.idB, family.idB1));
    EXPECT_EQ(b.ref.workDetails(), "2 versions, labelled yellow");
    const auto& c = photoAt(*catalog, family.c);
    EXPECT_TRUE(c.ref.isRejected);
    EXPECT_FALSE(c.ref.workedOn());
    EXPECT_EQ(c.ref.workDetails(), "rejected");
    ASSERT_EQ(catalog->missing().size(), 1U);
    EXPECT_EQ(catalog->missing()[0].path, family.tree.path("Photos/gone.jpg"));
}

TEST(DarktableCatalog, ScanCountsAFileWithADuplicateOnce) {
    DarktableFamily family;
    auto catalog = DarktableCatalog::read(family.library());
    ASSERT_TRUE(catalog.has_value());
    CancellationFlag cancel;

    auto result = DarktableScanner::scan(*catalog, false, cancel, nullptr);

    ASSERT_EQ(result.groups.size(), 1U);
    ASSERT_EQ(result.groups[0].members.size(), 3U);
    for (const auto& member : result.groups[0].members) {
        ASSERT_TRUE(member.catalog.hasValue()) << member.path;
        const auto* ref = member.catalog->as<DarktableRef>();
        ASSERT_NE(ref, nullptr);
        EXPECT_EQ(ref->versions(), member.path == family.b ? 2 : 1) << member.path;
    }
}

TEST(DarktableMarker, TagsEveryVersionInOneTransactionAfterBackingUpBothDatabases) {
    DarktableFamily family;
    std::string assignmentsBefore =
        family.fixture.library().value("SELECT COUNT(*) FROM tagged_images");

    auto report = family.mark();

    ASSERT_TRUE(report.has_value()) << report.error().text();
    EXPECT_THAT(report->marked, ElementsAre(family.b, family.c));
    EXPECT_THAT(report->skipped, IsEmpty());
    std::string tag = family.tagID();
    ASSERT_FALSE(tag.empty());
    EXPECT_EQ(family.fixture.taggedWith(std::stoll(tag)),
              fmt::format("{} {} {}", family.idB, family.idC, family.idB1));
    ASSERT_TRUE(report->record.has_value());
    const auto& marked = report->record->marked;
    ASSERT_EQ(marked.size(), 2U);
    EXPECT_EQ(marked[0].imageID, family.idB);
    EXPECT_THAT(marked[0].taggedIDs, ElementsAre(family.idB, family.idB1));
    EXPECT_THAT(marked[1].taggedIDs, ElementsAre(family.idC));
    EXPECT_TRUE(marked[0].tagCreated);
    EXPECT_TRUE(marked[1].tagCreated);
    EXPECT_EQ(report->record->backupPath, family.backupFolder());
    EXPECT_THAT(namesIn(family.backupFolder()), ElementsAre("data.db", "library.db"));
    testing::SQLiteFile backupData(family.backupFolder() + "/data.db");
    testing::SQLiteFile backupLibrary(family.backupFolder() + "/library.db");
    EXPECT_EQ(backupData.value(fmt::format("SELECT COUNT(*) FROM tags WHERE name = '{}'", kTag)),
              "0");
    EXPECT_EQ(backupLibrary.value("SELECT COUNT(*) FROM tagged_images"), assignmentsBefore);
    EXPECT_THAT(namesIn(family.records), ElementsAre(report->record->id.text() + ".json"));
}

TEST(DarktableMarker, UndoLeavesTheTagOnAPhotoTheUserTaggedSince) {
    DarktableFamily family;
    auto report = family.mark();
    ASSERT_TRUE(report.has_value() && report->record) << report.error().text();
    auto tag = std::stoll(family.tagID());
    family.fixture.tag(family.idA, std::string(kTag));

    auto restored = family.marker().restore(*report->record);

    ASSERT_TRUE(restored.has_value()) << restored.error().text();
    EXPECT_TRUE(restored->restored);
    EXPECT_EQ(family.fixture.taggedWith(tag), std::to_string(family.idA));
    EXPECT_EQ(family.tagID(), std::to_string(tag));
}

TEST(DarktableMarker, UndoTakesAwayTheTagItMadeOnceNothingCarriesIt) {
    DarktableFamily family;
    auto report = family.mark();
    ASSERT_TRUE(report.has_value() && report->record) << report.error().text();

    auto restored = family.marker().restore(*report->record);

    ASSERT_TRUE(restored.has_value()) << restored.error().text();
    EXPECT_EQ(family.tagID(), "");
    EXPECT_EQ(family.fixture.library().value("SELECT COUNT(*) FROM tagged_images WHERE tagid != 1"),
              "0");
}

TEST(DarktableMarker, UndoKeepsATagTheUserHadBefore) {
    DarktableFamily family;
    auto tag = family.fixture.tag(family.idGone, std::string(kTag));
    auto report = family.mark();
    ASSERT_TRUE(report.has_value() && report->record) << report.error().text();
    EXPECT_FALSE(report->record->marked[0].tagCreated);

    auto restored = family.marker().restore(*report->record);

    ASSERT_TRUE(restored.has_value()) << restored.error().text();
    EXPECT_EQ(family.fixture.taggedWith(tag), std::to_string(family.idGone));
    EXPECT_EQ(family.tagID(), std::to_string(tag));
}

TEST(DarktableMarker, RefusesAnUnknownVersionAndLeavesBothDatabasesByteIdentical) {
    DarktableFamily family;
    auto [plan, approval] = family.plan({family.b, family.c});
    family.fixture.setVersions("38", "9");
    std::string library = testing::fileDigest(family.library());
    std::string data = testing::fileDigest(family.fixture.dataPath());

    auto refused = family.marker().mark(plan, approval, family.library(), kNow);

    ASSERT_FALSE(refused.has_value());
    EXPECT_EQ(refused.error().text(), "This catalog is from a darktable version Brevant has not "
                                      "been tested with (library 38, data 9), so it was not "
                                      "changed.");
    EXPECT_EQ(testing::fileDigest(family.library()), library);
    EXPECT_EQ(testing::fileDigest(family.fixture.dataPath()), data);
    EXPECT_THAT(namesIn(family.tree.path("darktable/Brevant Backups")), IsEmpty());
}

TEST(DarktableMarker, RefusesWhileDarktableIsOpen) {
    DarktableFamily family;
    std::string library = testing::fileDigest(family.library());

    auto refused = family.mark(true);

    ASSERT_FALSE(refused.has_value());
    EXPECT_EQ(refused.error().text(),
              "Quit darktable first. Its library is only changed while darktable is closed.");
    EXPECT_EQ(testing::fileDigest(family.library()), library);
}

// darktable writes its process id into a lock file beside each database.
TEST(DarktableCatalog, IsOpenWhileALockFileNamesALiveProcessOrDarktableRuns) {
    constexpr int kLive = 4242;

    struct Case {
        std::string lockFile;
        std::string contents;
        bool running;
        bool open;
    };

    for (const auto& one : std::vector<Case>{
             {"", "", false, false},
             {"library.db.lock", "4242\n", false, true},
             {"data.db.lock", "4242", false, true},
             {"library.db.lock", "4343\n", false, false},
             {"library.db.lock", "not a number", false, false},
             {"", "", true, true},
         }) {
        TempTree tree;
        testing::DarktableLibraryFixture fixture(tree.path("darktable"));
        if (!one.lockFile.empty()) {
            tree.file("darktable/" + one.lockFile, one.contents);
        }
        auto running = [&one] {
            std::vector<platform::RunningApplication> list = {{1, "bash", "/bin/bash", {}}};
            if (one.running) {
                list.push_back({kLive, "darktable", "/usr/bin/darktable",
                                std::string(platform::kDarktableBundleIdentifier)});
            }
            return list;
        };
        // Only the live process runs; the dead one has gone.
        auto alive = [](int processID) { return processID == kLive; };

        EXPECT_EQ(DarktableCatalog::isOpen(fixture.libraryPath(), running, alive), one.open)
            << one.lockFile << " " << one.contents;
    }
}

TEST(LockOwner, ReadsTheProcessOfALockFileAndTellsWhetherItLives) {
    TempTree tree;
    EXPECT_EQ(platform::lockFileProcess(tree.file("a.lock", "1234\n")), 1234);
    EXPECT_EQ(platform::lockFileProcess(tree.file("b.lock", "12x")), std::nullopt);
    EXPECT_EQ(platform::lockFileProcess(tree.path("absent.lock")), std::nullopt);
    EXPECT_TRUE(platform::isProcessAlive(::getpid()));
    pid_t child = ::fork();
    if (child == 0) {
        ::_exit(0);
    }
    ASSERT_GT(child, 0);
    ::waitpid(child, nullptr, 0);
    EXPECT_FALSE(platform::isProcessAlive(child));
}

TEST(RunningApplications, DarktableIsKnownByItsProgramName) {
    EXPECT_EQ(platform::bundleIdentifierOf("darktable", "/usr/bin/darktable"),
              std::string(platform::kDarktableBundleIdentifier));
    EXPECT_EQ(platform::bundleIdentifierOf("darktable-cli", "/usr/bin/darktable-cli"),
              std::nullopt);
}

} // namespace
} // namespace brevant
