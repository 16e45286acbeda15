#include "tests/cleanup/ExecutorFixtures.hpp"

#include "engine/cleanup/CleanupExecutor.hpp"

#include <gtest/gtest.h>

#include <unistd.h>

namespace brevant {
namespace {

using testing::CleanupWorkspace;
using testing::removalOf;

constexpr std::string_view kOutside = "Outside the folders you chose.";
constexpr std::string_view kFolderLink =
    "A folder on the way to it was replaced with a symbolic link since the scan.";
constexpr std::string_view kGone =
    "No longer where it was \u2014 moved, deleted, or its drive was disconnected.";
constexpr std::string_view kLink = "Replaced with a symbolic link since the scan.";
constexpr std::string_view kChanged = "Changed since the scan. Scan again to review it.";
constexpr std::string_view kHardLink =
    "Now has another name on disk (a hard link), so moving it would free nothing.";

std::string identicalLeft(std::string_view words) {
    return "No unchanged identical copy is left to keep (the kept copies are " +
           std::string(words) + "). Scan again.";
}

std::string similarLeft(std::string_view words) {
    return "None of the pictures you kept from its group is still there unchanged (they are " +
           std::string(words) + "). Scan again.";
}

// a is kept; b goes.
struct Pair : CleanupWorkspace {
    std::string a = photo("a.jpg", "meadow");
    std::string b = photo("b.jpg", "meadow");
    PlannedRemoval removal = removalOf(b, a, photos);
    CleanupPlan plan = testing::planOf({removal}, {photos});
    CancellationFlag cancel;

    [[nodiscard]] std::optional<std::string>
    check(const CleanupExecutor::Trashed& trashed = {}) const {
        return CleanupExecutor::check(removal, plan, trashed, cancel);
    }
};

TEST(ExecutorCheck, AnUnchangedCopyWithItsKeeperMayMove) {
    Pair files;
    EXPECT_EQ(files.check(), std::nullopt);
    // A new hard link of the keeper is no change of it.
    files.tree.hardLink("photos/a.jpg", "a-link.jpg");
    EXPECT_EQ(files.check(), std::nullopt);
}

TEST(ExecutorCheck, ThePathMustLieInsideThePlansRootsAndItsOwnRoot) {
    Pair files;
    files.plan.roots = {};
    EXPECT_EQ(files.check(), kOutside);
    files.plan.roots = {files.photos + "/sub", files.tree.root() + "/pho"};
    EXPECT_EQ(files.check(), kOutside);
    files.plan.roots = {"/"};
    EXPECT_EQ(files.check(), std::nullopt);
    files.removal.root = files.photos + "2";
    EXPECT_EQ(files.check(), kOutside);
    files.removal.root = "";
    EXPECT_EQ(files.check(), kOutside);
    files.removal.root = files.photos + "/";
    EXPECT_EQ(files.check(), kOutside);
    files.removal.root = files.photos;
    files.removal.path = "photos/b.jpg";
    EXPECT_EQ(files.check(), kOutside);
    // Looked at before anything else: a missing file outside is outside.
    files.plan.roots = {files.photos};
    files.removal.path = files.tree.path("elsewhere/gone.jpg");
    files.removal.root = files.tree.path("elsewhere");
    EXPECT_EQ(files.check(), kOutside);
}

TEST(ExecutorCheck, AFolderOnTheWayReplacedWithALinkIsSkipped) {
    CleanupWorkspace files;
    std::string a = files.photo("a.jpg", "x");
    std::string b = files.photo("2023/june/b.jpg", "x");
    PlannedRemoval removal = removalOf(b, a, files.photos);
    CleanupPlan plan = testing::planOf({removal}, {files.photos});
    CancellationFlag cancel;
    testing::moveFile(files.photos + "/2023", files.tree.path("away"));
    files.tree.symbolicLink(files.tree.path("away"), "photos/2023");
    EXPECT_EQ(CleanupExecutor::check(removal, plan, {}, cancel), kFolderLink);

    // A folder that is simply gone is no link: the picture is gone.
    testing::removeFile(files.photos + "/2023");
    EXPECT_EQ(CleanupExecutor::check(removal, plan, {}, cancel), kGone);
    // So is one whose link dangles.
    files.tree.symbolicLink(files.tree.path("nowhere"), "photos/2023");
    EXPECT_EQ(CleanupExecutor::check(removal, plan, {}, cancel), kFolderLink);
}

TEST(ExecutorCheck, TheFileMustStillBeThereAsTheSameUnchangedPlainFile) {
    Pair files;
    testing::moveFile(files.b, files.tree.path("b-away.jpg"));
    EXPECT_EQ(files.check(), kGone);

    // A link to the very same file is still a link.
    files.tree.symbolicLink(files.tree.path("b-away.jpg"), "photos/b.jpg");
    EXPECT_EQ(files.check(), kLink);
    testing::removeFile(files.b);

    // Not a plain file any more.
    files.tree.fifo("photos/b.jpg");
    EXPECT_EQ(files.check(), kChanged);
    testing::removeFile(files.b);

    // Put back as it was: the same file, unchanged.
    testing::moveFile(files.tree.path("b-away.jpg"), files.b);
    EXPECT_EQ(files.check(), std::nullopt);
}

TEST(ExecutorCheck, AnyChangeOfIdentitySizeOrTimeIsAChange) {
    Pair files;
    FileSnapshot planned = files.removal.snapshot;

    // Same size, one nanosecond later.
    testing::setModified(files.b, planned.modifiedSeconds,
                         (planned.modifiedNanoseconds + 1) % 1'000'000'000);
    EXPECT_EQ(files.check(), kChanged);
    testing::setModified(files.b, planned.modifiedSeconds + 1, planned.modifiedNanoseconds);
    EXPECT_EQ(files.check(), kChanged);
    testing::setModified(files.b, planned.modifiedSeconds, planned.modifiedNanoseconds);
    EXPECT_EQ(files.check(), std::nullopt);

    // Another file of the same bytes and times at the same path.
    testing::moveFile(files.b, files.tree.path("b-old.jpg"));
    files.tree.file("photos/b.jpg", "meadow");
    testing::setModified(files.b, planned.modifiedSeconds, planned.modifiedNanoseconds);
    EXPECT_EQ(files.check(), kChanged);
    testing::moveFile(files.tree.path("b-old.jpg"), files.b);

    // A snapshot that was not of a plain file never matches.
    files.removal.snapshot.isRegularFile = false;
    EXPECT_EQ(files.check(), kChanged);
    files.removal.snapshot = planned;
    files.removal.snapshot.isSymbolicLink = true;
    EXPECT_EQ(files.check(), kChanged);
    files.removal.snapshot = planned;
    files.removal.snapshot.size += 1;
    EXPECT_EQ(files.check(), kChanged);
}

TEST(ExecutorCheck, AHardLinkMadeSinceTheScanIsSkippedThoughNothingElseChanged) {
    Pair files;
    files.tree.hardLink("photos/b.jpg", "elsewhere/b.jpg");
    EXPECT_EQ(files.check(), kHardLink);
    // A changed file is told as changed first.
    testing::setModified(files.b, 1'000'000'000, 0);
    EXPECT_EQ(files.check(), kChanged);
}

TEST(ExecutorCheck, KeepersThatAreGoneChangedOrMovedLeaveSortedDistinctWords) {
    CleanupWorkspace files;
    std::string b = files.photo("b.jpg", "river");
    std::string gone = files.photo("gone.jpg", "river");
    std::string touched = files.photo("touched.jpg", "river");
    std::string linked = files.photo("linked.jpg", "river");
    std::string trashedKeeper = files.photo("trashed.jpg", "river");
    std::string gone2 = files.photo("gone2.jpg", "river");
    PlannedRemoval removal = removalOf(b, gone, files.photos);
    for (const auto& keeper : {touched, linked, trashedKeeper, gone2}) {
        removal.keepers.push_back({keeper, testing::snapshotOf(keeper)});
    }
    CleanupPlan plan = testing::planOf({removal}, {files.photos});
    CancellationFlag cancel;

    testing::removeFile(gone);
    testing::removeFile(gone2);
    testing::setModified(touched, 1'000'000'000, 5);
    testing::moveFile(linked, files.tree.path("linked-target.jpg"));
    files.tree.symbolicLink(files.tree.path("linked-target.jpg"), "photos/linked.jpg");
    CleanupExecutor::Trashed trashed = {testing::snapshotOf(trashedKeeper).identity};

    EXPECT_EQ(CleanupExecutor::check(removal, plan, trashed, cancel),
              identicalLeft("changed, missing, moved"));
    // The same words for the other kinds, in their own sentence.
    removal.matchKind = MatchKind::series;
    EXPECT_EQ(CleanupExecutor::check(removal, plan, trashed, cancel),
              similarLeft("changed, missing, moved"));
    // An absent kind is read as identical copies.
    removal.matchKind.reset();
    EXPECT_EQ(CleanupExecutor::check(removal, plan, trashed, cancel),
              identicalLeft("changed, missing, moved"));
    // Without keepers nothing is kept.
    removal.keepers.clear();
    EXPECT_EQ(CleanupExecutor::check(removal, plan, trashed, cancel), identicalLeft(""));
}

TEST(ExecutorCheck, AKeeperThatIsTheItemItselfCountsAsMoved) {
    Pair files;
    files.removal.keepers = {{files.b, files.removal.snapshot}};
    EXPECT_EQ(files.check(), identicalLeft("moved"));
    // A keeper trashed earlier in the run under its own name is moved, not
    // missing.
    files.removal.keepers = {{files.a, testing::snapshotOf(files.a)}};
    CleanupExecutor::Trashed trashed = {files.removal.keepers[0].snapshot.identity};
    testing::moveFile(files.a, files.tree.path("a-trashed.jpg"));
    EXPECT_EQ(files.check(trashed), identicalLeft("moved"));
    EXPECT_EQ(files.check(), identicalLeft("missing"));
}

TEST(ExecutorCheck, IdenticalKeepersAreComparedByteForByteOthersOnlyByTheirSnapshot) {
    Pair files;
    testing::overwriteKeepingTimes(files.a, "MEADOW");
    EXPECT_EQ(files.check(), identicalLeft("no longer identical"));

    // A similar picture is a different file by nature: no bytes are read.
    files.removal.matchKind = MatchKind::similar;
    EXPECT_EQ(files.check(), std::nullopt);
    files.removal.matchKind = MatchKind::liveMovie;
    EXPECT_EQ(files.check(), std::nullopt);
    testing::removeFile(files.a);
    EXPECT_EQ(files.check(), similarLeft("missing"));
}

TEST(ExecutorCheck, TheFirstKeeperThatPassesIsEnough) {
    CleanupWorkspace files;
    std::string b = files.photo("b.jpg", "dune");
    std::string gone = files.photo("gone.jpg", "dune");
    std::string different = files.photo("different.jpg", "dune");
    std::string good = files.photo("good.jpg", "dune");
    PlannedRemoval removal = removalOf(b, gone, files.photos);
    removal.keepers.push_back({different, testing::snapshotOf(different)});
    removal.keepers.push_back({good, testing::snapshotOf(good)});
    CleanupPlan plan = testing::planOf({removal}, {files.photos});
    CancellationFlag cancel;
    testing::removeFile(gone);
    testing::overwriteKeepingTimes(different, "DUNE");
    EXPECT_EQ(CleanupExecutor::check(removal, plan, {}, cancel), std::nullopt);
    testing::removeFile(good);
    EXPECT_EQ(CleanupExecutor::check(removal, plan, {}, cancel),
              identicalLeft("missing, no longer identical"));
}

TEST(ExecutorCheck, AnUnreadableKeeperIsSaidSo) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "root reads files whatever their permissions";
    }
    Pair files;
    testing::setMode(files.a, 0);
    EXPECT_EQ(files.check(), identicalLeft("unreadable"));
}

TEST(ExecutorCheck, ACancellationDuringTheComparisonStopsTheItem) {
    Pair files;
    files.cancel.cancel();
    EXPECT_EQ(files.check(), "Cancelled before this picture was reached.");
}

TEST(ExecutorCheck, ExplainsRefusedMovesInPlainWords) {
    EXPECT_EQ(CleanupExecutor::explain(TrashError::fromErrno(EROFS)),
              "The drive is read-only, so nothing was moved.");
    EXPECT_EQ(CleanupExecutor::explain(TrashError::fromErrno(ENOENT)),
              "It disappeared before it could be moved \u2014 perhaps the drive was "
              "disconnected.");
    EXPECT_EQ(CleanupExecutor::explain(TrashError::fromErrno(EACCES)),
              "Linux would not move it to the Trash (Permission denied). It was left where it "
              "was; nothing was deleted.");
    EXPECT_EQ(CleanupExecutor::explain(TrashError{EIO, "the disk said no"}),
              "Linux would not move it to the Trash (the disk said no). It was left where it "
              "was; nothing was deleted.");
}

} // namespace
} // namespace brevant
