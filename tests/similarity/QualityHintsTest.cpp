#include "engine/similarity/QualityHints.hpp"

#include "engine/similarity/FaceCheck.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace brevant {
namespace {

using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;

struct Member {
    double sharpness = 100;
    double meanLuma = 0.5;
    double clipped = 0;
    std::optional<int> score;
    std::optional<FaceReading> faces;
};

// A group of all the pictures of an index built from these measurements;
// a member given as nothing is unmeasured.
struct Fixture {
    SimilarityIndex index;
    DuplicateGroup group;

    explicit Fixture(const std::vector<std::optional<Member>>& members) {
        std::vector<PhotoAsset> pictures;
        std::vector<std::optional<ImageFeatures>> features;
        for (std::size_t i = 0; i < members.size(); ++i) {
            PhotoAsset asset;
            asset.path = "/p/" + std::to_string(i) + ".jpg";
            pictures.push_back(asset);
            const auto& member = members[i];
            if (!member) {
                features.emplace_back();
                continue;
            }
            ImageFeatures f;
            f.sharpness = member->sharpness;
            f.meanLuma = member->meanLuma;
            f.clipped = member->clipped;
            f.qualityScore = member->score;
            f.faces = member->faces;
            features.push_back(f);
        }
        group.members = pictures;
        index = SimilarityIndex(std::move(pictures), std::move(features), {}, 0, {});
    }
};

TEST(QualityHints, SharpestNeedsOneAndAHalfTimesTheNext) {
    Fixture exact({Member{.sharpness = 300}, Member{.sharpness = 200}, Member{.sharpness = 50}});
    EXPECT_THAT(QualityHints::hints(exact.group, exact.index),
                UnorderedElementsAre(Pair(
                    "/p/0.jpg", "Sharpest of the group (1.5\u00D7 the next by edge contrast)")));
    Fixture close({Member{.sharpness = 290}, Member{.sharpness = 200}});
    EXPECT_THAT(QualityHints::hints(close.group, close.index), IsEmpty());
    Fixture flat({Member{.sharpness = 10}, Member{.sharpness = 0}});
    EXPECT_THAT(QualityHints::hints(flat.group, flat.index), IsEmpty());
}

TEST(QualityHints, ExposureAgainstTheUpperMedian) {
    Fixture group({Member{.meanLuma = 0.50}, Member{.meanLuma = 0.37}, Member{.meanLuma = 0.39},
                   Member{.meanLuma = 0.52}, Member{.meanLuma = 0.63}});
    // Sorted: 0.37 0.39 0.50 0.52 0.63, median 0.50, so only 0.13 away counts.
    EXPECT_THAT(QualityHints::hints(group.group, group.index),
                UnorderedElementsAre(Pair("/p/1.jpg", "Darker than the others"),
                                     Pair("/p/4.jpg", "Brighter than the others")));
}

TEST(QualityHints, ClippedAndOneHintPerMember) {
    Fixture group({Member{.sharpness = 400, .clipped = 0.30},
                   Member{.sharpness = 100, .clipped = 0.21},
                   Member{.sharpness = 100, .clipped = 0.05}});
    // The first is sharpest, which wins over its clipping.
    EXPECT_THAT(QualityHints::hints(group.group, group.index),
                UnorderedElementsAre(
                    Pair("/p/0.jpg", "Sharpest of the group (4.0\u00D7 the next by edge contrast)"),
                    Pair("/p/1.jpg", "21% of it is pure black or white")));
}

TEST(QualityHints, NothingForSingleOrUnmeasuredGroups) {
    Fixture single({Member{.sharpness = 900}});
    EXPECT_THAT(QualityHints::hints(single.group, single.index), IsEmpty());
    Fixture unmeasured({Member{.sharpness = 900}, std::nullopt});
    EXPECT_THAT(QualityHints::hints(unmeasured.group, unmeasured.index), IsEmpty());
}

TEST(QualityHints, ScoresOnlyWhenEveryMemberHasOne) {
    Fixture all({Member{.score = 71}, Member{.score = 40}});
    EXPECT_THAT(QualityHints::scores(all.group, all.index),
                UnorderedElementsAre(Pair("/p/0.jpg", 71), Pair("/p/1.jpg", 40)));
    Fixture missing({Member{.score = 71}, Member{}});
    EXPECT_THAT(QualityHints::scores(missing.group, missing.index), IsEmpty());
}

TEST(FaceCheck, ComparesOnlyTheSamePeople) {
    FaceReading three{3, 1, 2, 1};
    FaceReading two{2, 0, 2, 1};
    EXPECT_EQ(FaceCheck::compareEyes(three, two), 0);
    EXPECT_EQ(FaceCheck::compareSmiles(three, two), 0);
    FaceReading threeOpen{3, 0, 1, 1};
    EXPECT_EQ(FaceCheck::compareEyes(threeOpen, three), -1);
    EXPECT_EQ(FaceCheck::compareEyes(three, threeOpen), 1);
    EXPECT_EQ(FaceCheck::compareSmiles(three, threeOpen), -1);
    EXPECT_EQ(FaceCheck::compareEyes(std::nullopt, three), 0);
    EXPECT_EQ(FaceCheck::compareEyes(FaceReading{0, 0, 0, 1}, FaceReading{0, 0, 0, 1}), 0);
}

TEST(FaceCheck, NotesReadNaturally) {
    EXPECT_EQ(FaceCheck::notes({3, 0, 2, 1}), "All eyes open, 2 of 3 smiling");
    EXPECT_EQ(FaceCheck::notes({3, 1, 0, 1}), "1 of 3 with eyes closed or looking down");
    EXPECT_EQ(FaceCheck::notes({1, 0, 1, 1}), "Eyes open, smiling");
    EXPECT_EQ(FaceCheck::notes({1, 1, 0, 1}), "Eyes closed or looking down");
    EXPECT_EQ(FaceCheck::notes({0, 0, 0, 1}), std::nullopt);

    Fixture group(
        {Member{.faces = FaceReading{2, 0, 1, 1}}, Member{.faces = FaceReading{0, 0, 0, 1}}});
    EXPECT_THAT(QualityHints::faceNotes(group.group, group.index),
                UnorderedElementsAre(Pair("/p/0.jpg", "All eyes open, 1 of 2 smiling")));
    Fixture unread({Member{.faces = FaceReading{2, 0, 1, 1}}, Member{}});
    EXPECT_THAT(QualityHints::faceNotes(unread.group, unread.index), IsEmpty());
}

} // namespace
} // namespace brevant
