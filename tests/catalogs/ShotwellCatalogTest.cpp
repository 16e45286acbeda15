#include "engine/catalogs/ShotwellCatalog.hpp"

#include "tests/catalogs/ShotwellFixture.hpp"
#include "tests/fixtures/TempTree.hpp"

#include "engine/catalogs/ShotwellScanner.hpp"
#include "engine/catalogs/ShotwellTagList.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace brevant {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::ShotwellLibraryFixture;
using testing::TempTree;

struct ListCase {
    const char* name;
    std::string text;
    std::vector<std::string> entries;
    std::string written;
};

class ShotwellTagListRoundTrip : public ::testing::TestWithParam<ListCase> {};

TEST_P(ShotwellTagListRoundTrip, KeepsEveryEntryInItsOrder) {
    auto list = ShotwellTagList::parse(GetParam().text);

    EXPECT_EQ(list.entries, GetParam().entries);
    EXPECT_EQ(list.text(), GetParam().written);
}

INSTANTIATE_TEST_SUITE_P(
    Lists, ShotwellTagListRoundTrip,
    ::testing::Values(
        ListCase{"empty", "", {}, ""},
        ListCase{"photosAndAVideo",
                 "thumb0000000000000003,video-0000000000000001,thumb000000000000002a,",
                 {"thumb0000000000000003", "video-0000000000000001", "thumb000000000000002a"},
                 "thumb0000000000000003,video-0000000000000001,thumb000000000000002a,"},
        ListCase{"legacyWithoutTrailingComma",
                 "7,thumb0000000000000001",
                 {"7", "thumb0000000000000001"},
                 "7,thumb0000000000000001,"},
        ListCase{"emptyEntries",
                 ",,thumb0000000000000001,,",
                 {"thumb0000000000000001"},
                 "thumb0000000000000001,"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(ShotwellTagList, WritesAndReadsShotwellsPhotoIDs) {
    EXPECT_EQ(ShotwellTagList::sourceID(42), "thumb000000000000002a");
    EXPECT_EQ(ShotwellTagList::photoID("thumb000000000000002a"), 42);
    EXPECT_EQ(ShotwellTagList::photoID("42"), 42);
    EXPECT_EQ(ShotwellTagList::photoID("video-000000000000002a"), std::nullopt);
    EXPECT_EQ(ShotwellTagList::photoID("thumb2a"), std::nullopt);
    EXPECT_EQ(ShotwellTagList::photoID("thumb00000000000000zz"), std::nullopt);
}

TEST(ShotwellTagList, AddsAtTheEndAndRemovesOnlyItsOwnEntry) {
    auto list = ShotwellTagList::parse("video-0000000000000002,thumb0000000000000001,");

    EXPECT_FALSE(list.addPhoto(1));
    EXPECT_TRUE(list.addPhoto(2));
    EXPECT_EQ(list.text(), "video-0000000000000002,thumb0000000000000001,thumb0000000000000002,");
    EXPECT_TRUE(list.removePhoto(1));
    EXPECT_FALSE(list.removePhoto(1));
    EXPECT_EQ(list.text(), "video-0000000000000002,thumb0000000000000002,");
}

TEST(ShotwellCatalog, ReadsPhotosWithTheirWorkAndLeavesVideosOut) {
    TempTree tree;
    std::string a = tree.file("Photos/a.jpg", "a");
    std::string b = tree.file("Photos/b.jpg", "b");
    std::string c = tree.file("Photos/2024/c.jpg", "c");
    std::string clip = tree.file("Photos/clip.mp4", "v");
    ShotwellLibraryFixture fixture(tree.path("shotwell/data/photo.db"));
    auto first = fixture.addPhoto(a, {.flags = ShotwellCatalog::kFlaggedFlag,
                                      .rating = 4,
                                      .transformations = "[adjustments]\nexposure=0.5\n"});
    auto second = fixture.addPhoto(b, {.flags = ShotwellCatalog::kTrashFlag, .rating = -1});
    auto third = fixture.addPhoto(c, {.flags = ShotwellCatalog::kHiddenFlag, .editableID = 3});
    auto gone = fixture.addPhoto(tree.path("Photos/gone.jpg"));
    auto video = fixture.addVideo(clip);
    fixture.addTag("Family", fmt::format("{},video-{:016x},{},", ShotwellTagList::sourceID(first),
                                         video, third));
    fixture.addTag("/Trips/Rome", ShotwellTagList::sourceID(first) + ",");
    fixture.addTag("Brevant Duplicates", ShotwellTagList::sourceID(second) + ",");
    std::string digest = testing::fileDigest(fixture.path());

    auto catalog = ShotwellCatalog::read(fixture.path());

    ASSERT_TRUE(catalog.has_value()) << catalog.error().text();
    EXPECT_EQ(catalog->schemaVersion, "20");
    EXPECT_TRUE(catalog->isTestedVersion());
    ASSERT_EQ(catalog->photos.size(), 4u);
    EXPECT_EQ(
        catalog->photos[0],
        (ShotwellPhoto{
            a,
            true,
            false,
            false,
            {.imageID = first, .rating = 4, .isFlagged = true, .isEdited = true, .tags = 2}}));
    EXPECT_EQ(catalog->photos[1],
              (ShotwellPhoto{b, true, true, true, {.imageID = second, .rating = -1}}));
    EXPECT_EQ(catalog->photos[2],
              (ShotwellPhoto{c,
                             true,
                             false,
                             false,
                             {.imageID = third, .isHidden = true, .isEdited = true, .tags = 1}}));
    EXPECT_FALSE(catalog->photos[3].exists);
    EXPECT_EQ(catalog->photos[3].ref.imageID, gone);
    EXPECT_THAT(catalog->missing(), ElementsAre(catalog->photos[3]));
    EXPECT_THAT(catalog->rootFolders, ElementsAre(tree.path("Photos"), tree.path("Photos/2024")));
    EXPECT_EQ(catalog->photos[0].ref.workSummary(), "edited, 4 stars, flagged, has tags");
    EXPECT_FALSE(catalog->photos[1].ref.workedOn());
    // Trashed photos are on their way out already; the tagged one is listed
    // as marked only outside the Trash.
    EXPECT_FALSE(ShotwellScanner::isUsable(catalog->photos[1]));
    EXPECT_THAT(ShotwellScanner::alreadyMarked(*catalog), IsEmpty());
    EXPECT_EQ(testing::fileDigest(fixture.path()), digest);
}

TEST(ShotwellCatalog, KnowsTheCurrentSchemaAndNamesAnUnknownOne) {
    TempTree tree;
    ShotwellLibraryFixture current(tree.path("current/photo.db"), 24);
    ShotwellLibraryFixture future(tree.path("future/photo.db"), 24);
    future.setVersion(25);

    auto read = ShotwellCatalog::read(current.path());
    auto newer = ShotwellCatalog::read(future.path());

    ASSERT_TRUE(read.has_value() && newer.has_value());
    EXPECT_TRUE(read->isTestedVersion());
    EXPECT_EQ(newer->schemaVersion, "25");
    EXPECT_FALSE(newer->isTestedVersion());
}

TEST(ShotwellCatalog, OnlyAPhotoDatabaseIsALibrary) {
    TempTree tree;
    std::string other = tree.file("Other/library.db", "not a library");

    auto read = ShotwellCatalog::read(other);

    ASSERT_FALSE(read.has_value());
    EXPECT_EQ(read.error().text(), "That is not a Shotwell library (photo.db).");
    EXPECT_EQ(ShotwellCatalog::choose(tree.path("Other")).notice,
              "There is no Shotwell library (photo.db) in " + tree.path("Other") +
                  ". Choose the folder the library is in.");
    ShotwellLibraryFixture fixture(tree.path("Library/photo.db"));
    EXPECT_EQ(ShotwellCatalog::choose(tree.path("Library")).catalog, fixture.path());
}

TEST(ShotwellCatalog, IsOpenWhileAShotwellProcessRuns) {
    auto running = [](const std::string& name) {
        return [name] {
            return std::vector<platform::RunningApplication>{
                {.processID = 7,
                 .name = name,
                 .executable = "/usr/bin/" + name,
                 .bundleIdentifier = platform::bundleIdentifierOf(name, "/usr/bin/" + name)}};
        };
    };

    EXPECT_TRUE(ShotwellCatalog::isOpen("/x/photo.db", running("shotwell")));
    EXPECT_FALSE(ShotwellCatalog::isOpen("/x/photo.db", running("shotwell-helper")));
    EXPECT_FALSE(ShotwellCatalog::isOpen("/x/photo.db", nullptr));
}

} // namespace
} // namespace brevant
