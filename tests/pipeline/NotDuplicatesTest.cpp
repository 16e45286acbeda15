#include "tests/fixtures/ImageFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"

#include "engine/pipeline/ScanPipeline.hpp"
#include "engine/review/NotDuplicateStore.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace brevant {
namespace {

using testing::TempTree;

// One photo three times: the original, a smaller export and a re-saved copy.
struct ThreeVersions {
    explicit ThreeVersions(const TempTree& tree)
        : original(testing::writeScene(tree.path("photos/IMG_0001.jpg"), 800, 600, 41))
        , smaller(tree.path("photos/IMG_0001 small.jpg"))
        , resaved(tree.path("photos/IMG_0001 copy.jpg")) {
        testing::saveImage(testing::openImage(original).resize(0.75), smaller);
        testing::saveImage(testing::openImage(original), resaved, {.quality = 70});
    }

    std::string original;
    std::string smaller;
    std::string resaved;
};

ScanRequest requestFor(const TempTree& tree, ScanMode mode) {
    return {.source = ScanSource::ofFolders({tree.path("photos")}),
            .mode = mode,
            .notDuplicates = tree.path("data/not-duplicates.json")};
}

// Each group's members, sorted, groups sorted.
std::vector<std::vector<std::string>> membersOf(const ScanOutcome& outcome) {
    std::vector<std::vector<std::string>> groups;
    for (const auto& group : outcome.found()) {
        std::vector<std::string> paths;
        for (const auto& member : group.members) {
            paths.push_back(member.path);
        }
        std::ranges::sort(paths);
        groups.push_back(std::move(paths));
    }
    std::ranges::sort(groups);
    return groups;
}

ScanOutcome scan(const ScanRequest& request) {
    auto outcome = ScanPipeline().run(request, CancellationFlag(), {});
    EXPECT_TRUE(outcome.has_value());
    return outcome ? std::move(*outcome) : ScanOutcome{};
}

bool holdsBoth(const std::vector<std::string>& group, const std::string& a, const std::string& b) {
    return std::ranges::find(group, a) != group.end() && std::ranges::find(group, b) != group.end();
}

TEST(NotDuplicates, SplitTheirGroupAndSurviveARenameAndARescan) {
    TempTree tree;
    ThreeVersions photos(tree);
    ScanRequest request = requestFor(tree, ScanMode::similar(SimilarityPreset::balanced));
    auto before = membersOf(scan(request));
    ASSERT_EQ(before.size(), 1U);
    ASSERT_EQ(before[0].size(), 3U);

    NotDuplicateStore store(request.notDuplicates);
    ASSERT_TRUE(store.declare({photos.original, photos.resaved}).has_value());

    // The pair is no longer accepted, so complete-link grouping keeps the
    // other two pairs apart too: the smaller export goes with one of them.
    auto after = membersOf(scan(request));
    ASSERT_EQ(after.size(), 1U);
    EXPECT_EQ(after[0].size(), 2U);
    EXPECT_FALSE(holdsBoth(after[0], photos.original, photos.resaved));
    EXPECT_TRUE(std::ranges::find(after[0], photos.smaller) != after[0].end());

    // Known by contents: a renamed copy is still the same photo.
    std::string renamed = tree.path("photos/holiday.jpg");
    std::filesystem::rename(photos.original, renamed);
    auto renamedGroups = membersOf(scan(request));
    ASSERT_EQ(renamedGroups.size(), 1U);
    EXPECT_FALSE(holdsBoth(renamedGroups[0], renamed, photos.resaved));

    // Forgotten, the three are one group again.
    ASSERT_TRUE(store.forget(1).has_value());
    auto forgotten = membersOf(scan(request));
    ASSERT_EQ(forgotten.size(), 1U);
    EXPECT_EQ(forgotten[0].size(), 3U);
}

TEST(NotDuplicates, KeepTwoShotsOutOfOneSeries) {
    TempTree tree;
    std::string first = testing::writeScene(tree.path("photos/IMG_0001.jpg"), 800, 600, 42,
                                            {.exifDate = "2024:05:01 10:00:00"});
    std::string second = tree.path("photos/IMG_0002.jpg");
    testing::saveImage(testing::openImage(first), second,
                       {.quality = 80, .exifDate = "2024:05:01 10:00:01"});
    ScanRequest request = requestFor(tree, ScanMode::series());
    ASSERT_EQ(membersOf(scan(request)), (std::vector<std::vector<std::string>>{{first, second}}));

    NotDuplicateStore store(request.notDuplicates);
    ASSERT_TRUE(store.declare({first, second}).has_value());
    EXPECT_TRUE(membersOf(scan(request)).empty());
}

} // namespace
} // namespace brevant
