#include "engine/cleanup/CleanupExecutor.hpp"

#include "tests/cleanup/ExecutorFixtures.hpp"
#include "tests/fixtures/FakeTrasher.hpp"

#include "engine/cleanup/CleanupPlanner.hpp"
#include "engine/platform/AppendOnlyFile.hpp"
#include "engine/review/ReviewSession.hpp"

#include <gtest/gtest.h>

#include <cstdio>

namespace brevant {
namespace {

// The ASSERTs before each access guard these optionals and expecteds.
// NOLINTBEGIN(bugprone-unchecked-optional-access)

using Lines = std::vector<std::pair<std::string, std::string>>;
using testing::approvalOf;
using testing::CleanupWorkspace;
using testing::exists;
using testing::FakeTrasher;
using testing::journalLines;
using testing::readFile;
using testing::removalOf;

constexpr std::string_view kCancelled = "Cancelled before this picture was reached.";

std::vector<ItemOutcome> outcomesOf(const CleanupReport& report) {
    std::vector<ItemOutcome> outcomes;
    outcomes.reserve(report.items.size());
    for (const auto& item : report.items) {
        outcomes.push_back(item.outcome);
    }
    return outcomes;
}

// Four copies of one photo under photos/: a is kept, b, c and d go, planned
// from marks through a review session.
struct FourCopies : CleanupWorkspace {
    std::string a = photo("a.jpg", "sunrise");
    std::string b = photo("b.jpg", "sunrise");
    std::string c = photo("2024/c.jpg", "sunrise");
    std::string d = photo("2024/d.jpg", "sunrise");

    [[nodiscard]] CleanupPlan plan() const {
        ReviewSession session({testing::identicalGroup({a, b, c, d}, photos)}, nullptr, {}, {});
        for (const auto& path : {b, c, d}) {
            EXPECT_TRUE(session.mark(path));
        }
        auto plan = CleanupPlanner::plan(session, testing::fixedDate());
        EXPECT_TRUE(plan.has_value());
        return plan.value_or(CleanupPlan{});
    }
};

TEST(CleanupExecutor, MovesEachPlannedCopyToTheTrashUnderItsJournal) {
    FourCopies files;
    CleanupPlan plan = files.plan();
    auto trasher = std::make_shared<FakeTrasher>();
    CleanupExecutor executor(files.data, trasher);
    CancellationFlag cancel;
    std::vector<int> progress;
    auto report = executor.execute(plan, approvalOf(plan), cancel,
                                   [&](int handled) { progress.push_back(handled); });
    ASSERT_TRUE(report.has_value()) << report.error().message();

    EXPECT_EQ(progress, (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(trasher->calls(), (std::vector<std::string>{files.b, files.c, files.d}));
    EXPECT_EQ(readFile(files.a), "sunrise");
    // The two c.jpg and d.jpg of 2024/ and b.jpg land under their own names.
    for (const auto& name : {"b.jpg", "c.jpg", "d.jpg"}) {
        EXPECT_EQ(readFile(files.trashFiles() + "/" + name), "sunrise") << name;
        EXPECT_TRUE(exists(files.trashInfo(name))) << name;
    }
    for (const auto& path : {files.b, files.c, files.d}) {
        EXPECT_FALSE(exists(path)) << path;
    }

    EXPECT_EQ(report->planID, plan.id);
    EXPECT_EQ(report->journalPath, files.journalOf(plan));
    EXPECT_FALSE(report->reconciled);
    EXPECT_TRUE(report->finished.has_value());
    EXPECT_EQ(report->moved(), 3);
    EXPECT_EQ(outcomesOf(*report),
              (std::vector<ItemOutcome>{testing::movedTo(files.trashFiles() + "/b.jpg"),
                                        testing::movedTo(files.trashFiles() + "/c.jpg"),
                                        testing::movedTo(files.trashFiles() + "/d.jpg")}));
    EXPECT_EQ(report->items[1].removal, plan.removals[1]);
    // The report is the journal's, not the run's memory.
    EXPECT_EQ(*report, CleanupJournal::report(report->journalPath));
    EXPECT_EQ(journalLines(report->journalPath), (Lines{{"plan", ""},
                                                        {"intent", files.b},
                                                        {"outcome", files.b},
                                                        {"intent", files.c},
                                                        {"outcome", files.c},
                                                        {"intent", files.d},
                                                        {"outcome", files.d},
                                                        {"finished", ""}}));
    struct stat status{};
    ASSERT_EQ(::lstat(report->journalPath.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600U);
    // A complete run leaves the recovery step nothing to do.
    EXPECT_TRUE(CleanupJournal::recoverInterrupted(files.journals).empty());
}

TEST(CleanupExecutor, CancellingAfterAnItemRecordsEveryLaterOneAsCancelled) {
    FourCopies files;
    CleanupPlan plan = files.plan();
    CleanupExecutor executor(files.data);
    CancellationFlag cancel;
    std::vector<int> progress;
    // "Stop After This One" pressed while the first item moves.
    auto report = executor.execute(plan, approvalOf(plan), cancel, [&](int handled) {
        progress.push_back(handled);
        cancel.cancel();
    });
    ASSERT_TRUE(report.has_value());
    EXPECT_EQ(progress, (std::vector<int>{1}));
    EXPECT_FALSE(exists(files.b));
    EXPECT_EQ(readFile(files.c), "sunrise");
    EXPECT_EQ(readFile(files.d), "sunrise");

    ASSERT_EQ(report->items.size(), 3U);
    EXPECT_EQ(report->items[0].outcome.kind, ItemOutcome::Kind::movedToTrash);
    EXPECT_EQ(report->items[1].outcome, ItemOutcome::skipped(std::string(kCancelled)));
    EXPECT_EQ(report->items[2].outcome, ItemOutcome::skipped(std::string(kCancelled)));
    EXPECT_TRUE(report->finished.has_value());
    // Every item has its outcome line, so nothing is left to reconcile.
    EXPECT_EQ(journalLines(report->journalPath), (Lines{{"plan", ""},
                                                        {"intent", files.b},
                                                        {"outcome", files.b},
                                                        {"outcome", files.c},
                                                        {"outcome", files.d},
                                                        {"finished", ""}}));
    EXPECT_TRUE(CleanupJournal::unfinished(files.journals).empty());
}

TEST(CleanupExecutor, APlanRunsOnceAndASecondRunWritesNothing) {
    FourCopies files;
    CleanupPlan plan = files.plan();
    ASSERT_TRUE(files.attempt(plan).has_value());
    std::string journal = readFile(files.journalOf(plan));
    // Put one back by hand: the plan must still not run again.
    testing::moveFile(files.trashFiles() + "/b.jpg", files.b);

    auto again = files.attempt(plan);
    ASSERT_FALSE(again.has_value());
    EXPECT_EQ(again.error(), ExecutionRefusal::alreadyRun());
    EXPECT_EQ(again.error().message(),
              "These pictures were already handled once. Scan again to review what is left.");
    EXPECT_EQ(readFile(files.journalOf(plan)), journal);
    EXPECT_EQ(readFile(files.b), "sunrise");
    EXPECT_EQ(CleanupJournal::history(files.journals).size(), 1U);
}

TEST(CleanupExecutor, RefusesAMismatchedApprovalOrCatalogPhotosBeforeWritingAnything) {
    FourCopies files;
    CleanupPlan plan = files.plan();
    auto trasher = std::make_shared<FakeTrasher>();
    CleanupExecutor executor(files.data, trasher);
    CancellationFlag cancel;
    auto refusalOf = [&](const CleanupPlan& tried, const CleanupApproval& approval) {
        auto run = executor.execute(tried, approval, cancel);
        EXPECT_FALSE(run.has_value());
        return run ? ExecutionRefusal::journalUnavailable("ran") : run.error();
    };

    CleanupApproval other{Uuid::make(), testing::fixedDate()};
    EXPECT_EQ(refusalOf(plan, other), ExecutionRefusal::approvalDoesNotMatch());
    EXPECT_EQ(refusalOf(plan, other).message(),
              "This approval is for a different set of pictures. Review them again.");

    CleanupPlan catalogs = plan;
    catalogs.removals[0].catalog = CatalogItem{CatalogApplication::captureOne, 7};
    catalogs.removals[2].catalog = CatalogItem{CatalogApplication::lightroom, 8};
    // Every removal is looked at for Lightroom before any for Capture One.
    EXPECT_EQ(refusalOf(catalogs, approvalOf(catalogs)),
              ExecutionRefusal::catalogPhotos(CatalogApplication::lightroom));
    EXPECT_EQ(refusalOf(catalogs, approvalOf(catalogs)).message(),
              "Photos in a Lightroom Classic catalog are never moved to the Trash from here. "
              "Mark them Rejected in Lightroom instead.");
    catalogs.removals[2].catalog.reset();
    EXPECT_EQ(refusalOf(catalogs, approvalOf(catalogs)).message(),
              "Photos in a Capture One catalog are never moved to the Trash from here. Tag them "
              "Red in Capture One instead.");
    catalogs.removals[1].path = "photos-library:C0FFEE";
    EXPECT_EQ(refusalOf(catalogs, approvalOf(catalogs)).message(),
              "Photos in the Photos library are never moved to the Trash from here. Add them to "
              "the review album instead.");
    // The approval is checked first of all.
    EXPECT_EQ(refusalOf(catalogs, other), ExecutionRefusal::approvalDoesNotMatch());

    EXPECT_TRUE(trasher->calls().empty());
    EXPECT_FALSE(exists(files.journals));
    for (const auto& path : {files.a, files.b, files.c, files.d}) {
        EXPECT_EQ(readFile(path), "sunrise");
    }
}

TEST(CleanupExecutor, AJournalThatCannotBeCreatedRefusesThePlan) {
    FourCopies files;
    CleanupPlan plan = files.plan();
    // A plain file where the journal folder should be.
    files.tree.file("Cleanups", "");
    auto trasher = std::make_shared<FakeTrasher>();
    auto run = files.attempt(plan, trasher);
    ASSERT_FALSE(run.has_value());
    EXPECT_EQ(run.error().kind, ExecutionRefusal::Kind::journalUnavailable);
    EXPECT_TRUE(run.error().message().starts_with(
        "The cleanup record could not be written, so nothing was moved: "))
        << run.error().message();
    EXPECT_FALSE(run.error().detail.empty());
    EXPECT_TRUE(trasher->calls().empty());
    EXPECT_EQ(readFile(files.b), "sunrise");
}

TEST(CleanupExecutor, NoMoveHappensWithoutItsIntentOnDisk) {
    FourCopies files;
    CleanupPlan plan = files.plan();
    auto trasher = std::make_shared<FakeTrasher>();
    CleanupExecutor executor(files.data, trasher);
    CancellationFlag cancel;
    testing::ScriptedWriteCalls calls;
    calls.failWritesHolding = R"("kind":"intent")";
    std::optional<platform::ScopedFileWriteCalls> scope(std::in_place, calls);
    std::vector<int> progress;
    auto report = executor.execute(plan, approvalOf(plan), cancel,
                                   [&](int handled) { progress.push_back(handled); });
    scope.reset();
    ASSERT_TRUE(report.has_value());
    EXPECT_TRUE(trasher->calls().empty());
    for (const auto& path : {files.b, files.c, files.d}) {
        EXPECT_EQ(readFile(path), "sunrise");
    }
    EXPECT_EQ(progress, (std::vector<int>{1, 2, 3}));
    // No intent, no outcome: the items read as never attempted.
    EXPECT_EQ(journalLines(report->journalPath), (Lines{{"plan", ""}, {"finished", ""}}));
    EXPECT_EQ(report->skipped(), 3);
    EXPECT_EQ(report->items[0].outcome.text,
              "Not attempted: the cleanup stopped before reaching it.");
}

TEST(CleanupExecutor, ARefusedMoveIsFailedWithItsExplanationAndTheFileStays) {
    FourCopies files;
    CleanupPlan plan = files.plan();
    auto trasher = std::make_shared<FakeTrasher>();
    trasher->failFor(files.b, EROFS);
    trasher->failFor(files.c, ENOENT);
    trasher->failFor(files.d, EXDEV);
    CleanupReport report = files.run(plan, trasher);
    EXPECT_EQ(outcomesOf(report),
              (std::vector<ItemOutcome>{
                  ItemOutcome::failed("The drive is read-only, so nothing was moved."),
                  ItemOutcome::failed("It disappeared before it could be moved \u2014 perhaps "
                                      "the drive was disconnected."),
                  ItemOutcome::failed("Linux would not move it to the Trash (Invalid "
                                      "cross-device link). It was left where it was; nothing was "
                                      "deleted.")}));
    EXPECT_EQ(report.failed(), 3);
    for (const auto& path : {files.a, files.b, files.c, files.d}) {
        EXPECT_EQ(readFile(path), "sunrise");
    }
    EXPECT_FALSE(exists(files.trashFiles() + "/b.jpg"));
}

// b goes keeping a, d goes keeping e; each row changes b, its place or a
// since the scan.
struct TwoRemovals : CleanupWorkspace {
    std::string a = photo("a.jpg", "harbour");
    std::string b;
    std::string d = photo("d.jpg", "harbour");
    std::string e = photo("e.jpg", "harbour");

    explicit TwoRemovals(const char* at)
        : b(tree.file(at, "harbour")) {}
};

struct ChangeCase {
    const char* name;
    void (*change)(TwoRemovals&);
    std::string outcome;
    // Where b lies, and where its bytes are found after the run.
    const char* at = "photos/b.jpg";
    const char* stays = "photos/b.jpg";

    friend void PrintTo(const ChangeCase& row, std::ostream* out) { *out << row.name; }
};

class CleanupExecutorChange : public ::testing::TestWithParam<ChangeCase> {};

TEST_P(CleanupExecutorChange, IsSkippedWithoutAnIntentAndTheRestMoves) {
    const ChangeCase& row = GetParam();
    TwoRemovals files(row.at);
    CleanupPlan plan = testing::planOf(
        {removalOf(files.b, files.a, files.photos), removalOf(files.d, files.e, files.photos)},
        {files.photos});
    row.change(files);
    auto trasher = std::make_shared<FakeTrasher>();
    CleanupReport report = files.run(plan, trasher);
    EXPECT_EQ(outcomesOf(report),
              (std::vector<ItemOutcome>{ItemOutcome::skipped(row.outcome),
                                        testing::movedTo(files.trashFiles() + "/d.jpg")}));
    EXPECT_EQ(trasher->calls(), std::vector<std::string>{files.d});
    EXPECT_EQ(readFile(files.tree.path(row.stays)), "harbour");
    EXPECT_FALSE(exists(files.d));
    // A skipped item has no intent.
    EXPECT_EQ(journalLines(report.journalPath), (Lines{{"plan", ""},
                                                       {"outcome", files.b},
                                                       {"intent", files.d},
                                                       {"outcome", files.d},
                                                       {"finished", ""}}));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, CleanupExecutorChange,
    ::testing::Values(
        ChangeCase{.name = "hardLink",
                   .change =
                       [](TwoRemovals& files) {
                           files.tree.hardLink("photos/b.jpg", "elsewhere/b-link.jpg");
                       },
                   .outcome = "Now has another name on disk (a hard link), so moving it would "
                              "free nothing."},
        // Same size, new nanoseconds.
        ChangeCase{.name = "touched",
                   .change =
                       [](TwoRemovals& files) {
                           FileSnapshot b = testing::snapshotOf(files.b);
                           testing::setModified(files.b, b.modifiedSeconds,
                                                (b.modifiedNanoseconds + 1) % 1'000'000'000);
                       },
                   .outcome = "Changed since the scan. Scan again to review it."},
        ChangeCase{
            .name = "keeperBytes",
            .change =
                [](TwoRemovals& files) { testing::overwriteKeepingTimes(files.a, "HARBOUR"); },
            .outcome = "No unchanged identical copy is left to keep (the kept copies are "
                       "no longer identical). Scan again."},
        ChangeCase{.name = "outsideRoots",
                   .change = [](TwoRemovals&) {},
                   .outcome = "Outside the folders you chose.",
                   .at = "other/b.jpg",
                   .stays = "other/b.jpg"},
        // trip/ is replaced with a link to a folder holding the same file name.
        ChangeCase{.name = "folderLink",
                   .change =
                       [](TwoRemovals& files) {
                           testing::moveFile(files.photos + "/trip", files.tree.path("moved-trip"));
                           files.tree.symbolicLink(files.tree.path("moved-trip"), "photos/trip");
                       },
                   .outcome = "A folder on the way to it was replaced with a symbolic link "
                              "since the scan.",
                   .at = "photos/trip/b.jpg",
                   .stays = "moved-trip/b.jpg"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(CleanupExecutor, AKeeperMovedEarlierInTheRunStopsTheLaterRemoval) {
    CleanupWorkspace files;
    std::string a = files.photo("a.jpg", "dawn");
    std::string b = files.photo("b.jpg", "dawn");
    std::string c = files.photo("c.jpg", "dawn");
    // Overlapping groups: b goes keeping a, then a goes keeping c, then c
    // goes keeping b. The last would leave nothing.
    CleanupPlan plan =
        testing::planOf({removalOf(b, a, files.photos), removalOf(a, c, files.photos),
                         removalOf(c, b, files.photos)},
                        {files.photos});
    CleanupReport report = files.run(plan);
    ASSERT_EQ(report.items.size(), 3U);
    EXPECT_EQ(report.items[0].outcome.kind, ItemOutcome::Kind::movedToTrash);
    EXPECT_EQ(report.items[1].outcome.kind, ItemOutcome::Kind::movedToTrash);
    EXPECT_EQ(report.items[2].outcome,
              ItemOutcome::skipped("No unchanged identical copy is left to keep (the kept copies "
                                   "are moved). Scan again."));
    EXPECT_EQ(readFile(c), "dawn");
}

// Moves the journal away while the run goes on, so that it cannot be read
// back at the end.
class JournalThief final : public Trasher {
public:
    explicit JournalThief(std::string journal, std::string away)
        : journal_(std::move(journal))
        , away_(std::move(away)) {}

    std::expected<std::string, TrashError> reserve(const std::string& path) const override {
        return FileManagerTrasher().reserve(path);
    }

    std::expected<void, TrashError> moveInto(const std::string& path,
                                             const std::string& trashPath) const override {
        // Only the first call finds the journal there.
        (void)::rename(journal_.c_str(), away_.c_str());
        return FileManagerTrasher().moveInto(path, trashPath);
    }

    std::expected<void, TrashError> putBack(const std::string& trashPath,
                                            const std::string& destination) const override {
        return FileManagerTrasher().putBack(trashPath, destination);
    }

private:
    std::string journal_;
    std::string away_;
};

TEST(CleanupExecutor, AJournalThatCannotBeReadBackIsReported) {
    FourCopies files;
    CleanupPlan plan = files.plan();
    auto trasher =
        std::make_shared<JournalThief>(files.journalOf(plan), files.tree.path("stolen.jsonl"));
    auto run = files.attempt(plan, trasher);
    ASSERT_FALSE(run.has_value());
    EXPECT_EQ(run.error(),
              ExecutionRefusal::journalUnavailable("the record could not be read back"));
    EXPECT_EQ(run.error().message(), "The cleanup record could not be written, so nothing was "
                                     "moved: the record could not be read back");
    // The record went on in the moved file all the same.
    auto kept = CleanupJournal::report(files.tree.path("stolen.jsonl"));
    ASSERT_TRUE(kept.has_value());
    EXPECT_EQ(kept->moved(), 3);
}

TEST(CleanupExecutor, ARunWhoseRecordStoppedIsWorkedOutByTheRecoveryStep) {
    FourCopies files;
    CleanupPlan plan = files.plan();
    CleanupExecutor executor(files.data);
    CancellationFlag cancel;
    // The plan, b's intent and outcome, c's intent: then nothing more is
    // written, as when the program dies just after moving c.
    testing::ScriptedWriteCalls full;
    full.writesLeft = 4;
    std::optional<platform::ScopedFileWriteCalls> scope(std::in_place, full);
    auto report = executor.execute(plan, approvalOf(plan), cancel);
    scope.reset();
    ASSERT_TRUE(report.has_value());
    EXPECT_FALSE(exists(files.c));
    EXPECT_EQ(readFile(files.d), "sunrise");
    EXPECT_EQ(report->items[1].outcome,
              ItemOutcome::unknown("The app stopped while moving this picture."));
    EXPECT_EQ(report->items[2].outcome,
              ItemOutcome::skipped("Not attempted: the cleanup stopped before reaching it."));
    EXPECT_FALSE(report->finished.has_value());

    auto recovered = CleanupJournal::recoverInterrupted(files.journals);
    ASSERT_EQ(recovered.size(), 1U);
    EXPECT_TRUE(recovered[0].reconciled);
    EXPECT_TRUE(recovered[0].finished.has_value());
    EXPECT_EQ(outcomesOf(recovered[0]),
              (std::vector<ItemOutcome>{
                  testing::movedTo(files.trashFiles() + "/b.jpg"),
                  testing::movedTo(files.trashFiles() + "/c.jpg"),
                  ItemOutcome::skipped("Not attempted: the cleanup stopped before reaching it.")}));
    EXPECT_EQ(readFile(files.d), "sunrise");
    EXPECT_TRUE(CleanupJournal::recoverInterrupted(files.journals).empty());
}

// NOLINTEND(bugprone-unchecked-optional-access)

} // namespace
} // namespace brevant
