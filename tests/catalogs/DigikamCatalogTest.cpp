#include "engine/catalogs/DigikamCatalog.hpp"

#include "tests/catalogs/DigikamFixture.hpp"
#include "tests/fixtures/TempTree.hpp"
#include "tests/scan/ScanFixtures.hpp"

#include "engine/catalogs/DigikamScanner.hpp"
#include "engine/platform/ProcessInfo.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sys/sysmacros.h>

// Reading a digiKam library: items under album roots resolved to today's
// mounts, their labels and tags, and the database chosen from digiKam's
// configuration.
namespace brevant {
namespace {

using testing::DigikamFixture;
using ::testing::ElementsAre;
using testing::TempTree;

constexpr std::string_view kDriveUuid = "3f1c2a9e-5b7d-4e21-9c0a-7d8e6f5a4b3c";
constexpr std::string_view kAwayUuid = "0a0b0c0d-1111-2222-3333-444455556666";

// A mount table where a part of the drive's device (8:17) is bound at one
// place and the whole drive mounted at `mountPoint`; the other drive is
// known but not mounted.
platform::MountedVolumeMounts mountsWith(std::string mountPoint) {
    // The table writes a space as "\040".
    for (auto at = mountPoint.find(' '); at != std::string::npos; at = mountPoint.find(' ', at)) {
        mountPoint.replace(at, 1, "\\040");
    }
    std::string mountinfo = fmt::format("22 1 8:1 / / rw - ext4 /dev/sda1 rw\n"
                                        "39 22 8:17 /Photos /srv/bound rw - ext4 /dev/sdb1 rw\n"
                                        "40 22 8:17 / {} rw - ext4 /dev/sdb1 rw\n",
                                        mountPoint);
    return {platform::MountTable::parse(mountinfo),
            {{std::string(kDriveUuid), ::gnu_dev_makedev(8, 17)},
             {std::string(kAwayUuid), ::gnu_dev_makedev(8, 33)}}};
}

TEST(VolumeMounts, FindsTheMountThatShowsTheWholeDrive) {
    auto mounts = mountsWith("/media/anna/Photos Drive");

    EXPECT_EQ(mounts.mountPoint(kDriveUuid), "/media/anna/Photos Drive");
    // FAT volumes write their UUIDs in capitals.
    std::string upper(kDriveUuid);
    std::ranges::transform(upper, upper.begin(), [](unsigned char c) { return std::toupper(c); });
    EXPECT_EQ(mounts.mountPoint(upper), "/media/anna/Photos Drive");
    EXPECT_EQ(mounts.mountPoint(kAwayUuid), std::nullopt);
    EXPECT_EQ(mounts.mountPoint("no-such-uuid"), std::nullopt);
}

TEST(DigikamCatalog, AlbumRootsStandForTodaysFolders) {
    auto mounts = mountsWith("/media/anna/Drive");

    struct Case {
        std::string identifier;
        std::string specificPath;
        std::optional<std::string> folder;
    };

    const std::vector<Case> cases = {
        {"volumeid:?uuid=" + std::string(kDriveUuid), "/Pictures", "/media/anna/Drive/Pictures"},
        {"volumeid:?uuid=" + std::string(kDriveUuid) + "&fileuuid=1234", "/", "/media/anna/Drive"},
        {"volumeid:?uuid=" + std::string(kAwayUuid), "/Pictures", std::nullopt},
        {"volumeid:?path=%2Fhome%2Fanna%2FMy%20Photos", "/", "/home/anna/My Photos"},
        {"volumeid:?path=%2Fhome%2Fanna", "/Pictures", "/home/anna/Pictures"},
        {"networkshareid:?mountpath=%2Fmnt%2Fnas", "/", "/mnt/nas"},
        {"volumeid:?path=relative", "/", std::nullopt},
        {"somethingelse:?uuid=x", "/", std::nullopt},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(DigikamCatalog::rootPath(one.identifier, one.specificPath, mounts), one.folder)
            << one.identifier;
    }
}

// Two roots that are there (one by a path identifier, one on a mounted
// drive) and one on a drive that is not connected.
struct Library {
    TempTree tree;
    std::string drive = tree.folder("media/Drive");
    std::string home = tree.folder("home/anna");
    std::string a = tree.file("home/anna/Pictures/a.jpg", testing::photoOfSize(3, 12'000));
    std::string b = tree.file("media/Drive/Archive/2019/b.jpg", testing::readFile(a));
    DigikamFixture fixture{tree.path("db/digikam4.db")};
    platform::MountedVolumeMounts mounts = mountsWith(drive);
    std::int64_t aID = 0;
    std::int64_t bID = 0;
    std::int64_t awayID = 0;
    std::int64_t hiddenID = 0;
    std::int64_t goneID = 0;

    Library() {
        auto homeRoot = fixture.addPathRoot(percentEncoded(home + "/Pictures"));
        auto rootAlbum = fixture.addAlbum(homeRoot, "/");
        aID = fixture.addImage(rootAlbum, "a.jpg", 1, 3);
        hiddenID = fixture.addImage(rootAlbum, "old.jpg", 4);
        goneID = fixture.addImage(rootAlbum, "gone.jpg");
        auto driveRoot = fixture.addUuidRoot(std::string(kDriveUuid), "/Archive");
        bID = fixture.addImage(fixture.addAlbum(driveRoot, "/2019"), "b.jpg");
        auto awayRoot = fixture.addUuidRoot(std::string(kAwayUuid), "/Photos");
        awayID = fixture.addImage(fixture.addAlbum(awayRoot, "/Trip"), "c.jpg");
    }

    static std::string percentEncoded(const std::string& path) {
        std::string encoded;
        for (char c : path) {
            encoded += c == '/' ? std::string("%2F") : std::string(1, c);
        }
        return encoded;
    }

    [[nodiscard]] DigikamCatalog read() const {
        auto catalog = DigikamCatalog::read(fixture.path(), mounts);
        EXPECT_TRUE(catalog.has_value()) << catalog.error().text();
        return catalog.value_or(DigikamCatalog{});
    }

    [[nodiscard]] const DigikamPhoto* photo(const DigikamCatalog& catalog, std::int64_t id) const {
        auto found = std::ranges::find(catalog.photos, id,
                                       [](const DigikamPhoto& one) { return one.ref.imageID; });
        return found == catalog.photos.end() ? nullptr : &*found;
    }
};

TEST(DigikamCatalog, ReadsVisibleItemsUnderEachRoot) {
    Library library;
    auto catalog = library.read();

    EXPECT_EQ(catalog.schemaVersion, "16");
    EXPECT_TRUE(catalog.isTestedVersion());
    ASSERT_EQ(catalog.photos.size(), 4u) << "the item of status 4 is not visible";
    EXPECT_EQ(library.photo(catalog, library.hiddenID), nullptr);
    const auto* a = library.photo(catalog, library.aID);
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(a->path, library.a);
    EXPECT_TRUE(a->exists);
    EXPECT_EQ(a->ref.rating, 3);
    const auto* b = library.photo(catalog, library.bID);
    ASSERT_NE(b, nullptr);
    EXPECT_EQ(b->path, library.b);
    EXPECT_TRUE(b->exists);
    const auto* away = library.photo(catalog, library.awayID);
    ASSERT_NE(away, nullptr);
    EXPECT_TRUE(away->notConnected);
    EXPECT_EQ(away->path, "/Photos/Trip/c.jpg");
    EXPECT_THAT(catalog.missing(), ElementsAre(::testing::Field(
                                       &DigikamPhoto::path, library.home + "/Pictures/gone.jpg")));
    EXPECT_THAT(catalog.notConnected(), ElementsAre(*away));
    EXPECT_THAT(catalog.rootFolders,
                ElementsAre(library.home + "/Pictures", library.drive + "/Archive/2019"));
}

TEST(DigikamCatalog, LabelsAndTagsAreTheUsersWork) {
    Library library;
    auto& fixture = library.fixture;
    fixture.tag(library.aID, fixture.internalTag("Pick Label Accepted"));
    fixture.tag(library.aID, fixture.internalTag("Color Label Blue"));
    auto people = fixture.addTag(0, "People");
    fixture.tag(library.aID, fixture.addTag(people, "Anna"));
    fixture.tag(library.aID, fixture.addTag(0, "Holiday"));
    fixture.tag(library.bID, fixture.internalTag("Pick Label Rejected"));
    fixture.tag(library.bID, fixture.addTag(0, "Brevant Duplicates"));

    auto catalog = library.read();

    const auto* a = library.photo(catalog, library.aID);
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(a->ref, (DigikamRef{.imageID = library.aID,
                                  .rating = 3,
                                  .pickLabel = DigikamRef::kAccepted,
                                  .colorLabel = 5,
                                  .tags = 2}));
    EXPECT_TRUE(a->ref.workedOn());
    EXPECT_EQ(a->ref.workSummary(), "3 stars, picked, colour labelled, has 2 tags");
    EXPECT_EQ(a->ref.workDetails(), "3 stars, picked, labelled Blue, has 2 tags");
    EXPECT_FALSE(a->isTagged);
    const auto* b = library.photo(catalog, library.bID);
    ASSERT_NE(b, nullptr);
    // A rejected pick is no work to keep, and the duplicates tag is ours.
    EXPECT_EQ(b->ref.pickLabel, DigikamRef::kRejected);
    EXPECT_EQ(b->ref.tags, 0);
    EXPECT_FALSE(b->ref.workedOn());
    EXPECT_TRUE(b->isTagged);
    EXPECT_THAT(DigikamScanner::alreadyMarked(catalog), ElementsAre(library.b));
}

TEST(DigikamScanner, SkipsTheDriveThatIsNotConnectedAndComparesTheOtherRoots) {
    Library library;
    auto catalog = library.read();
    CancellationFlag cancel;

    auto result = DigikamScanner::scan(catalog, false, cancel, nullptr);

    ASSERT_EQ(result.groups.size(), 1u);
    std::vector<std::string> members;
    for (const auto& member : result.groups[0].members) {
        members.push_back(member.path);
        ASSERT_TRUE(member.catalog.hasValue());
        EXPECT_EQ(member.catalog->application(), CatalogApplication::digikam);
    }
    std::ranges::sort(members);
    EXPECT_THAT(members, ElementsAre(library.a, library.b));
    std::vector<std::pair<std::string, std::string>> skipped;
    skipped.reserve(result.skipped.size());
    for (const auto& file : result.skipped) {
        skipped.emplace_back(file.path, file.detail.value_or(""));
    }
    EXPECT_THAT(skipped,
                ElementsAre(std::pair{library.home + "/Pictures/gone.jpg",
                                      DigikamScanner::missingSentence()},
                            std::pair{std::string("/Photos/Trip/c.jpg"),
                                      std::string("digiKam lists it on a drive that is not "
                                                  "connected, so it was not compared.")}));
}

TEST(DigikamCatalog, OnlyADigikamDatabaseIsALibrary) {
    TempTree tree;
    testing::DigikamFixture other{tree.path("db/library.db")};

    auto read = DigikamCatalog::read(other.path());

    ASSERT_FALSE(read.has_value());
    EXPECT_EQ(read.error().text(), "That is not a digiKam library (digikam4.db).");
}

TEST(DigikamCatalog, TheConfigurationNamesTheDatabaseOrRefusesMySql) {
    TempTree tree;
    testing::DigikamFixture library{tree.path("Library/digikam4.db")};
    std::string pictures = platform::homeFolder() + "/Pictures";

    auto mysql = DigikamCatalog::choose(pictures, "[General Settings]\nDatabase Type=QSQLITE\n"
                                                  "[Database Settings]\nDatabase "
                                                  "Type=QMYSQL\nDatabase Name=digikam\n");
    auto sqlite = DigikamCatalog::choose(pictures, "[Database Settings]\nDatabase Type=QSQLITE\n"
                                                   "Database Name=" +
                                                       tree.path("Library") + "/\n");
    auto given = DigikamCatalog::choose(tree.path("Library"), std::nullopt);
    auto empty = DigikamCatalog::choose(tree.path("Nothing"), std::nullopt);

    EXPECT_EQ(mysql, (CatalogChoice{std::nullopt,
                                    "digiKam keeps this library in MySQL/MariaDB, which Brevant "
                                    "does not read. Only a digiKam library in SQLite "
                                    "(digikam4.db) can be scanned here."}));
    EXPECT_EQ(sqlite, (CatalogChoice{library.path(), std::nullopt}));
    EXPECT_EQ(given, (CatalogChoice{library.path(), std::nullopt}));
    EXPECT_EQ(empty.catalog, std::nullopt);
    EXPECT_EQ(empty.notice, "There is no digiKam library (digikam4.db) in " + tree.path("Nothing") +
                                ". Choose digiKam's database folder.");
}

TEST(DigikamCatalog, IsOpenWhileDigikamRuns) {
    auto running = [](std::string name) {
        return [name] {
            return std::vector<platform::RunningApplication>{
                {1, name, "/usr/bin/" + name,
                 platform::bundleIdentifierOf(name, "/usr/bin/" + name)}};
        };
    };

    EXPECT_TRUE(DigikamCatalog::isOpen("/x/digikam4.db", running("digikam")));
    EXPECT_FALSE(DigikamCatalog::isOpen("/x/digikam4.db", running("showfoto")));
    EXPECT_FALSE(DigikamCatalog::isOpen("/x/digikam4.db", nullptr));
}

} // namespace
} // namespace brevant
