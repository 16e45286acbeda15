#include "tests/cleanup/CleanupFixtures.hpp"
#include "tests/fixtures/ScopedEnvironment.hpp"
#include "tests/fixtures/TempTree.hpp"

#include "engine/cleanup/CleanupJournal.hpp"
#include "engine/cleanup/JournalTexts.hpp"
#include "engine/cleanup/TrashLocation.hpp"
#include "engine/cleanup/Trasher.hpp"
#include "engine/platform/AppendOnlyFile.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <map>
#include <optional>

namespace brevant {
namespace {

// The ASSERTs before each access guard these optionals and expecteds.
// NOLINTBEGIN(bugprone-unchecked-optional-access)

using Entry = CleanupJournal::Entry;
using testing::fixedDate;
using testing::removalOf;
using testing::TempTree;

// Every file under the root with its identity and size: what "nothing moved"
// is checked against.
std::map<std::string, FileSnapshot> filesUnder(const std::string& root) {
    std::map<std::string, FileSnapshot> files;
    std::error_code error;
    for (std::filesystem::recursive_directory_iterator it(root, error), end; !error && it != end;
         it.increment(error)) {
        if (auto snapshot = FileSnapshot::read(it->path().string())) {
            snapshot->linkCount = 0;
            files.emplace(it->path().string(), *snapshot);
        }
    }
    return files;
}

std::string lastLines(const std::string& path, std::size_t count) {
    std::string contents = testing::readFile(path);
    std::size_t at = contents.size() - 1;
    for (std::size_t found = 0; found < count; ++found) {
        at = contents.rfind('\n', at - 1);
    }
    return contents.substr(at + 1);
}

// Photos a (kept), b, c and d (to remove), and the folders a Trash keeps its
// files in.
struct Interrupted {
    TempTree tree;
    std::string journals = tree.path("Cleanups");
    std::string trash = tree.folder("home/.local/share/Trash/files");
    std::string volumeTrash = tree.folder("volume/.Trash-1000/files");
    std::string a = tree.file("photos/a.jpg", "same");
    std::string b = tree.file("photos/b.jpg", "same");
    std::string c = tree.file("photos/c.jpg", "same");
    std::string d = tree.file("photos/d.jpg", "same");
    CleanupPlan plan =
        testing::planOf({removalOf(b, a, tree.path("photos")), removalOf(c, a, tree.path("photos")),
                         removalOf(d, a, tree.path("photos"))},
                        {tree.path("photos")});

    // The journal of a run that stopped after the given entries.
    std::string journal(const std::vector<Entry>& entries) {
        auto created = CleanupJournal::create(plan, journals, fixedDate());
        EXPECT_TRUE(created);
        for (const auto& entry : entries) {
            EXPECT_TRUE(created->write(entry));
        }
        return created->path();
    }

    [[nodiscard]] std::vector<std::string> trashFolders() const { return {volumeTrash, trash}; }
};

TEST(JournalReconcile, AnItemStillInPlaceIsSkippedAndNothingMoves) {
    Interrupted run;
    std::string trashedB = run.trash + "/b.jpg";
    std::filesystem::rename(run.b, trashedB);
    std::string path =
        run.journal({Entry::ofIntent(run.b, fixedDate(1)),
                     Entry::ofOutcome(run.b, ItemOutcome::movedToTrash(trashedB), fixedDate(2)),
                     Entry::ofIntent(run.c, fixedDate(3))});
    auto before = filesUnder(run.tree.path("photos"));
    auto trashBefore = filesUnder(run.tree.path("home"));

    auto journal = CleanupJournal::appendingTo(path);
    ASSERT_TRUE(journal);
    auto report = journal->reconcile(run.trashFolders(), fixedDate(10));
    ASSERT_TRUE(report) << report.error().description;
    EXPECT_TRUE(report->reconciled);
    EXPECT_EQ(report->finished, fixedDate(10));
    ASSERT_EQ(report->items.size(), 3U);
    EXPECT_EQ(report->items[0].outcome, ItemOutcome::movedToTrash(trashedB));
    EXPECT_EQ(report->items[0].at, fixedDate(2));
    EXPECT_EQ(report->items[1].outcome,
              ItemOutcome::skipped("The app stopped before moving it; it is still in place."));
    EXPECT_EQ(report->items[1].at, fixedDate(10));
    EXPECT_EQ(report->items[2].outcome,
              ItemOutcome::skipped("Not attempted: the cleanup stopped before reaching it."));
    EXPECT_EQ(filesUnder(run.tree.path("photos")), before);
    EXPECT_EQ(filesUnder(run.tree.path("home")), trashBefore);

    // Only the two missing outcomes and the finished line were added.
    std::string expected =
        Entry::ofOutcome(run.c, ItemOutcome::skipped(std::string(journal_texts::kStillInPlace)),
                         fixedDate(10))
            .encoded() +
        "\n" +
        Entry::ofOutcome(run.d, ItemOutcome::skipped(std::string(journal_texts::kNotAttempted)),
                         fixedDate(10))
            .encoded() +
        "\n" + Entry::ofFinished(fixedDate(10)).encoded() + "\n";
    EXPECT_EQ(lastLines(path, 3), expected);
    // Read later, it is the same report but for how it was found.
    auto later = CleanupJournal::report(path);
    ASSERT_TRUE(later);
    EXPECT_FALSE(later->reconciled);
    later->reconciled = true;
    EXPECT_EQ(*later, *report);
}

TEST(JournalReconcile, AnItemFoundInATrashFolderByIdentityWasMovedThere) {
    Interrupted run;
    // A different file of the same name and a link to the real one come
    // first; only the same device and inode count.
    run.tree.file("volume/.Trash-1000/files/b.jpg", "same");
    std::string trashedB = run.trash + "/b 2.jpg";
    std::filesystem::rename(run.b, trashedB);
    run.tree.symbolicLink(trashedB, "volume/.Trash-1000/files/b link.jpg");
    std::string path = run.journal({Entry::ofIntent(run.b, fixedDate(1))});

    auto journal = CleanupJournal::appendingTo(path);
    ASSERT_TRUE(journal);
    auto report = journal->reconcile(run.trashFolders(), fixedDate(10));
    ASSERT_TRUE(report);
    EXPECT_EQ(report->items[0].outcome, testing::movedTo(trashedB));
    EXPECT_EQ(report->moved(), 1);
    EXPECT_EQ(report->freedBytes(), 4);
    EXPECT_TRUE(FileSnapshot::read(trashedB));
    EXPECT_FALSE(FileSnapshot::read(run.b));
}

TEST(JournalReconcile, AnItemNeitherInPlaceNorInTheTrashIsUnknown) {
    Interrupted run;
    // b is gone; c's name now holds another file, which is not c. The new file
    // is made before c goes, so it cannot be given c's freed inode number.
    std::filesystem::remove(run.b);
    std::string other = run.tree.file("photos/other.jpg", "new");
    std::filesystem::rename(other, run.c);
    std::string path =
        run.journal({Entry::ofIntent(run.b, fixedDate(1)), Entry::ofIntent(run.c, fixedDate(2)),
                     Entry::ofNote(run.c, "a note", fixedDate(3))});

    auto journal = CleanupJournal::appendingTo(path);
    ASSERT_TRUE(journal);
    auto report = journal->reconcile(run.trashFolders(), fixedDate(10));
    ASSERT_TRUE(report);
    auto lost = ItemOutcome::unknown(
        "The app stopped while moving this picture. It is no longer in its folder and was not "
        "found in the Trash this app can see \u2014 look in the Trash.");
    EXPECT_EQ(report->items[0].outcome, lost);
    EXPECT_EQ(report->items[1].outcome, lost);
    EXPECT_EQ(report->items[1].notes, std::vector<std::string>{"a note"});
    EXPECT_EQ(report->unknown(), 2);
    EXPECT_EQ(report->skipped(), 1);
    EXPECT_EQ(testing::readFile(run.c), "new");
}

TEST(JournalReconcile, RecoveryReconcilesEachUnfinishedJournalOnce) {
    Interrupted run;
    // A finished run, which must not be touched.
    CleanupPlan done = run.plan;
    done.id = Uuid::make();
    auto finished = CleanupJournal::create(done, run.journals, fixedDate(-100));
    ASSERT_TRUE(finished);
    ASSERT_TRUE(finished->write(Entry::ofFinished(fixedDate(-99))));
    std::string finishedBytes = testing::readFile(finished->path());

    std::string trashedB = run.trash + "/b.jpg";
    std::filesystem::rename(run.b, trashedB);
    std::string path = run.journal({Entry::ofIntent(run.b, fixedDate(1))});
    ASSERT_EQ(CleanupJournal::unfinished(run.journals), std::vector<std::string>{path});

    std::vector<std::string> asked;
    auto trashFoldersFor = [&](const std::string& planned) {
        asked.push_back(planned);
        // Each path names one folder; recovery searches them all together.
        return std::vector<std::string>{planned == run.d ? run.trash : run.volumeTrash};
    };
    auto reports = CleanupJournal::recoverInterrupted(run.journals, trashFoldersFor);
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(asked, (std::vector<std::string>{run.b, run.c, run.d}));
    EXPECT_TRUE(reports[0].reconciled);
    EXPECT_EQ(reports[0].journalPath, path);
    EXPECT_EQ(reports[0].items[0].outcome, testing::movedTo(trashedB));
    EXPECT_TRUE(reports[0].finished);

    EXPECT_TRUE(CleanupJournal::unfinished(run.journals).empty());
    EXPECT_TRUE(CleanupJournal::recoverInterrupted(run.journals, trashFoldersFor).empty());
    EXPECT_EQ(testing::readFile(finished->path()), finishedBytes);
    EXPECT_EQ(CleanupJournal::history(run.journals).size(), 2U);
}

TEST(JournalReconcile, AJournalThatCannotBeAddedToIsShownAsItStands) {
    Interrupted run;
    std::string path = run.journal({Entry::ofIntent(run.c, fixedDate(1))});
    std::string bytes = testing::readFile(path);

    testing::ScriptedWriteCalls full;
    full.writeError = ENOSPC;
    full.syncs = false;
    std::optional<platform::ScopedFileWriteCalls> scope(std::in_place, full);
    auto reports = CleanupJournal::recoverInterrupted(
        run.journals, [&](const std::string&) { return run.trashFolders(); });
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_FALSE(reports[0].reconciled);
    EXPECT_EQ(reports[0].items[1].outcome,
              ItemOutcome::unknown("The app stopped while moving this picture."));
    EXPECT_EQ(testing::readFile(path), bytes);
    {
        auto journal = CleanupJournal::appendingTo(path);
        ASSERT_TRUE(journal);
        auto refused = journal->reconcile(run.trashFolders());
        ASSERT_FALSE(refused);
        EXPECT_EQ(refused.error().code, ENOSPC);
    }

    // Still unfinished, so it is tried again next time.
    scope.reset();
    EXPECT_EQ(CleanupJournal::unfinished(run.journals), std::vector<std::string>{path});
    reports = CleanupJournal::recoverInterrupted(
        run.journals, [&](const std::string&) { return run.trashFolders(); });
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_TRUE(reports[0].reconciled);
    EXPECT_EQ(reports[0].items[1].outcome,
              ItemOutcome::skipped(std::string(journal_texts::kStillInPlace)));
}

TEST(JournalReconcile, RecoveryFindsWhatTheTrashTookInItsOwnFolders) {
    Interrupted run;
    testing::ScopedEnvironment dataHome{"XDG_DATA_HOME", run.tree.path("data")};
    std::string path = run.journal({Entry::ofIntent(run.b, fixedDate(1))});
    // The run stopped after the move, before its outcome was written.
    auto trashed = FileManagerTrasher().trash(run.b);
    ASSERT_TRUE(trashed.has_value());
    EXPECT_TRUE(trashed->starts_with(TrashLocation::home() + "/"));
    auto moved = FileSnapshot::read(*trashed);
    ASSERT_TRUE(moved.has_value());

    auto reports = CleanupJournal::recoverInterrupted(run.journals);
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_TRUE(reports[0].reconciled);
    EXPECT_EQ(reports[0].journalPath, path);
    EXPECT_EQ(reports[0].items[0].outcome, ItemOutcome::movedToTrash(*trashed, moved->identity));
    EXPECT_EQ(reports[0].items[1].outcome,
              ItemOutcome::skipped(std::string(journal_texts::kNotAttempted)));
    EXPECT_TRUE(FileSnapshot::read(*trashed));
    EXPECT_TRUE(FileSnapshot::read(run.c));
}

// NOLINTEND(bugprone-unchecked-optional-access)

} // namespace
} // namespace brevant
