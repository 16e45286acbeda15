#include "tests/fixtures/ImageFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"

#include "engine/pipeline/DeclaredDifferences.hpp"
#include "engine/pipeline/ScanPipeline.hpp"
#include "engine/review/NotDuplicateStore.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <expected>
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

// A scan a review is made over, as the window asks for one.
ScanRequest reviewedRequest(const TempTree& tree) {
    ScanRequest request = requestFor(tree, ScanMode::similar(SimilarityPreset::balanced));
    request.review = ReviewRules{};
    return request;
}

// The review's road: recorded, then the groups formed again.
std::expected<ScanOutcome, std::string>
declared(const ScanOutcome& outcome, const std::vector<std::vector<std::string>>& decisions) {
    auto index = DeclaredDifferences::declare(outcome, decisions, CancellationFlag());
    if (!index) {
        return std::unexpected(index.error());
    }
    return DeclaredDifferences::regrouped(outcome, *index);
}

TEST(NotDuplicates, DeclaredInTheReviewGroupAsARescanWould) {
    TempTree tree;
    ThreeVersions photos(tree);
    ScanRequest request = reviewedRequest(tree);
    ScanOutcome before = scan(request);
    ASSERT_EQ(membersOf(before).size(), 1U);
    ASSERT_TRUE(before.session->mark(photos.smaller).has_value());

    auto after = declared(before, {{photos.original, photos.resaved}});
    ASSERT_TRUE(after.has_value()) << after.error();
    EXPECT_EQ(membersOf(*after), membersOf(scan(request)));
    ASSERT_EQ(after->session->groups().size(), 1U);
    EXPECT_EQ(after->session->groups()[0].members.size(), 2U);
    // The smaller export stays with one of them, and stays marked.
    EXPECT_TRUE(after->session->isMarked(photos.smaller));
    NotDuplicateStore store(request.notDuplicates);
    ASSERT_EQ(store.all().size(), 1U);
    EXPECT_EQ(store.all()[0].photos.size(), 2U);

    // Every copy of the group different from the others: the group goes.
    auto apart = declared(*after, {{photos.original, photos.smaller, photos.resaved}});
    ASSERT_TRUE(apart.has_value()) << apart.error();
    EXPECT_TRUE(apart->session->groups().empty());
    EXPECT_TRUE(membersOf(scan(request)).empty());
}

TEST(NotDuplicates, RefusedForIdenticalCopiesWithNothingRecorded) {
    TempTree tree;
    ThreeVersions photos(tree);
    std::string same = tree.path("photos/IMG_0001 same.jpg");
    std::filesystem::copy_file(photos.original, same);
    ScanRequest request = reviewedRequest(tree);
    ScanOutcome before = scan(request);

    // One copy apart from the others, as pairs: the identical pair refuses
    // them all, so the first pair is not kept either.
    auto refused = declared(before, {{photos.original, photos.smaller}, {photos.original, same}});
    ASSERT_FALSE(refused.has_value());
    EXPECT_NE(refused.error().find("are identical copies"), std::string::npos) << refused.error();
    EXPECT_TRUE(NotDuplicateStore(request.notDuplicates).all().empty());

    // A scan of identical copies has no measurements to split.
    request.mode = ScanMode::identical();
    auto identical = declared(scan(request), {{photos.original, photos.smaller}});
    ASSERT_FALSE(identical.has_value());
    EXPECT_EQ(identical.error(), DeclaredDifferences::kIdenticalNotDifferent);
    EXPECT_TRUE(NotDuplicateStore(request.notDuplicates).all().empty());
}

} // namespace
} // namespace brevant
