#include "engine/review/ReviewSession.hpp"

#include "tests/fixtures/TempTree.hpp"
#include "tests/review/ReviewFixtures.hpp"

#include <gtest/gtest.h>

#include <fmt/format.h>
#include <memory>

namespace brevant {
namespace {

using Kind = MarkRefusal::Kind;
using testing::copyAt;
using testing::groupOf;
using testing::TempTree;

std::vector<std::string> pathsOf(const std::vector<PhotoAsset>& assets) {
    std::vector<std::string> paths;
    paths.reserve(assets.size());
    for (const auto& asset : assets) {
        paths.push_back(asset.path);
    }
    return paths;
}

// Two groups: three copies of one photo, two of another.
std::vector<DuplicateGroup> twoGroups() {
    PhotoAsset c = copyAt("/photos/sun/c.jpg", 3);
    c.snapshot.size = 3000;
    return {groupOf({copyAt("/photos/sun/a.jpg", 1), copyAt("/photos/sun/b.jpg", 2), c}),
            groupOf({copyAt("/photos/sea/d.jpg", 4), copyAt("/photos/sea/e.jpg", 5)})};
}

ReviewSession sessionOf(std::vector<DuplicateGroup> groups,
                        std::set<std::string> protectedRoots = {},
                        std::shared_ptr<LockStore> locks = nullptr) {
    if (!locks) {
        locks = std::make_shared<LockStore>(std::nullopt);
    }
    return ReviewSession(std::move(groups), std::move(locks), std::move(protectedRoots), {});
}

Kind refusedAs(const std::expected<void, MarkRefusal>& answer) {
    EXPECT_FALSE(answer.has_value());
    return answer ? Kind::notFound : answer.error().kind;
}

TEST(ReviewSession, GroupsAreFoundByIdInACopiedSessionToo) {
    std::vector<DuplicateGroup> groups = twoGroups();
    // Two groups may share an id (the same contents found twice).
    groups.push_back(groups[0]);
    auto original = std::make_unique<ReviewSession>(sessionOf(groups));
    ReviewSession copied = *original;
    original.reset();
    EXPECT_EQ(copied.indicesOf(groups[0].id), (std::vector<std::size_t>{0, 2}));
    EXPECT_EQ(copied.indicesOf(groups[1].id), (std::vector<std::size_t>{1}));
    EXPECT_TRUE(copied.indicesOf("/photos/sun/b.jpg").empty());
    EXPECT_TRUE(copied.indicesOf("").empty());
}

TEST(ReviewSession, TheLastUnmarkedCopyOfAGroupIsKept) {
    auto session = sessionOf(twoGroups());
    EXPECT_TRUE(session.mark("/photos/sun/a.jpg"));
    EXPECT_TRUE(session.mark("/photos/sun/b.jpg"));
    auto refused = session.mark("/photos/sun/c.jpg");
    ASSERT_FALSE(refused.has_value());
    EXPECT_EQ(refused.error(), MarkRefusal::lastCopy());
    EXPECT_EQ(refused.error().message(),
              "Every group keeps at least one copy. Unmark another copy first.");
    EXPECT_FALSE(session.isMarked("/photos/sun/c.jpg"));

    session.unmark("/photos/sun/a.jpg");
    EXPECT_TRUE(session.mark("/photos/sun/c.jpg"));
    EXPECT_EQ(session.marks(), (std::set<std::string>{"/photos/sun/b.jpg", "/photos/sun/c.jpg"}));
}

TEST(ReviewSession, RefusalsComeInTheirOrderWithTheirSentences) {
    PhotoAsset sidecar = copyAt("/photos/keep/s.jpg", 6);
    sidecar.relationships = {Relationship::sidecar};
    PhotoAsset fixedOnly = copyAt("/photos/f.jpg", 7);
    fixedOnly.relationships = {Relationship::livePhoto};
    auto groups = twoGroups();
    groups.push_back(groupOf({sidecar, fixedOnly, copyAt("/photos/g.jpg", 8)}));
    auto session = sessionOf(groups, {"/photos/keep/"});

    auto missing = session.refusal("/photos/nowhere.jpg");
    ASSERT_TRUE(missing.has_value());
    EXPECT_EQ(missing->kind, Kind::notFound);
    EXPECT_EQ(missing->message(), "That picture is not in these results.");

    // Locked comes before protected and fixed.
    ASSERT_TRUE(session.lock(sidecar.path));
    auto locked = session.refusal(sidecar.path);
    ASSERT_TRUE(locked.has_value());
    EXPECT_EQ(locked->kind, Kind::locked);
    EXPECT_EQ(locked->message(), "You locked this one to keep it. Unlock it first.");

    // Protected comes before fixed, and names the folder.
    ASSERT_TRUE(session.unlock(sidecar.path));
    auto isProtected = session.refusal(sidecar.path);
    ASSERT_TRUE(isProtected.has_value());
    EXPECT_EQ(*isProtected, MarkRefusal::protectedFolder("/photos/keep"));
    EXPECT_EQ(isProtected->message(), "It is in keep, a folder you protect.");

    auto fixed = session.refusal(fixedOnly.path);
    ASSERT_TRUE(fixed.has_value());
    EXPECT_EQ(fixed->kind, Kind::fixed);
    EXPECT_EQ(fixed->message(), "Part of a Live Photo (a .mov with the same name), so it is kept.");

    EXPECT_EQ(session.refusal("/photos/g.jpg"), std::nullopt);
    EXPECT_EQ(refusedAs(session.toggle("/photos/nowhere.jpg")), Kind::notFound);
    EXPECT_EQ(refusedAs(session.lock("/photos/nowhere.jpg")), Kind::notFound);
}

TEST(ReviewSession, AProtectedRootOfSlashProtectsEveryPath) {
    auto session = sessionOf(twoGroups(), {"/"});
    for (const auto& group : session.groups()) {
        for (const auto& member : group.members) {
            auto refused = session.mark(member.path);
            ASSERT_FALSE(refused.has_value()) << member.path;
            EXPECT_EQ(refused.error(), MarkRefusal::protectedFolder("/"));
            EXPECT_EQ(refused.error().message(), "It is in /, a folder you protect.");
        }
    }
    EXPECT_EQ(session.markAllSuggested(), 0);
    EXPECT_TRUE(session.marks().empty());
}

TEST(ReviewSession, LockingAMarkedCopyUnmarksItAndUnlockingLeavesItUnmarked) {
    TempTree tree;
    auto locks = std::make_shared<LockStore>(tree.path("keep-locks.json"));
    auto session = sessionOf(twoGroups(), {}, locks);
    ASSERT_TRUE(session.mark("/photos/sun/a.jpg"));
    ASSERT_TRUE(session.lock("/photos/sun/a.jpg"));
    EXPECT_FALSE(session.isMarked("/photos/sun/a.jpg"));
    EXPECT_TRUE(session.isLocked("/photos/sun/a.jpg"));
    EXPECT_EQ(refusedAs(session.mark("/photos/sun/a.jpg")), Kind::locked);
    // The store is shared: a session made later sees the lock too.
    EXPECT_TRUE(sessionOf(twoGroups(), {}, locks).isLocked("/photos/sun/a.jpg"));
    EXPECT_EQ(LockStore(tree.path("keep-locks.json")).all().size(), 1U);

    ASSERT_TRUE(session.unlock("/photos/sun/a.jpg"));
    EXPECT_FALSE(session.isLocked("/photos/sun/a.jpg"));
    EXPECT_FALSE(session.isMarked("/photos/sun/a.jpg"));
    EXPECT_TRUE(session.mark("/photos/sun/a.jpg"));
}

TEST(ReviewSession, CarriedMarksThatNowHitALockOrAProtectedFolderAreDropped) {
    auto older = sessionOf(twoGroups());
    ASSERT_TRUE(older.mark("/photos/sun/a.jpg"));
    ASSERT_TRUE(older.mark("/photos/sun/b.jpg"));
    ASSERT_TRUE(older.mark("/photos/sea/d.jpg"));

    // The rescan finds the same copies, one of them now locked, the sea
    // folder now protected, and b changed on disk.
    auto groups = twoGroups();
    groups[0].members[1].snapshot.modifiedSeconds += 10;
    groups.push_back(groupOf({copyAt("/photos/new/x.jpg", 9), copyAt("/photos/new/y.jpg", 10)}));
    auto locks = std::make_shared<LockStore>(std::nullopt);
    locks->add(copyAt("/photos/sun/a.jpg", 1));
    auto newer = sessionOf(groups, {"/photos/sea"}, locks);
    newer.carryMarks(older);
    EXPECT_TRUE(newer.marks().empty());

    // Nothing stands in the way of the same marks in a plain rescan.
    auto plain = sessionOf(twoGroups());
    plain.carryMarks(older);
    EXPECT_EQ(plain.marks(), (std::set<std::string>{"/photos/sun/a.jpg", "/photos/sun/b.jpg",
                                                    "/photos/sea/d.jpg"}));
}

// What a worker reads stays as it was while the window marks on; every
// change to the marks, a newly protected folder's included, is counted.
TEST(ReviewSession, MarksTakenAsTheyStandStayAsTheyWere) {
    auto session = sessionOf(twoGroups());
    ASSERT_TRUE(session.mark("/photos/sun/a.jpg"));
    ReviewSession::MarksAt at = session.marksAt();
    EXPECT_EQ(at.revision, session.marksRevision());

    ASSERT_TRUE(session.mark("/photos/sea/d.jpg"));
    session.unmark("/photos/sun/a.jpg");
    EXPECT_EQ(*at.marks, std::set<std::string>{"/photos/sun/a.jpg"});
    EXPECT_EQ(session.marks(), std::set<std::string>{"/photos/sea/d.jpg"});
    EXPECT_GT(session.marksRevision(), at.revision);

    auto newer = sessionOf(twoGroups());
    newer.carryMarks(session, *at.marks);
    EXPECT_EQ(newer.marks(), std::set<std::string>{"/photos/sun/a.jpg"});

    std::uint64_t before = session.marksRevision();
    session.setProtectedRoots({"/photos/sun"});
    EXPECT_EQ(session.marksRevision(), before);
    session.setProtectedRoots({"/photos/sea"});
    EXPECT_TRUE(session.marks().empty());
    EXPECT_EQ(session.markedBytes(), 0);
    EXPECT_GT(session.marksRevision(), before);
}

TEST(ReviewSession, MarkingTheSuggestedCopies) {
    auto session = sessionOf(twoGroups());
    ASSERT_TRUE(session.lock("/photos/sun/b.jpg"));
    // The first group keeps c (the largest) and b (locked) is skipped.
    session.setPriorities({KeeperPolicy::Priority::largestFile});
    auto suggestion = session.suggestion(session.groups()[0]);
    ASSERT_TRUE(suggestion.has_value());
    EXPECT_EQ(suggestion->keeperID, "/photos/sun/b.jpg");
    EXPECT_EQ(suggestion->reason, "You locked this copy");

    EXPECT_EQ(session.markSuggested(session.groups()[0]), 2);
    EXPECT_EQ(session.marks(), (std::set<std::string>{"/photos/sun/a.jpg", "/photos/sun/c.jpg"}));
    EXPECT_EQ(session.markAllSuggested(), 1);
    EXPECT_EQ(session.markAllSuggested(), 0);
    EXPECT_EQ(ReviewSession::kNothingMoreToMark,
              "Nothing more to mark: the rest are kept copies, locked or protected.");
    EXPECT_EQ(
        pathsOf(session.markedAssets()),
        (std::vector<std::string>{"/photos/sun/a.jpg", "/photos/sun/c.jpg", "/photos/sea/e.jpg"}));
    EXPECT_EQ(session.markedBytes(), 1000 + 3000 + 1000);

    session.clearMarks(session.groups()[0]);
    EXPECT_EQ(pathsOf(session.markedAssets()), (std::vector<std::string>{"/photos/sea/e.jpg"}));
    EXPECT_TRUE(session.toggle("/photos/sea/e.jpg"));
    EXPECT_FALSE(session.isMarked("/photos/sea/e.jpg"));
    EXPECT_TRUE(session.toggle("/photos/sea/e.jpg"));
    EXPECT_TRUE(session.isMarked("/photos/sea/e.jpg"));
}

TEST(ReviewSession, MarkingInSlicesMarksWhatMarkingAllDoesAndKeepsTheTotal) {
    // Seven groups; the second one's copies are all in a protected folder.
    std::vector<DuplicateGroup> groups;
    for (int g = 0; g < 7; ++g) {
        std::string folder = g == 1 ? "/kept/" : fmt::format("/photos/{}/", g);
        PhotoAsset big = copyAt(folder + "big.jpg", 10 * g + 1);
        big.snapshot.size = 5000;
        groups.push_back(groupOf(
            {copyAt(folder + "a.jpg", 10 * g + 2), big, copyAt(folder + "c.jpg", 10 * g + 3)}));
    }
    auto whole = sessionOf(groups, {"/kept"});
    auto sliced = sessionOf(groups, {"/kept"});
    whole.setPriorities({KeeperPolicy::Priority::largestFile});
    sliced.setPriorities({KeeperPolicy::Priority::largestFile});
    EXPECT_EQ(whole.markAllSuggested(), 12);
    EXPECT_EQ(sliced.markSuggestedIn(0, 3) + sliced.markSuggestedIn(3, 3) +
                  sliced.markSuggestedIn(3, 5) + sliced.markSuggestedIn(5, 100),
              12);
    EXPECT_EQ(sliced.marks(), whole.marks());
    EXPECT_FALSE(sliced.isMarked("/photos/0/big.jpg"));
    EXPECT_FALSE(sliced.isMarked("/kept/a.jpg"));

    // The total follows every way a mark comes and goes.
    EXPECT_EQ(sliced.markedBytes(), 12 * 1000);
    sliced.unmark("/photos/0/a.jpg");
    sliced.unmark("/photos/0/a.jpg");
    EXPECT_EQ(sliced.markedBytes(), 11 * 1000);
    ASSERT_TRUE(sliced.toggle("/photos/0/big.jpg"));
    EXPECT_EQ(sliced.markedBytes(), 11 * 1000 + 5000);
    ASSERT_TRUE(sliced.lock("/photos/0/big.jpg"));
    EXPECT_EQ(sliced.markedBytes(), 11 * 1000);
    sliced.setProtectedRoots({"/kept", "/photos/2"});
    EXPECT_EQ(sliced.markedBytes(), 9 * 1000);
    std::int64_t counted = 0;
    for (const auto& marked : sliced.markedAssets()) {
        counted += marked.size();
    }
    EXPECT_EQ(sliced.markedBytes(), counted);
}

TEST(ReviewSession, ACopyInTwoGroupsKeepsACopyInEach) {
    auto groups = twoGroups();
    // e also belongs to a group of the similar kind with a.
    groups.push_back(groupOf({copyAt("/photos/sun/a.jpg", 1), copyAt("/photos/sea/e.jpg", 5)}));
    auto session = sessionOf(groups);
    ASSERT_EQ(session.group("/photos/sea/e.jpg"), &session.groups()[1]);
    ASSERT_NE(session.asset("/photos/sea/e.jpg"), nullptr);
    EXPECT_EQ(session.asset("/photos/sea/e.jpg")->snapshot.identity.inode, 5U);
    EXPECT_EQ(session.asset("/photos/nowhere.jpg"), nullptr);
    ASSERT_TRUE(session.mark("/photos/sun/a.jpg"));
    EXPECT_EQ(refusedAs(session.mark("/photos/sea/e.jpg")), Kind::lastCopy);
    EXPECT_TRUE(session.mark("/photos/sea/d.jpg"));
    EXPECT_EQ(pathsOf(session.markedAssets()),
              (std::vector<std::string>{"/photos/sun/a.jpg", "/photos/sea/d.jpg"}));
}

TEST(ReviewSession, TheContextCarriesTheSessionsSettings) {
    auto locks = std::make_shared<LockStore>(std::nullopt);
    ReviewSession session(twoGroups(), locks, {"/photos/keep"}, {"/home/anna/Downloads"});
    EXPECT_EQ(session.priorities(), KeeperPolicy::standardPriorities());
    session.setPriorities({KeeperPolicy::Priority::newest});
    locks->add(copyAt("/photos/sun/a.jpg", 1));

    auto context = session.context();
    EXPECT_EQ(context.protectedRoots, (std::set<std::string>{"/photos/keep"}));
    EXPECT_EQ(context.inboxFolders, (std::vector<std::string>{"/home/anna/Downloads"}));
    EXPECT_EQ(context.priorities,
              (std::vector<KeeperPolicy::Priority>{KeeperPolicy::Priority::newest}));
    ASSERT_TRUE(context.isLocked);
    EXPECT_TRUE(context.isLocked(copyAt("/photos/sun/a.jpg", 1)));
    EXPECT_FALSE(context.isLocked(copyAt("/photos/sun/b.jpg", 2)));
    EXPECT_FALSE(context.sharpness);

    KeeperMeasures measures;
    measures.sharpness = [](const PhotoAsset&) { return std::optional(2.0); };
    session.setSimilarity(measures);
    ASSERT_TRUE(session.context().sharpness);
    EXPECT_EQ(session.context().sharpness(copyAt("/x", 1)), 2.0);

    // A folder protected later leaves none of its copies marked.
    ASSERT_TRUE(session.mark("/photos/sea/d.jpg"));
    ASSERT_TRUE(session.mark("/photos/sun/b.jpg"));
    session.setProtectedRoots({"/photos/sea/"});
    EXPECT_EQ(session.marks(), (std::set<std::string>{"/photos/sun/b.jpg"}));
}

} // namespace
} // namespace brevant
