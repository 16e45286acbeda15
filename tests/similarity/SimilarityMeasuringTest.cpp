#include "tests/fixtures/Groups.hpp"
#include "tests/fixtures/ImageFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"

#include "engine/similarity/FaceCheck.hpp"
#include "engine/similarity/FeatureCache.hpp"
#include "engine/similarity/SimilarityMatcher.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace brevant {
namespace {

using testing::memberPaths;

using ::testing::ElementsAre;

PhotoAsset assetAt(const std::string& path) {
    PhotoAsset asset;
    asset.path = path;
    asset.snapshot = FileSnapshot::read(path).value_or(FileSnapshot{});
    return asset;
}

TEST(SimilarityMeasuring, MeasuresThroughTheCacheAndGroups) {
    testing::TempTree tree;
    std::string original = testing::writeScene(tree.path("a/original.jpg"), 800, 600, 21);
    std::string small = tree.path("a/small.jpg");
    testing::saveImage(testing::openImage(original).resize(0.5), small);
    std::string other = testing::writeScene(tree.path("a/other.jpg"), 800, 600, 22);
    std::string damaged = tree.file("a/damaged.jpg", "not a picture at all");
    std::vector<PhotoAsset> pictures{assetAt(original), assetAt(small), assetAt(other),
                                     assetAt(damaged)};
    std::string cacheFile = tree.path("data/features.plist");

    CancellationFlag cancel;
    std::vector<int> reported;
    std::optional<SimilarityIndex> index;
    {
        FeatureCache cache(cacheFile);
        index = SimilarityMatcher::index(pictures, &cache, false, cancel,
                                         [&](int done) { reported.push_back(done); });
        ASSERT_TRUE(index);
        EXPECT_THAT(index->unmeasured, ElementsAre(damaged));
        EXPECT_EQ(index->features[3], std::nullopt);
        auto groups = index->groups(SimilarityPreset::conservative);
        ASSERT_EQ(groups.size(), 1U);
        EXPECT_THAT(memberPaths(groups[0]), ElementsAre(original, small));
        EXPECT_FALSE(reported.empty());
        EXPECT_TRUE(std::ranges::is_sorted(reported));
        EXPECT_LE(reported.back(), 4);
    }
    // The cache was saved whole, and a second run reads the same records
    // from it; only the index let the detail hashes go once paired.
    FeatureCache reloaded(cacheFile);
    EXPECT_EQ(reloaded.count(), 3U);
    auto cached = reloaded.lookup(pictures[1]);
    ASSERT_TRUE(cached);
    EXPECT_EQ(cached->detailHashes.size(), 8U);
    EXPECT_TRUE(index->features[1]->detailHashes.empty());
    cached->detailHashes.clear();
    EXPECT_EQ(cached, index->features[1]);
    auto again = SimilarityMatcher::index(pictures, &reloaded, false, cancel, nullptr);
    ASSERT_TRUE(again);
    EXPECT_EQ(again->features, index->features);
    EXPECT_EQ(again->pairs, index->pairs);

    CancellationFlag stopped;
    stopped.cancel();
    EXPECT_FALSE(SimilarityMatcher::index(pictures, nullptr, false, stopped, nullptr));
}

TEST(SimilarityMeasuring, FacesAreReadForGroupMembersAndKept) {
    const std::string portrait =
        BREVANT_SOURCE_DIR "/../shared/testdata/faces/smile-neutral/facerec_obama_smiling.jpg";
    if (testing::readFile(portrait).empty()) {
        GTEST_SKIP() << "no face photos";
    }
    testing::TempTree tree;
    std::string first = tree.path("p/first.jpg");
    std::string second = tree.path("p/second.jpg");
    testing::saveImage(testing::openImage(portrait), first);
    testing::saveImage(testing::openImage(portrait).resize(0.8), second);
    std::vector<PhotoAsset> pictures{assetAt(first), assetAt(second)};
    std::string cacheFile = tree.path("features.plist");
    CancellationFlag cancel;

    FeatureCache cache(cacheFile);
    auto index = SimilarityMatcher::index(pictures, &cache, false, cancel, nullptr);
    ASSERT_TRUE(index);
    auto groups = index->groups(SimilarityPreset::balanced);
    ASSERT_EQ(groups.size(), 1U);
    auto faced = SimilarityMatcher::checkFaces(groups, *index, &cache, cancel, nullptr);
    ASSERT_TRUE(faced);
    for (const auto& picture : pictures) {
        const ImageFeatures* features = faced->featuresFor(picture);
        ASSERT_NE(features, nullptr);
        EXPECT_EQ(features->faces, (FaceReading{1, 0, 1, FaceCheck::kRevision})) << picture.path;
    }
    FeatureCache reloaded(cacheFile);
    EXPECT_EQ(reloaded.faces(pictures[0]), (FaceReading{1, 0, 1, FaceCheck::kRevision}));
}

} // namespace
} // namespace brevant
