#include "engine/review/SavedReviewBuilder.hpp"

#include "tests/review/ReviewFixtures.hpp"

#include "engine/review/ReviewSession.hpp"

#include <gtest/gtest.h>

#include <fmt/format.h>
#include <limits>

// Taking a review a slice at a time gives what taking it at once gives, and
// marks changed between slices are those of the moment it ends.
namespace brevant {
namespace {

using testing::copyAt;
using testing::groupOf;

// Groups of three copies each: the first two of every group are marked.
std::shared_ptr<ReviewSession> markedSession(std::size_t groups) {
    std::vector<DuplicateGroup> made;
    for (std::size_t index = 0; index < groups; ++index) {
        auto at = [index](char name, std::uint64_t inode) {
            return copyAt(fmt::format("/photos/{:03}/{}.jpg", index, name), index * 3 + inode);
        };
        made.push_back(groupOf({at('a', 1), at('b', 2), at('c', 3)}));
        made.back().id = fmt::format("group-{}", index);
    }
    auto session =
        std::make_shared<ReviewSession>(std::move(made), std::make_shared<LockStore>(std::nullopt),
                                        std::set<std::string>{}, std::vector<std::string>{});
    for (const auto& group : session->groups()) {
        EXPECT_TRUE(session->mark(group.members[0].path).has_value());
        EXPECT_TRUE(session->mark(group.members[1].path).has_value());
    }
    return session;
}

std::vector<std::string> markPaths(const SavedReview& review) {
    std::vector<std::string> paths;
    paths.reserve(review.marks.size());
    for (const auto& copy : review.marks) {
        paths.push_back(copy.path);
    }
    return paths;
}

SavedReviewBuilder builderOf(const std::shared_ptr<ReviewSession>& session) {
    return {session,
            {"/photos/b", "/photos/a", "/photos/a"},
            ScanMode::similar(SimilarityPreset::balanced),
            {"group-1", "group-4"},
            Date::fromUnixSeconds(1'700'000'000)};
}

TEST(SavedReviewBuilder, SlicesTakeWhatOnePieceTakes) {
    auto session = markedSession(6);
    SavedReviewBuilder whole = builderOf(session);
    ASSERT_TRUE(whole.step(std::numeric_limits<std::size_t>::max()));
    SavedReview expected = whole.take();
    EXPECT_EQ(expected.folders, (std::vector<std::string>{"/photos/a", "/photos/b"}));
    EXPECT_EQ(expected.marks.size(), 12U);
    ASSERT_EQ(expected.reviewed.size(), 2U);
    EXPECT_EQ(expected.reviewed[1].id, "group-4");
    EXPECT_EQ(expected.reviewed[1].members.size(), 3U);

    SavedReviewBuilder sliced = builderOf(session);
    int slices = 1;
    while (!sliced.step(5)) {
        ++slices;
    }
    // 12 marks, then 6 groups looked at for the 2 reviewed, 5 at a time: a
    // group passed over counts, or a million of them would be one slice.
    EXPECT_EQ(slices, 4);
    EXPECT_EQ(sliced.take(), expected);
}

TEST(SavedReviewBuilder, MarksChangedBetweenSlicesAreThoseOfTheEnd) {
    auto session = markedSession(4);
    SavedReviewBuilder builder = builderOf(session);
    ASSERT_FALSE(builder.step(3));
    // One already copied is unmarked, and one not yet reached is marked.
    session->unmark("/photos/000/a.jpg");
    session->unmark("/photos/003/a.jpg");
    ASSERT_TRUE(session->mark("/photos/003/c.jpg").has_value());
    EXPECT_TRUE(builder.isOutdated());
    ASSERT_FALSE(builder.step(3));
    EXPECT_FALSE(builder.isOutdated());
    while (!builder.step(3)) {
    }
    std::vector<std::string> expected(session->marks().begin(), session->marks().end());
    EXPECT_EQ(markPaths(builder.take()), expected);
    EXPECT_EQ(expected.size(), 7U);
}

} // namespace
} // namespace brevant
