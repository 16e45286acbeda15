#include "engine/similarity/SimilarityIndex.hpp"

#include "tests/fixtures/Groups.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace brevant {
namespace {

using testing::memberPaths;

using ::testing::ElementsAre;

SimilarityIndex indexOf(int count, std::vector<SimilarPair> pairs,
                        const std::vector<std::int64_t>& sizes = {},
                        const std::vector<std::optional<double>>& dates = {}) {
    std::vector<PhotoAsset> pictures;
    std::vector<std::optional<ImageFeatures>> features;
    for (int i = 0; i < count; ++i) {
        PhotoAsset asset;
        asset.path = "/p/" + std::string(1, static_cast<char>('a' + i)) + ".jpg";
        asset.snapshot.size = i < static_cast<int>(sizes.size()) ? sizes[i] : 100;
        pictures.push_back(asset);
        ImageFeatures f;
        const auto& date = i < static_cast<int>(dates.size()) ? dates[i] : std::nullopt;
        if (date) {
            f.captureDate = Date{*date};
        }
        features.push_back(f);
    }
    return SimilarityIndex(pictures, features, std::move(pairs), 0, {});
}

SimilarPair pair(int a, int b, std::uint8_t distance, std::int16_t detail = 0, bool shapes = true) {
    return {.a = a, .b = b, .distance = distance, .shapesAgree = shapes, .detail = detail};
}

TEST(SimilarityIndex, PresetsDecideWhichPairsGroup) {
    auto index = indexOf(6, {pair(0, 1, 13), pair(2, 3, 12, 19), pair(4, 5, 12, 18)});
    auto broad = index.groups(SimilarityPreset::broad);
    auto balanced = index.groups(SimilarityPreset::balanced);
    auto conservative = index.groups(SimilarityPreset::conservative);
    ASSERT_EQ(broad.size(), 3u);
    ASSERT_EQ(balanced.size(), 2u);
    ASSERT_EQ(conservative.size(), 1u);
    EXPECT_THAT(memberPaths(conservative[0]), ElementsAre("/p/e.jpg", "/p/f.jpg"));
    EXPECT_EQ(conservative[0].kind, MatchKind::similar);
    EXPECT_THAT(conservative[0].id, ::testing::StartsWith("similar:/p/e.jpg:"));
    EXPECT_EQ(conservative[0].spread, 12.0f);
    EXPECT_EQ(index.groups(13.0).size(), 3u);
    EXPECT_EQ(index.groups(12.5).size(), 2u);
}

// What was decided about a group finds it again after a rescan only when
// its members are the same unchanged files.
TEST(SimilarityIndex, AGroupKeepsItsIdWhileItsMembersAreTheSameFiles) {
    auto idOf = [](const std::function<void(SimilarityIndex&)>& change) {
        auto index = indexOf(3, {pair(0, 1, 5)});
        change(index);
        auto groups = index.groups(SimilarityPreset::balanced);
        EXPECT_EQ(groups.size(), 1u);
        return groups.empty() ? std::string() : groups[0].id;
    };
    std::string id = idOf([](SimilarityIndex&) {});
    EXPECT_EQ(idOf([](SimilarityIndex&) {}), id);
    // Pictures outside the group play no part.
    EXPECT_EQ(idOf([](SimilarityIndex& index) { index.pictures[2].snapshot.size = 7; }), id);
    const std::vector<std::pair<std::string, std::function<void(SimilarityIndex&)>>> changes{
        {"size", [](SimilarityIndex& index) { index.pictures[1].snapshot.size = 101; }},
        {"time", [](SimilarityIndex& index) { index.pictures[1].snapshot.modifiedSeconds = 9; }},
        {"nanoseconds",
         [](SimilarityIndex& index) { index.pictures[0].snapshot.modifiedNanoseconds = 1; }},
        {"other member", [](SimilarityIndex& index) { index.pictures[1].path = "/p/x.jpg"; }},
    };
    for (const auto& [name, change] : changes) {
        EXPECT_NE(idOf(change), id) << name;
    }
}

TEST(SimilarityIndex, DistancesBeyondTheBroadestPresetAreTakenAsIt) {
    // Pairs further apart than 16 are not kept by the matcher; one that is
    // here anyway groups under no distance asked for.
    auto index = indexOf(4, {pair(0, 1, 16), pair(2, 3, 18)});
    EXPECT_EQ(index.groups(16.0).size(), 1u);
    EXPECT_EQ(index.groups(20.0), index.groups(16.0));
    EXPECT_EQ(index.groups(64.0), index.groups(SimilarityPreset::broad));
}

TEST(SimilarityIndex, ShapesThatDisagreeNeverGroup) {
    auto index = indexOf(2, {pair(0, 1, 0, 0, false)});
    EXPECT_TRUE(index.groups(SimilarityPreset::broad).empty());
}

TEST(SimilarityIndex, GroupingIsCompleteLink) {
    // A-B and B-C but not A-C: never all three together.
    auto chain = indexOf(3, {pair(0, 1, 2), pair(1, 2, 5)});
    auto groups = chain.groups(SimilarityPreset::balanced);
    ASSERT_EQ(groups.size(), 1u);
    EXPECT_THAT(memberPaths(groups[0]), ElementsAre("/p/a.jpg", "/p/b.jpg"));

    // With A-C as well, C joins; two clusters merge only when fully linked.
    auto full =
        indexOf(5, {pair(0, 1, 1), pair(1, 2, 3), pair(0, 2, 4), pair(3, 4, 1), pair(2, 3, 2)});
    auto merged = full.groups(SimilarityPreset::balanced);
    ASSERT_EQ(merged.size(), 2u);
    EXPECT_THAT(memberPaths(merged[0]), ElementsAre("/p/a.jpg", "/p/b.jpg", "/p/c.jpg"));
    EXPECT_EQ(merged[0].spread, 4.0f);
    EXPECT_THAT(memberPaths(merged[1]), ElementsAre("/p/d.jpg", "/p/e.jpg"));
}

TEST(SimilarityIndex, PicturesDeclaredDifferentNeverShareAGroupOrASeries) {
    double t = 700000000.0;
    auto index = indexOf(3, {pair(0, 1, 1), pair(1, 2, 2), pair(0, 2, 3)}, {}, {t, t + 1, t + 2});
    ASSERT_EQ(index.groups(SimilarityPreset::balanced)[0].members.size(), 3u);
    ASSERT_EQ(index.series(3.0, 34.0)[0].members.size(), 3u);

    index.declaredDifferent = {{0, 2}};
    EXPECT_TRUE(index.isDeclaredDifferent(2, 0));
    auto groups = index.groups(SimilarityPreset::balanced);
    ASSERT_EQ(groups.size(), 1u);
    EXPECT_THAT(memberPaths(groups[0]), ElementsAre("/p/a.jpg", "/p/b.jpg"));
    // The run ends before the picture declared different from one in it.
    auto series = index.series(3.0, 34.0);
    ASSERT_EQ(series.size(), 1u);
    EXPECT_THAT(memberPaths(series[0]), ElementsAre("/p/a.jpg", "/p/b.jpg"));
}

TEST(SimilarityIndex, GroupsAreOrderedByBytesFreedThenPath) {
    auto index =
        indexOf(6, {pair(0, 1, 1), pair(2, 3, 1), pair(4, 5, 1)}, {100, 100, 500, 900, 100, 100});
    auto groups = index.groups(SimilarityPreset::balanced);
    ASSERT_EQ(groups.size(), 3u);
    EXPECT_EQ(groups[0].members[0].path, "/p/c.jpg"); // frees 500
    EXPECT_EQ(groups[0].size, 900);
    EXPECT_EQ(groups[1].members[0].path, "/p/a.jpg"); // frees 100, path first
    EXPECT_EQ(groups[2].members[0].path, "/p/e.jpg");
}

TEST(SimilarityIndex, SeriesFollowBurstsWithinTheWindow) {
    double t = 700000000.0;
    auto index = indexOf(5, {pair(0, 1, 30), pair(1, 2, 30), pair(2, 3, 30)}, {},
                         {t, t + 2.5, t + 6.0, t + 8.0, std::nullopt});
    auto series = index.series(3.0, 34.0);
    ASSERT_EQ(series.size(), 2u);
    EXPECT_EQ(series[0].kind, MatchKind::series);
    EXPECT_THAT(memberPaths(series[0]), ElementsAre("/p/a.jpg", "/p/b.jpg")); // 2.5 s apart
    EXPECT_THAT(memberPaths(series[1]), ElementsAre("/p/c.jpg", "/p/d.jpg")); // 3.5 s gap before c
    EXPECT_EQ(series[0].spread, 30.0f);
    // Too far apart in looks ends the run too.
    EXPECT_TRUE(index.series(3.0, 29.0).empty());
}

TEST(SimilarityIndex, LookupsAndFaces) {
    auto index = indexOf(4, {pair(2, 3, 9), pair(0, 1, 4)});
    EXPECT_EQ(index.pairs[0].a, 0); // kept sorted
    EXPECT_EQ(index.distance(1, 0), 4.0f);
    EXPECT_EQ(index.distance(2, 3), 9.0f);
    EXPECT_EQ(index.distance(0, 2), std::nullopt);
    EXPECT_THAT(index.paired(), ElementsAre(0, 1, 2, 3));
    EXPECT_EQ(index.indexOf("/p/c.jpg"), 2);
    auto faced = index.withFaces({{"/p/b.jpg", FaceReading{2, 1, 1, 1}}});
    EXPECT_EQ(faced.featuresFor(faced.pictures[1])->faces, (FaceReading{2, 1, 1, 1}));
    EXPECT_EQ(index.featuresFor(index.pictures[1])->faces, std::nullopt);
}

} // namespace
} // namespace brevant
