#include "engine/cleanup/CleanupPlanner.hpp"

#include "tests/cleanup/CleanupFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"
#include "tests/review/ReviewFixtures.hpp"

#include "engine/cleanup/CleanupExecutor.hpp"

#include <gtest/gtest.h>

#include <filesystem>

namespace brevant {
namespace {

// The ASSERTs before each access guard these expecteds.
// NOLINTBEGIN(bugprone-unchecked-optional-access)

using Kind = PlanError::Kind;
using testing::copyAt;
using testing::fixedDate;

const std::string kDigest = "0123456789abcdef0123456789abcdef0123456789abcdef0123456789abcdef";

PhotoAsset copyIn(const std::string& root, const std::string& name, std::uint64_t inode) {
    PhotoAsset asset = copyAt(root + "/" + name, inode);
    asset.root = root;
    return asset;
}

// Three identical copies under /photos and /backup; two similar pictures.
std::vector<DuplicateGroup> twoGroups() {
    PhotoAsset c = copyIn("/backup", "c.jpg", 3);
    c.volumeName = "Backup";
    c.isExternalVolume = true;
    c.isCloudSynced = true;
    PhotoAsset e = copyIn("/photos", "sea/e.jpg", 5);
    e.snapshot.size = 2000;
    return {DuplicateGroup::make(kDigest, 1000,
                                 {copyIn("/photos", "a.jpg", 1), copyIn("/photos", "b.jpg", 2), c},
                                 MatchKind::identical),
            DuplicateGroup::make("similar-7F3A", 1000, {copyIn("/photos", "sea/d.jpg", 4), e},
                                 MatchKind::similar, 0.2F)};
}

ReviewSession sessionOf(std::vector<DuplicateGroup> groups,
                        std::shared_ptr<LockStore> locks = nullptr) {
    return ReviewSession(std::move(groups), std::move(locks), {}, {});
}

std::vector<std::string> pathsOf(const CleanupPlan& plan) {
    std::vector<std::string> paths;
    paths.reserve(plan.removals.size());
    for (const auto& removal : plan.removals) {
        paths.push_back(removal.path);
    }
    return paths;
}

Kind refusedAs(const std::expected<CleanupPlan, PlanError>& answer) {
    EXPECT_FALSE(answer.has_value());
    return answer ? Kind::nothingMarked : answer.error().kind;
}

TEST(CleanupPlanner, PlansMarkedCopiesInGroupThenMemberOrderWithTheirKeepers) {
    auto groups = twoGroups();
    auto session = sessionOf(groups);
    ASSERT_TRUE(session.mark("/photos/sea/e.jpg"));
    ASSERT_TRUE(session.mark("/backup/c.jpg"));
    ASSERT_TRUE(session.mark("/photos/a.jpg"));

    Date now = Date::fromUnix(1794692984, 750'000'000);
    auto plan = CleanupPlanner::plan(session, now);
    ASSERT_TRUE(plan.has_value()) << plan.error().description();
    EXPECT_EQ(pathsOf(*plan),
              (std::vector<std::string>{"/photos/a.jpg", "/backup/c.jpg", "/photos/sea/e.jpg"}));
    // To the whole second, as the journal keeps it.
    EXPECT_EQ(plan->created, fixedDate());
    EXPECT_EQ(plan->roots, (std::vector<std::string>{"/backup", "/photos"}));

    const PlannedRemoval& a = plan->removals[0];
    EXPECT_EQ(a.root, "/photos");
    EXPECT_EQ(a.snapshot, groups[0].members[0].snapshot);
    EXPECT_EQ(a.sha256, kDigest);
    EXPECT_EQ(a.matchKind, MatchKind::identical);
    ASSERT_EQ(a.keepers.size(), 1U);
    EXPECT_EQ(a.keepers[0], (KeeperEvidence{"/photos/b.jpg", groups[0].members[1].snapshot}));
    EXPECT_FALSE(a.isCloudSynced);

    const PlannedRemoval& c = plan->removals[1];
    EXPECT_EQ(c.root, "/backup");
    EXPECT_EQ(c.keepers, a.keepers);
    EXPECT_TRUE(c.isCloudSynced);
    EXPECT_EQ(c.volumeName, "Backup");
    EXPECT_TRUE(c.isExternalVolume);

    // Different files: no shared digest to carry.
    const PlannedRemoval& e = plan->removals[2];
    EXPECT_EQ(e.sha256, "");
    EXPECT_EQ(e.matchKind, MatchKind::similar);
    EXPECT_EQ(e.snapshot.size, 2000);
    ASSERT_EQ(e.keepers.size(), 1U);
    EXPECT_EQ(e.keepers[0].path, "/photos/sea/d.jpg");

    // The plan survives the journal's coding whole.
    auto decoded = CleanupPlan::decode(plan->encoded());
    ASSERT_TRUE(decoded.has_value());
    EXPECT_EQ(*decoded, *plan);
}

TEST(CleanupPlanner, KeepersAreEveryUnmarkedMemberInMemberOrder) {
    std::vector<DuplicateGroup> groups = {
        DuplicateGroup::make(kDigest, 1000,
                             {copyIn("/p", "1.jpg", 1), copyIn("/p", "2.jpg", 2),
                              copyIn("/p", "3.jpg", 3), copyIn("/p", "4.jpg", 4)},
                             MatchKind::identical)};
    auto session = sessionOf(groups);
    ASSERT_TRUE(session.mark("/p/3.jpg"));
    ASSERT_TRUE(session.mark("/p/1.jpg"));
    auto plan = CleanupPlanner::plan(session, fixedDate());
    ASSERT_TRUE(plan.has_value());
    EXPECT_EQ(pathsOf(*plan), (std::vector<std::string>{"/p/1.jpg", "/p/3.jpg"}));
    for (const auto& removal : plan->removals) {
        ASSERT_EQ(removal.keepers.size(), 2U);
        EXPECT_EQ(removal.keepers[0].path, "/p/2.jpg");
        EXPECT_EQ(removal.keepers[1].path, "/p/4.jpg");
        EXPECT_EQ(removal.keepers[1].snapshot, groups[0].members[3].snapshot);
    }
    EXPECT_EQ(plan->roots, (std::vector<std::string>{"/p"}));
}

TEST(CleanupPlanner, NothingMarkedIsRefused) {
    auto session = sessionOf(twoGroups());
    auto plan = CleanupPlanner::plan(session, fixedDate());
    EXPECT_EQ(refusedAs(plan), Kind::nothingMarked);
    EXPECT_EQ(plan.error().description(), "Nothing is marked.");

    // Marks that name no copy of these groups plan nothing either.
    LockStore locks(std::nullopt);
    auto elsewhere =
        CleanupPlanner::plan(twoGroups(), {"/elsewhere/x.jpg"}, locks, {}, fixedDate());
    EXPECT_EQ(refusedAs(elsewhere), Kind::nothingMarked);
}

TEST(CleanupPlanner, AGroupWhollyMarkedKeepsNoCopyAndIsRefused) {
    LockStore locks(std::nullopt);
    auto groups = twoGroups();
    auto plan = CleanupPlanner::plan(groups, {"/photos/sea/d.jpg", "/photos/sea/e.jpg"}, locks, {},
                                     fixedDate());
    EXPECT_EQ(refusedAs(plan), Kind::groupWithoutKeeper);
    EXPECT_EQ(plan.error(), PlanError::groupWithoutKeeper("similar-7F3A"));
    EXPECT_EQ(plan.error().description(), "Group similar-7F3A would keep no copy.");

    auto identical = CleanupPlanner::plan(
        groups, {"/photos/a.jpg", "/photos/b.jpg", "/backup/c.jpg"}, locks, {}, fixedDate());
    EXPECT_EQ(refusedAs(identical), Kind::groupWithoutKeeper);
    EXPECT_EQ(identical.error().description(), "Group 0123456789ab would keep no copy.");

    // Every group is looked at for a keeper before any copy is: a locked
    // copy in the first group does not hide the second group's problem.
    locks.add(groups[0].members[0]);
    auto both =
        CleanupPlanner::plan(groups, {"/photos/a.jpg", "/photos/sea/d.jpg", "/photos/sea/e.jpg"},
                             locks, {}, fixedDate());
    EXPECT_EQ(refusedAs(both), Kind::groupWithoutKeeper);
}

TEST(CleanupPlanner, AMarkCarriedToACopyLockedSinceIsRefused) {
    auto locks = std::make_shared<LockStore>(std::nullopt);
    auto session = sessionOf(twoGroups(), locks);
    ASSERT_TRUE(session.mark("/photos/b.jpg"));
    // Locked elsewhere (another window's session shares the store) after
    // the mark was made.
    locks->add(*session.asset("/photos/b.jpg"));

    auto plan = CleanupPlanner::plan(session, fixedDate());
    EXPECT_EQ(refusedAs(plan), Kind::markedButNotAllowed);
    EXPECT_EQ(plan.error(), PlanError::markedButNotAllowed("/photos/b.jpg", "it is locked"));
    EXPECT_EQ(plan.error().description(), "b.jpg cannot be moved: it is locked");
}

TEST(CleanupPlanner, FixedAndProtectedCopiesAreRefusedLockedFirstThenFixedThenProtected) {
    auto groups = twoGroups();
    groups[0].members[1].relationships = {Relationship::sidecar};
    LockStore locks(std::nullopt);

    auto fixed = CleanupPlanner::plan(groups, {"/photos/b.jpg"}, locks, {}, fixedDate());
    EXPECT_EQ(refusedAs(fixed), Kind::markedButNotAllowed);
    EXPECT_EQ(fixed.error().description(),
              "b.jpg cannot be moved: Has a sidecar file (.xmp or .aae) beside it, so it is kept "
              "with it");

    auto isProtected =
        CleanupPlanner::plan(groups, {"/backup/c.jpg"}, locks, {"/backup/"}, fixedDate());
    EXPECT_EQ(refusedAs(isProtected), Kind::markedButNotAllowed);
    EXPECT_EQ(isProtected.error().description(),
              "c.jpg cannot be moved: it is in a protected folder");
    auto everything = CleanupPlanner::plan(groups, {"/backup/c.jpg"}, locks, {"/"}, fixedDate());
    EXPECT_EQ(refusedAs(everything), Kind::markedButNotAllowed);
    // "/backup2" is not inside "/backup".
    EXPECT_TRUE(CleanupPlanner::plan(groups, {"/backup/c.jpg"}, locks, {"/back"}, fixedDate()));

    // A fixed copy in a protected folder: fixed is told.
    auto fixedFirst =
        CleanupPlanner::plan(groups, {"/photos/b.jpg"}, locks, {"/photos"}, fixedDate());
    EXPECT_EQ(fixedFirst.error().reason,
              "Has a sidecar file (.xmp or .aae) beside it, so it is kept with it");
    // A locked one: locked is told.
    locks.add(groups[0].members[1]);
    auto lockedFirst =
        CleanupPlanner::plan(groups, {"/photos/b.jpg"}, locks, {"/photos"}, fixedDate());
    EXPECT_EQ(lockedFirst.error().reason, "it is locked");
}

TEST(CleanupPlanner, TwoPlansOfTheSameMarksAreApprovedSeparately) {
    testing::TempTree tree;
    auto session = sessionOf(twoGroups());
    ASSERT_TRUE(session.mark("/photos/a.jpg"));
    auto first = CleanupPlanner::plan(session, fixedDate());
    auto second = CleanupPlanner::plan(session, fixedDate());
    ASSERT_TRUE(first && second);
    EXPECT_NE(first->id, second->id);
    EXPECT_EQ(first->removals, second->removals);
    EXPECT_EQ(first->roots, second->roots);

    CleanupExecutor executor(platform::DataFolder{tree.root()});
    CancellationFlag cancel;
    auto run = executor.execute(*second, CleanupApproval{first->id, fixedDate()}, cancel);
    ASSERT_FALSE(run.has_value());
    EXPECT_EQ(run.error(), ExecutionRefusal::approvalDoesNotMatch());
    std::error_code error;
    EXPECT_FALSE(std::filesystem::exists(tree.path("Cleanups"), error));
}

TEST(CleanupPlanner, CarriesCatalogAndLibraryReferences) {
    PhotoAsset lightroom = copyIn("/lr", "a.dng", 1);
    lightroom.catalog = CatalogReference{LightroomRef{.imageID = 41}};
    PhotoAsset captureOne = copyIn("/lr", "b.dng", 2);
    captureOne.catalog = CatalogReference{CaptureOneRef{.imageID = 42}};
    PhotoAsset library = copyIn("", "C0FFEE/L0/001", 3);
    library.path = "C0FFEE/L0/001";
    library.library = LibraryRef{.id = "C0FFEE/L0/001", .filename = "IMG_0003.HEIC"};
    PhotoAsset kept = copyIn("/lr", "c.dng", 4);
    std::vector<DuplicateGroup> groups = {DuplicateGroup::make(
        kDigest, 1000, {lightroom, captureOne, library, kept}, MatchKind::identical)};
    LockStore locks(std::nullopt);
    auto plan = CleanupPlanner::plan(groups, {"/lr/a.dng", "/lr/b.dng", "C0FFEE/L0/001"}, locks, {},
                                     fixedDate());
    ASSERT_TRUE(plan.has_value()) << plan.error().description();
    ASSERT_EQ(plan->removals.size(), 3U);
    EXPECT_EQ(plan->removals[0].catalog, (CatalogItem{CatalogApplication::lightroom, 41}));
    EXPECT_EQ(plan->removals[1].catalog, (CatalogItem{CatalogApplication::captureOne, 42}));
    EXPECT_EQ(plan->removals[2].path, "photos-library:C0FFEE/L0/001");
    EXPECT_EQ(plan->removals[2].libraryFilename, "IMG_0003.HEIC");
    // A library item has no chosen folder.
    EXPECT_EQ(plan->roots, (std::vector<std::string>{"/lr"}));
}

TEST(CleanupPlanner, ACopyInTwoGroupsIsPlannedOnceFromTheFirst) {
    PhotoAsset a = copyIn("/p", "a.jpg", 1);
    std::vector<DuplicateGroup> groups = {
        DuplicateGroup::make(kDigest, 1000, {a, copyIn("/p", "b.jpg", 2)}, MatchKind::identical),
        DuplicateGroup::make("similar-1", 1000, {copyIn("/p", "c.jpg", 3), a}, MatchKind::similar)};
    auto session = sessionOf(groups);
    ASSERT_TRUE(session.mark("/p/a.jpg"));
    auto plan = CleanupPlanner::plan(session, fixedDate());
    ASSERT_TRUE(plan.has_value());
    ASSERT_EQ(plan->removals.size(), 1U);
    EXPECT_EQ(plan->removals[0].matchKind, MatchKind::identical);
    EXPECT_EQ(plan->removals[0].keepers[0].path, "/p/b.jpg");
}

// NOLINTEND(bugprone-unchecked-optional-access)

} // namespace
} // namespace brevant
