// The cleanup at the edges real machines reach: a file changed in the
// instant it moves, a run or a Put Back cut short at every step, and
// journals with damaged lines.

#include "tests/cleanup/ExecutorFixtures.hpp"
#include "tests/fixtures/FakeTrasher.hpp"

#include "engine/cleanup/CleanupExecutor.hpp"
#include "engine/cleanup/ExecutorTexts.hpp"
#include "engine/cleanup/JournalTexts.hpp"
#include "engine/cleanup/Restorer.hpp"
#include "engine/platform/FreedesktopTrash.hpp"
#include "engine/review/LockStore.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace brevant {
namespace {

// The ASSERTs before each access guard these optionals and expecteds.
// NOLINTBEGIN(bugprone-unchecked-optional-access)

using Entry = CleanupJournal::Entry;
using platform::FreedesktopTrash;
using testing::approvalOf;
using testing::exists;
using testing::readFile;

// a is kept; b and c are moved by the plan.
struct Pair : testing::CleanupWorkspace {
    std::string a = photo("a.jpg", "lighthouse");
    std::string b = photo("b.jpg", "lighthouse");
    std::string c = photo("c.jpg", "lighthouse");
    CleanupPlan plan = testing::planOf(
        {testing::removalOf(b, a, photos), testing::removalOf(c, a, photos)}, {photos});

    [[nodiscard]] CleanupReport run(std::shared_ptr<const Trasher> trasher = nullptr) const {
        return CleanupWorkspace::run(plan, std::move(trasher));
    }

    [[nodiscard]] std::string journal() const { return journalOf(plan); }

    [[nodiscard]] std::string trashed(std::string_view name) const {
        return trashFiles() + "/" + std::string(name);
    }

    // The Trash records there are, by name.
    [[nodiscard]] std::vector<std::string> records() const {
        std::vector<std::string> names;
        std::error_code error;
        for (const auto& entry :
             std::filesystem::directory_iterator(tree.path("data/Trash/info"), error)) {
            names.push_back(entry.path().filename().string());
        }
        std::ranges::sort(names);
        return names;
    }

    [[nodiscard]] std::vector<Restorer::Result> putAllBack() const {
        Restorer::Batch batch{.journalPath = journal()};
        for (const auto& removal : plan.removals) {
            batch.requests.push_back({removal.path, removal.path});
        }
        CancellationFlag cancel;
        auto results = Restorer::restore(batch, cancel);
        EXPECT_TRUE(results.has_value()) << results.error();
        return results.value_or(std::vector<Restorer::Result>{});
    }
};

// An editor saving b by rename: the new bytes take b's name in one step.
void saveByRename(const std::string& path, const std::string& bytes) {
    std::string temporary = path + ".saving";
    std::ofstream(temporary, std::ios::binary) << bytes;
    testing::moveFile(temporary, path);
}

TEST(MoveSafety, AnEditSavedInTheInstantOfTheMoveGoesBackAtOnce) {
    Pair files;
    platform::ScopedTrashMoveHook hook([&](const std::string& path) {
        if (path == files.b) {
            saveByRename(files.b, "edited lighthouse");
        }
    });
    CleanupReport report = files.run();
    ASSERT_EQ(report.items.size(), 2U);
    EXPECT_EQ(report.items[0].outcome,
              ItemOutcome::skipped(std::string(executor_texts::kChangedWhileMoving)));
    EXPECT_EQ(report.items[1].outcome, testing::movedTo(files.trashed("c.jpg")));
    // The edit is where the editor put it; nothing of it is in the Trash,
    // record and all.
    EXPECT_EQ(readFile(files.b), "edited lighthouse");
    EXPECT_FALSE(exists(files.trashed("b.jpg")));
    EXPECT_EQ(files.records(), std::vector<std::string>{"c.jpg.trashinfo"});
    // Its intent said where it was about to go.
    auto parsed = CleanupJournal::parse(files.journal());
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->reserved.at(files.b), std::vector<std::string>{files.trashed("b.jpg")});
}

TEST(MoveSafety, AnEditThatCannotGoBackStaysInTheTrashAsItselfAndComesBackWhole) {
    Pair files;
    platform::ScopedTrashMoveHook hook([&](const std::string& path) {
        if (path == files.b) {
            saveByRename(files.b, "edited lighthouse");
        }
    });
    // Its place taken again before it could go back.
    auto trasher = std::make_shared<testing::FakeTrasher>();
    trasher->failPutBacks(EEXIST);
    CleanupReport report = files.run(trasher);
    auto edited = FileSnapshot::read(files.trashed("b.jpg"));
    ASSERT_TRUE(edited);
    EXPECT_NE(edited->identity, files.plan.removals[0].snapshot.identity);
    EXPECT_EQ(report.items[0].outcome,
              ItemOutcome::movedToTrash(files.trashed("b.jpg"), edited->identity));
    EXPECT_EQ(report.items[0].notes,
              std::vector<std::string>{std::string(executor_texts::kChangedKeptInTrash)});

    // Put Back knows it by what went, not by what was planned.
    auto results = files.putAllBack();
    ASSERT_EQ(results.size(), 2U);
    EXPECT_EQ(results[0].outcome, RestoreOutcome::restored(files.b));
    EXPECT_EQ(readFile(files.b), "edited lighthouse");
    EXPECT_EQ(readFile(files.c), "lighthouse");
    EXPECT_TRUE(files.records().empty());
}

// The journal and the disk as a run or a Put Back cut short at one step
// leaves them, and what reconciliation makes of each.
TEST(MoveSafety, EveryStepCutShortIsSettledWithoutLosingOrHidingAPicture) {
    enum class Cut {
        afterRecord,
        afterRename,
        putBackAfterRename,
        putBackBeforeRename
    };

    struct Case {
        std::string name;
        Cut cut;
    };

    for (const auto& step :
         std::vector<Case>{{"after the record", Cut::afterRecord},
                           {"after the rename", Cut::afterRename},
                           {"Put Back after its rename", Cut::putBackAfterRename},
                           {"Put Back before its rename", Cut::putBackBeforeRename}}) {
        SCOPED_TRACE(step.name);
        Pair files;
        std::string slot = FreedesktopTrash::reserve(files.b).value_or("");
        ASSERT_EQ(slot, files.trashed("b.jpg"));
        std::string record = FreedesktopTrash::infoPathFor(slot).value_or("");
        auto identity = files.plan.removals[0].snapshot.identity;
        std::vector<Entry> lines{Entry::ofPlan(files.plan, testing::fixedDate()),
                                 Entry::ofIntent(files.b, testing::fixedDate(1), slot)};
        bool putBack = step.cut == Cut::putBackAfterRename || step.cut == Cut::putBackBeforeRename;
        if (putBack) {
            lines.push_back(Entry::ofOutcome(files.b, ItemOutcome::movedToTrash(slot, identity),
                                             testing::fixedDate(2)));
            lines.push_back(Entry::ofOutcome(files.c, ItemOutcome::skipped("Not asked for."),
                                             testing::fixedDate(2)));
            lines.push_back(Entry::ofFinished(testing::fixedDate(3)));
            lines.push_back(Entry::ofPutBack(files.b, slot, files.b, testing::fixedDate(4)));
        }
        std::string journal;
        for (const auto& line : lines) {
            journal += line.encoded() + "\n";
        }
        files.tree.file("Cleanups/" + CleanupJournal::fileName(files.plan.id), journal);
        files.tree.file("data/Trash/info/b.jpg.trashinfo",
                        FreedesktopTrash::trashInfo(files.b, 1'794'692'984));
        // Cut after the record, or after a Put Back's rename: the picture is
        // in place; otherwise it is in the Trash.
        if (step.cut != Cut::afterRecord && step.cut != Cut::putBackAfterRename) {
            testing::moveFile(files.b, slot);
        }

        auto recovered = CleanupJournal::recoverInterrupted(files.journals);
        auto report = CleanupJournal::report(files.journal());
        ASSERT_TRUE(report);
        EXPECT_EQ(recovered.size(), putBack ? 0U : 1U);
        EXPECT_FALSE(CleanupJournal::parse(files.journal())->needsReconciling());
        const ItemOutcome& b = report->items[0].outcome;
        switch (step.cut) {
        case Cut::afterRecord:
            EXPECT_EQ(b, ItemOutcome::skipped(std::string(journal_texts::kStillInPlace)));
            EXPECT_FALSE(exists(record)) << "the record of a move that never happened goes";
            break;
        case Cut::afterRename:
            EXPECT_EQ(b, ItemOutcome::movedToTrash(slot, identity));
            EXPECT_TRUE(exists(record));
            break;
        case Cut::putBackAfterRename:
            EXPECT_EQ(b, ItemOutcome::restored(files.b));
            EXPECT_FALSE(exists(record)) << "the record of a finished Put Back goes";
            break;
        case Cut::putBackBeforeRename:
            EXPECT_EQ(b, ItemOutcome::movedToTrash(slot, identity));
            EXPECT_EQ(report->items[0].notes,
                      std::vector<std::string>{std::string(journal_texts::kPutBackStopped)});
            EXPECT_TRUE(exists(record));
            break;
        }
        // Wherever it is, it is whole and can be had back.
        if (b.kind == ItemOutcome::Kind::movedToTrash) {
            EXPECT_EQ(Restorer::restore(report->items[0].removal, files.journal(), files.b),
                      RestoreOutcome::restored(files.b));
        }
        EXPECT_EQ(readFile(files.b), "lighthouse");
        EXPECT_TRUE(files.records().empty());
    }
}

// Replaces line `index` (0 = the plan) of the journal with garbage.
void damageLine(const std::string& journal, std::size_t index) {
    std::string contents = readFile(journal);
    std::vector<std::string> lines;
    for (std::size_t start = 0; start < contents.size();) {
        std::size_t end = contents.find('\n', start);
        lines.push_back(contents.substr(start, end - start));
        start = end + 1;
    }
    lines.at(index) = "{\"kind\":\"outc\xff garbage";
    std::string damaged;
    for (const auto& line : lines) {
        damaged += line + "\n";
    }
    std::ofstream(journal, std::ios::binary | std::ios::trunc) << damaged;
}

TEST(MoveSafety, DamagedLinesNeverHideAPicture) {
    struct Case {
        std::string name;
        // Which line: the plan, or c's outcome (plan, intent b, outcome b,
        // intent c, outcome c, finished).
        std::size_t line;
        std::string damage;
    };

    for (const auto& damaged : std::vector<Case>{{"the plan line", 0,
                                                  "Part of this cleanup\u2019s record is damaged: "
                                                  "its plan could not be read, so only the "
                                                  "pictures its other lines name are listed."},
                                                 {"an outcome line", 4,
                                                  "One line of this cleanup\u2019s record could "
                                                  "not be read; its pictures are listed from the "
                                                  "rest."}}) {
        SCOPED_TRACE(damaged.name);
        Pair files;
        ASSERT_EQ(files.run().moved(), 2);
        damageLine(files.journal(), damaged.line);

        (void)CleanupJournal::recoverInterrupted(files.journals);
        auto history = CleanupJournal::history(files.journals);
        ASSERT_EQ(history.size(), 1U);
        EXPECT_EQ(history[0].planID, files.plan.id);
        EXPECT_EQ(history[0].damage, damaged.damage);
        ASSERT_EQ(history[0].items.size(), 2U);
        EXPECT_EQ(history[0].items[1].outcome, testing::movedTo(files.trashed("c.jpg")));

        auto results = files.putAllBack();
        ASSERT_EQ(results.size(), 2U);
        for (const auto& result : results) {
            EXPECT_EQ(result.outcome, RestoreOutcome::restored(result.itemID));
        }
        EXPECT_EQ(readFile(files.b), "lighthouse");
        EXPECT_EQ(readFile(files.c), "lighthouse");
    }
}

TEST(MoveSafety, PutBackSaysWhenTheTrashItselfIsGone) {
    Pair files;
    ASSERT_EQ(files.run().moved(), 2);
    // Its drive not connected: the Trash folder is not there at all.
    testing::moveFile(files.tree.path("data/Trash"), files.tree.path("unplugged"));
    auto results = files.putAllBack();
    ASSERT_EQ(results.size(), 2U);
    EXPECT_EQ(results[0].outcome,
              RestoreOutcome::failed("Its Trash, " + files.tree.path("data/Trash") +
                                     ", is not there \u2014 perhaps its drive is not connected"));
    EXPECT_FALSE(exists(files.b));
}

TEST(MoveSafety, AStoreOfLocksThatCannotBeReadStopsTheRunAndALockMadeSinceTheScanHolds) {
    Pair files;
    std::string store = files.data.lockStore();
    files.tree.file("keep-locks.json", "[{\"path\": ");
    auto refused = files.attempt(files.plan);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().kind, ExecutionRefusal::Kind::locksUnreadable);
    EXPECT_TRUE(refused.error().message().starts_with("The lock file " + store + " cannot be read"))
        << refused.error().message();
    EXPECT_FALSE(exists(files.journal()));
    EXPECT_EQ(readFile(store), "[{\"path\": ");

    // Repaired, with c locked since the scan: c stays, b goes.
    LockStore repaired(store);
    ASSERT_TRUE(repaired.setAside());
    PhotoAsset locked;
    locked.path = files.c;
    locked.snapshot = testing::snapshotOf(files.c);
    repaired.add(locked);
    CleanupReport report = files.run();
    ASSERT_EQ(report.items.size(), 2U);
    EXPECT_EQ(report.items[0].outcome, testing::movedTo(files.trashed("b.jpg")));
    EXPECT_EQ(report.items[1].outcome,
              ItemOutcome::skipped(std::string(executor_texts::kLockedSinceScan)));
    EXPECT_EQ(readFile(files.c), "lighthouse");
}

TEST(MoveSafety, ARunIsRefusedWhileAnotherHoldsTheDataFolder) {
    Pair files;
    auto held = ChangeLock::tryTake(files.data);
    ASSERT_TRUE(held);
    CancellationFlag cancel;
    CleanupExecutor executor(files.data);
    auto refused = executor.execute(files.plan, approvalOf(files.plan), cancel);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().kind, ExecutionRefusal::Kind::busy);
    EXPECT_EQ(refused.error().message(),
              "Another Brevant run is changing pictures or Brevant\u2019s records: brevant_tests "
              "(process " +
                  std::to_string(::getpid()) +
                  "). Nothing was changed; try again when it has finished.");
    EXPECT_FALSE(exists(files.journal()));

    // Waiting gives up when told to, still changing nothing; once the lock
    // is free the run goes.
    int asked = 0;
    executor.setWaiting([&](const ChangeLock::Refusal&) { return ++asked < 3; });
    EXPECT_FALSE(executor.execute(files.plan, approvalOf(files.plan), cancel));
    EXPECT_EQ(asked, 3);
    held = std::unexpected(ChangeLock::Refusal{});
    auto report = executor.execute(files.plan, approvalOf(files.plan), cancel);
    ASSERT_TRUE(report);
    EXPECT_EQ(report->moved(), 2);
}

// NOLINTEND(bugprone-unchecked-optional-access)

} // namespace
} // namespace brevant
