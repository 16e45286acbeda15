#include "tests/fixtures/ImageFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"

#include "engine/pipeline/ScanPipeline.hpp"
#include "engine/review/ReviewStore.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace brevant {
namespace {

using testing::TempTree;

// Two pictures, three and two identical copies of each.
class ResumedReviewTest : public ::testing::Test {
protected:
    void SetUp() override {
        a1_ = testing::writeScene(tree_.path("photos/a1.jpg"), 320, 240, 11);
        b1_ = testing::writeScene(tree_.path("photos/b1.jpg"), 320, 240, 12);
        a2_ = copy(a1_, "photos/a2.jpg");
        a3_ = copy(a1_, "photos/a3.jpg");
        b2_ = copy(b1_, "photos/b2.jpg");
    }

    std::string copy(const std::string& from, const std::string& to) const {
        std::string path = tree_.path(to);
        std::error_code error;
        std::filesystem::copy_file(from, path, error);
        EXPECT_FALSE(error) << error.message();
        return path;
    }

    ScanOutcome scan() const {
        ScanRequest request{.source = ScanSource::ofFolders({tree_.path("photos")}),
                            .savedReviews = tree_.path("data/reviews.json"),
                            .review = ReviewRules{}};
        auto outcome = ScanPipeline().run(request, CancellationFlag(), {});
        EXPECT_TRUE(outcome.has_value());
        EXPECT_EQ(outcome->groups.size(), 2U);
        return *outcome;
    }

    std::string idOf(const ScanOutcome& outcome, const std::string& member) const {
        const DuplicateGroup* group = outcome.session->group(member);
        return group == nullptr ? std::string() : group->id;
    }

    TempTree tree_;
    std::string a1_, a2_, a3_, b1_, b2_;
};

TEST_F(ResumedReviewTest, ARescanRestoresTheMarksAndReviewedGroupsOfUnchangedFilesOnly) {
    ScanOutcome first = scan();
    EXPECT_EQ(first.resumed, std::nullopt);
    for (const auto& path : {a2_, a3_, b2_}) {
        ASSERT_TRUE(first.session->mark(path).has_value()) << path;
    }
    std::set<std::string> reviewed{idOf(first, a1_), idOf(first, b1_)};
    ASSERT_TRUE(ScanPipeline::saveReview(first, reviewed));

    // The same bytes written again later: another version of the file.
    std::error_code error;
    auto when = std::filesystem::last_write_time(b2_, error);
    std::filesystem::last_write_time(b2_, when + std::chrono::seconds(5), error);
    ASSERT_FALSE(error);

    ScanOutcome second = scan();
    ASSERT_TRUE(second.resumed.has_value());
    EXPECT_EQ(second.session->marks(), (std::set<std::string>{a2_, a3_}));
    EXPECT_EQ(second.resumed->restored, 2);
    EXPECT_EQ(second.resumed->changed, 1);
    EXPECT_EQ(second.resumed->refused, 0);
    // The group whose copy changed is a group not yet looked at.
    EXPECT_EQ(second.resumed->reviewed, (std::set<std::string>{idOf(second, a1_)}));
    EXPECT_EQ(second.resumed->message(),
              "Resumed your last review of these folders: 2 marks restored, 1 dropped because "
              "its file changed; 1 group already reviewed.");
}

TEST_F(ResumedReviewTest, AMarkOnAFileGoneOrNoLongerACopyIsCountedByWhy) {
    ScanOutcome first = scan();
    for (const auto& path : {a2_, a3_, b2_}) {
        ASSERT_TRUE(first.session->mark(path).has_value()) << path;
    }
    ASSERT_TRUE(ScanPipeline::saveReview(first, {}));
    // a3 is gone (a change); b1 moved out, so b2 is unchanged but no copy.
    std::error_code error;
    ASSERT_TRUE(std::filesystem::remove(a3_, error));
    std::filesystem::rename(b1_, tree_.path("b1.jpg"), error);
    ASSERT_FALSE(error);

    ScanRequest request{.source = ScanSource::ofFolders({tree_.path("photos")}),
                        .savedReviews = tree_.path("data/reviews.json"),
                        .review = ReviewRules{}};
    auto second = ScanPipeline().run(request, CancellationFlag(), {});
    ASSERT_TRUE(second.has_value());
    ASSERT_TRUE(second->resumed.has_value());
    EXPECT_EQ(second->session->marks(), (std::set<std::string>{a2_}));
    EXPECT_EQ(second->resumed->restored, 1);
    EXPECT_EQ(second->resumed->changed, 1);
    EXPECT_EQ(second->resumed->refused, 1);
    EXPECT_EQ(second->resumed->message(),
              "Resumed your last review of these folders: 1 mark restored, 1 dropped because its "
              "file changed, 1 no longer allowed or no longer in these results.");
}

TEST_F(ResumedReviewTest, AReviewIsKnownByItsFoldersAndModeOnly) {
    ScanOutcome first = scan();
    ASSERT_TRUE(first.session->mark(a2_).has_value());
    ASSERT_TRUE(ScanPipeline::saveReview(first, {}));

    // The Live Photos mode has a review of its own: nothing comes back.
    ScanRequest other{.source = ScanSource::ofFolders({tree_.path("photos")}),
                      .mode = ScanMode::livePhotos(),
                      .savedReviews = tree_.path("data/reviews.json"),
                      .review = ReviewRules{}};
    auto live = ScanPipeline().run(other, CancellationFlag(), {});
    ASSERT_TRUE(live.has_value());
    EXPECT_EQ(live->resumed, std::nullopt);

    // Without a file nothing is saved and nothing taken back.
    ScanRequest unsaved{.source = ScanSource::ofFolders({tree_.path("photos")}),
                        .review = ReviewRules{}};
    auto plain = ScanPipeline().run(unsaved, CancellationFlag(), {});
    ASSERT_TRUE(plain.has_value());
    EXPECT_EQ(plain->resumed, std::nullopt);
    EXPECT_TRUE(plain->session->marks().empty());
    EXPECT_FALSE(ScanPipeline::saveReview(*plain, {}));

    ReviewStore store(tree_.path("data/reviews.json"));
    auto latest = store.latest();
    ASSERT_TRUE(latest.has_value());
    EXPECT_EQ(latest->folders, std::vector<std::string>{tree_.path("photos")});
    EXPECT_EQ(latest->mode.kind, ScanMode::Kind::identical);
}

} // namespace
} // namespace brevant
