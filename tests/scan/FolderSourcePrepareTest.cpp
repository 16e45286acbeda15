#include "tests/fixtures/TempTree.hpp"

#include "engine/scan/FolderSource.hpp"

#include <gtest/gtest.h>

namespace brevant {
namespace {

using testing::TempTree;
using Kind = ExcludedItem::Kind;

TEST(FolderSourcePrepare, OverlappingRootsAreScannedOnce) {
    TempTree tree;
    std::string outer = tree.folder("X");
    std::string inner = tree.folder("X/2020");
    std::string beside = tree.folder("X 2");

    auto prepared = FolderSource::prepare({inner, outer + "/", beside, outer});

    EXPECT_EQ(prepared.roots, (std::vector<std::string>{outer, beside}));
    ASSERT_EQ(prepared.refused.size(), 2u);
    EXPECT_EQ(prepared.refused[0].path, outer); // the same folder chosen twice
    EXPECT_EQ(prepared.refused[0].kind, Kind::overlappingRoot);
    EXPECT_EQ(prepared.refused[1].path, inner);
    EXPECT_EQ(prepared.refused[1].kind, Kind::overlappingRoot);
    EXPECT_EQ(prepared.refused[1].detail,
              "Inside " + outer +
                  ", which is already chosen, so it is scanned once as part of that.");
}

TEST(FolderSourcePrepare, RefusesWhatCannotBeARoot) {
    TempTree tree;
    std::string missing = tree.path("gone");
    std::string file = tree.file("photo.jpg", "x");
    std::string library = tree.folder("Family.photoslibrary/originals");
    std::string libraryItself = tree.path("Family.photoslibrary");
    std::string good = tree.folder("Good");

    auto prepared = FolderSource::prepare({missing, file, library, libraryItself, good});

    EXPECT_EQ(prepared.roots, std::vector<std::string>{good});
    ASSERT_EQ(prepared.refused.size(), 4u);
    for (const auto& item : prepared.refused) {
        EXPECT_EQ(item.kind, Kind::refusedRoot) << item.path;
    }
    EXPECT_EQ(prepared.refused[0].path, missing);
    EXPECT_EQ(prepared.refused[0].detail,
              "Not found. If it is on a drive, check the drive is connected.");
    EXPECT_EQ(prepared.refused[1].detail, "Not a folder.");
    EXPECT_EQ(prepared.refused[2].detail,
              "Inside a photo library. Its app manages those files, so Brevant never opens it.");
    EXPECT_EQ(prepared.refused[3].path, libraryItself);
}

TEST(FolderSourcePrepare, ResolvesLinksAndRelativeForms) {
    TempTree tree;
    std::string real = tree.folder("Photos");
    std::string link = tree.symbolicLink(real, "Shortcut");

    auto prepared = FolderSource::prepare({link + "/./", tree.root() + "/Photos/../Photos"});

    EXPECT_EQ(prepared.roots, std::vector<std::string>{real});
    ASSERT_EQ(prepared.refused.size(), 1u);
    EXPECT_EQ(prepared.refused[0].kind, Kind::overlappingRoot);
}

} // namespace
} // namespace brevant
