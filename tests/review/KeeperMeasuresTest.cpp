#include "engine/review/KeeperMeasures.hpp"

#include "tests/review/ReviewFixtures.hpp"

#include "engine/review/ReviewSession.hpp"
#include "engine/similarity/FaceCheck.hpp"

#include <gtest/gtest.h>

namespace brevant {
namespace {

using testing::copyAt;
using testing::groupOf;

ImageFeatures measuredAs(double sharpness, std::optional<int> quality,
                         std::optional<FaceReading> faces) {
    ImageFeatures features;
    features.sharpness = sharpness;
    features.qualityScore = quality;
    if (quality) {
        features.isUtility = false;
        features.qualityRevision = 1;
    }
    features.faces = faces;
    return features;
}

// Three pictures of a scan: a and b measured (b with its faces read), c not.
SimilarityIndex threePictures() {
    std::vector<PhotoAsset> pictures{copyAt("/photos/a.jpg", 1), copyAt("/photos/b.jpg", 2),
                                     copyAt("/photos/c.jpg", 3)};
    std::vector<std::optional<ImageFeatures>> features{
        measuredAs(120.5, 64, std::nullopt),
        measuredAs(200, std::nullopt, FaceReading{2, 0, 1, FaceCheck::kRevision}), std::nullopt};
    return SimilarityIndex(std::move(pictures), std::move(features), {}, 0, {"/photos/c.jpg"});
}

TEST(KeeperMeasures, AnswerWhatTheScanMeasured) {
    KeeperMeasures measures = KeeperMeasures::from(threePictures());
    PhotoAsset a = copyAt("/photos/a.jpg", 1);
    PhotoAsset b = copyAt("/photos/b.jpg", 2);
    EXPECT_EQ(measures.sharpness(a), 120.5);
    EXPECT_EQ(measures.quality(a), 64);
    EXPECT_EQ(measures.faces(a), std::nullopt);
    EXPECT_EQ(measures.sharpness(b), 200.0);
    EXPECT_EQ(measures.quality(b), std::nullopt);
    EXPECT_EQ(measures.faces(b), (FaceReading{2, 0, 1, FaceCheck::kRevision}));

    // Unmeasured, unknown, or another file at the same path: nothing.
    EXPECT_EQ(measures.sharpness(copyAt("/photos/c.jpg", 3)), std::nullopt);
    EXPECT_EQ(measures.sharpness(copyAt("/photos/z.jpg", 9)), std::nullopt);
    PhotoAsset replaced = copyAt("/photos/a.jpg", 11);
    EXPECT_EQ(measures.sharpness(replaced), std::nullopt);
    EXPECT_EQ(measures.quality(replaced), std::nullopt);
}

TEST(KeeperMeasures, FeedTheSessionsKeeperChoice) {
    std::optional<KeeperMeasures> measures;
    {
        // The measures outlive the index they were drawn from.
        SimilarityIndex index = threePictures();
        measures = KeeperMeasures::from(index);
    }
    auto group = groupOf({copyAt("/photos/a.jpg", 1), copyAt("/photos/b.jpg", 2)});
    ReviewSession session({group}, nullptr, {}, {});
    session.setPriorities({KeeperPolicy::Priority::sharpest});
    auto unmeasured = session.suggestion(group);
    ASSERT_TRUE(unmeasured.has_value());
    EXPECT_EQ(unmeasured->reason, KeeperPolicy::kEqualCopiesReason);

    // 200 against 120.5 is more than 1.5 times as sharp.
    session.setSimilarity(measures);
    EXPECT_EQ(session.suggestion(group),
              (KeeperPolicy::Suggestion{"/photos/b.jpg", "It is clearly the sharpest"}));
    EXPECT_EQ(session.markAllSuggested(), 1);
    EXPECT_TRUE(session.isMarked("/photos/a.jpg"));
}

} // namespace
} // namespace brevant
